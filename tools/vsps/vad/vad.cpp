// vsps vad: where there is speech in recordings.
#include <iostream>
#include <memory>
#include <new>

#include "audio/input_options.h"
#include "commands.h"
#include "console/error.h"
#include "console/many_files.h"
#include "console/output_file.h"
#include "console/standard_streams.h"
#include "vad/vad_plot.h"
#include "vad/vad_tables.h"

namespace {

struct Options {
    std::vector<std::string> files;
    InputSettings input;
    int option = 0;  // 0: by the recording's rate
    std::size_t jobs = 1;
    VadOutputs outputs;  // patterns
    bool json = false;
};

constexpr int kNarrow = 1;  // the option for recordings below kWideActivityRate

// Where the results of each input go. No output may be an input or another output.
std::vector<VadOutputs> placeOutputs(const Options& o) {
    std::vector<VadOutputs> all;
    std::vector<std::string> names;
    for (const std::string& file : o.files) {
        all.push_back({nameFor(o.outputs.csv, file), nameFor(o.outputs.labels, file), nameFor(o.outputs.plot, file)});
        names.insert(names.end(), {all.back().csv, all.back().labels, all.back().plot});
    }
    refuseSameFiles(o.files, names);
    return all;
}

// What is made of the frames of a recording while it is heard.
struct Results {
    VadReport report;
    VadTables tables;
    std::vector<ActivityCurves> curves;  // of the channels that are plotted

    void add(std::vector<std::vector<VspvSpeechDecision>>& frames) {
        for (std::size_t c = 0; c < frames.size(); c++)
            for (const VspvSpeechDecision& frame : frames[c]) {
                report.channels[c].add(frame);
                if (c < curves.size()) curves[c].add(frame);
            }
        tables.addFrames(frames);
        tables.addSegments(report.channels);
        for (auto& channel : frames) channel.clear();
    }

    void finish(double seconds) {
        report.seconds = seconds;
        for (ActivitySummary& channel : report.channels) channel.finish(seconds);
        tables.addSegments(report.channels);
    }
};

void hear(AudioReader& in, int option, Results& results) {
    std::vector<VoiceActivity> detectors;
    for (std::size_t c = 0; c < in.channels(); c++) detectors.emplace_back(option);
    std::vector<std::vector<VspvSpeechDecision>> frames(in.channels());
    Progress progress("detecting speech", in.expected());
    for (Block block; in.read(kBlockLength, block); progress.advance(block[0].size())) {
        for (std::size_t c = 0; c < detectors.size(); c++) detectors[c].process(block[c], frames[c]);
        for (std::size_t c = 0; c < results.curves.size(); c++) results.curves[c].add(block[c]);
        results.add(frames);
    }
    for (std::size_t c = 0; c < detectors.size(); c++) detectors[c].finish(frames[c]);
    results.add(frames);
    results.finish(in.seconds());
}

// The report, and notes for stderr.
std::pair<VadReport, std::vector<std::string>> process(const Options& o, const std::string& file,
                                                       const VadOutputs& outputs) try {
    AudioReader in = openInput(file, o.input);
    const std::size_t channels = in.channels();
    const int option = o.option != 0 ? o.option : in.fileRate() < kWideActivityRate ? kNarrow : vspvSpeechWide;
    if (option == vspvSpeechWide) in.convertTo(kWideActivityRate);
    VadTables tables(outputs, option, channels);
    Results results{{file, outputs, in.fileRate(), 0, option, std::vector<ActivitySummary>(channels)},
                    std::move(tables),
                    std::vector<ActivityCurves>(outputs.plot.empty() ? 0 : std::min(channels, kPlottedChannels))};
    hear(in, option, results);
    std::vector<std::string> notes = in.notes();
    if (channels > 1) notes.push_back(in.name() + ": " + std::to_string(channels) + " channels, each heard by itself");

    std::unique_ptr<OutputFile> picture;
    if (!outputs.plot.empty()) {
        picture =
            std::make_unique<OutputFile>(outputs.plot, drawActivity(Gnuplot(outputs.plot), results.report, results.curves));
        if (channels > kPlottedChannels)
            notes.push_back("the plot shows the first " + std::to_string(kPlottedChannels) + " channels");
    }
    results.tables.commit();
    if (picture) picture->commit();
    return {std::move(results.report), std::move(notes)};
} catch (const std::bad_alloc&) {
    throw FileError(inputName(file), "out of memory");
}

void runVad(const Options& o) {
    if (!o.outputs.plot.empty()) Gnuplot(o.outputs.plot);  // ends here if there is none
    const std::vector<VadOutputs> outputs = placeOutputs(o);
    Json files = Json::array();
    const auto work = [&](std::size_t i) { return process(o, o.files[i], outputs[i]); };
    std::ostream& out = reportStream({o.outputs.csv, o.outputs.labels, o.outputs.plot});
    const auto show = [&](const auto& result) {
        const auto& [report, notes] = result;
        printNotes(notes);
        if (o.json)
            files.append(toJson(report));
        else
            out << toText(report) << std::flush;
    };
    const bool good = processFiles(o.files.size(), o.jobs, "detecting speech", work, show);
    if (o.json) out << Json{{"option", o.option != 0 ? o.option : kNarrow}, {"files", files}}.text();
    if (!good) throw ErrorsReported();
}

void checkPatterns(const Options& o) {
    if (o.files.size() < 2) return;
    for (const auto& [option, pattern] :
         {std::pair("--csv", o.outputs.csv), std::pair("--labels", o.outputs.labels), std::pair("--plot", o.outputs.plot)})
        if (!pattern.empty() && !hasNamePlace(pattern))
            throw UsageError{option, "with several inputs FILE needs a {}, which stands for the input's name"};
}

}  // namespace

void addVad(CommandLine& vsps) {
    Command command = vsps.add("vad", "Finds the speech in recordings as a GSM-AMR or AMR-WB encoder does.");
    const auto o = std::make_shared<Options>();
    addInput(command, o->files, o->input);
    command
        .option("--option", o->option,
                "Hear at 8000 Hz, with this detector of GSM-AMR: 1 (nine bands) or 2 (sixteen channels); without it "
                "AMR-WB's detector hears recordings at 16000 Hz or more, GSM-AMR's option 1 the others")
        .takes("1|2")
        .oneOf({"1", "2"});
    command.option("--csv", o->outputs.csv, "Write a table with a line for every 20 ms").takes("FILE");
    command.option("--labels", o->outputs.labels, "Write the segments as a label track for Audacity").takes("FILE");
    command.option("--plot", o->outputs.plot, "Draw the waveform with the speech shaded; needs gnuplot")
        .takes("FILE.png|svg|pdf");
    command.flag("--json", o->json, "Print a JSON object instead of text");
    command.option("--jobs", o->jobs, "Recordings processed at a time").takes("N").within(1, 1024).showDefault();
    command.footer(
        "With several inputs, {} in the name of an output stands for the input's name without folder and extension. An\n"
        "input that cannot be used is reported, the others are still processed, and the exit code is 1. An output can be\n"
        "- for standard output; the report goes to standard error then.\n\n"
        "The detectors of 3GPP TS 26.094 and 26.194 decide for every frame of 20 ms, and extend speech by some frames of\n"
        "hangover. The decisions are those of the standards' encoders, of GSM-AMR at 5.9 to 7.95 kbit/s, of AMR-WB at\n"
        "8.85 to 23.85 kbit/s.\n\n"
        "Columns of the table: channel, by turns; time_s, the start of the frame; speech, 1 or 0; level_dbov, -inf for\n"
        "silence; snr_db, the mean ratio of the energies in the detector's bands to its noise estimates; threshold_db, "
        "above\n"
        "which option 1 takes the frame for speech, or long_term_snr_db, by which option 2 chooses its threshold. The\n"
        "detector of AMR-WB tells no ratios: table and plot do without.\n\n"
        "Examples:\n"
        "  vsps vad call.wav\n"
        "  vsps vad --option 2 --plot speech.png --labels speech.txt call.flac\n"
        "  vsps vad --jobs 4 --csv 'tables/{}.csv' --json calls/*.wav\n"
        "  arecord -f S16_LE -r 8000 | vsps vad - --csv -");
    command.run([o] {
        checkPatterns(*o);
        runVad(*o);
    });
}
