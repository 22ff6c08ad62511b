// vsps vad: where there is speech in recordings.
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <new>

#include "audio/input_options.h"
#include "audio/recording.h"
#include "commands.h"
#include "console/error.h"
#include "console/many_files.h"
#include "console/output_file.h"
#include "console/report_format.h"
#include "vad/vad_plot.h"

namespace {

constexpr const char* kPlace = "{}";  // what stands for the name of the input in that of an output

struct Options {
    std::vector<std::string> files;
    InputSettings input;
    int option = 1;
    std::size_t jobs = 1;
    VadOutputs outputs;  // patterns
    bool json = false;
};

struct Result {
    std::vector<std::string> notes;  // for stderr
    VadReport report;
    std::string csv, labels, picture;
};

std::string place(std::string pattern, const std::string& file) {
    const std::string name = std::filesystem::path(file).stem();
    for (std::size_t at = 0; (at = pattern.find(kPlace, at)) != std::string::npos; at += name.size())
        pattern.replace(at, 2, name);
    return pattern;
}

// Where the results of each input go. No output may be an input or another output.
std::vector<VadOutputs> placeOutputs(const Options& o) {
    const auto canonical = [](const std::string& file) {
        std::error_code error;
        const std::string name = std::filesystem::weakly_canonical(file, error);
        return error ? file : name;
    };
    std::map<std::string, std::string> taken;  // by whom
    for (const std::string& file : o.files) taken[canonical(file)] = "the input " + file;
    const auto claim = [&](const std::string& pattern, const std::string& file, const char* what) {
        std::string out = place(pattern, file);
        std::error_code error;
        if (out.empty() || std::filesystem::is_other(out, error)) return out;  // a device or pipe may take several
        const auto [owner, isNew] = taken.try_emplace(canonical(out), std::string(what) + " of " + file);
        if (!isNew) throw FileError(out, "is " + owner->second + " and " + what + " of " + file + " at once");
        return out;
    };
    std::vector<VadOutputs> all;
    for (const std::string& file : o.files)
        all.push_back({claim(o.outputs.csv, file, "the table"), claim(o.outputs.labels, file, "the labels"),
                       claim(o.outputs.plot, file, "the plot")});
    return all;
}

Result process(const Options& o, const std::string& file, const VadOutputs& outputs) try {
    Recording recording = readRecording(openInput(file, o.input));
    Result result{
        std::move(recording.notes), {file, outputs, recording.fileRate, recording.length(), o.option, {}}, {}, {}, {}};
    const std::size_t channels = recording.channels.size();
    if (channels > 1) result.notes.push_back(file + ": " + std::to_string(channels) + " channels, each heard by itself");
    for (const Samples& channel : recording.channels) result.report.channels.push_back(detectActivity(channel, o.option));
    if (!outputs.csv.empty()) result.csv = toCsv(result.report);
    if (!outputs.labels.empty()) result.labels = toLabels(result.report);
    if (!outputs.plot.empty()) {
        result.picture = drawActivity(Gnuplot(outputs.plot), result.report, recording.channels);
        if (channels > kPlottedChannels)
            result.notes.push_back("the plot shows the first " + std::to_string(kPlottedChannels) + " channels");
    }
    return result;
} catch (const std::bad_alloc&) {
    throw FileError(file, "too long for the memory of this machine");
}

void write(const Result& r) {
    std::vector<std::unique_ptr<OutputFile>> files;
    const auto add = [&](const std::string& name, const std::string& content) {
        if (!name.empty()) files.push_back(std::make_unique<OutputFile>(name, content));
    };
    add(r.report.outputs.csv, r.csv);
    add(r.report.outputs.labels, r.labels);
    add(r.report.outputs.plot, r.picture);
    for (const auto& file : files) file->commit();
}

void runVad(const Options& o) {
    if (!o.outputs.plot.empty()) Gnuplot(o.outputs.plot);  // ends here if there is none
    const std::vector<VadOutputs> outputs = placeOutputs(o);
    Json files = Json::array();
    const auto work = [&](std::size_t i) { return process(o, o.files[i], outputs[i]); };
    const auto show = [&](const Result& result) {
        printNotes(result.notes);
        write(result);
        if (o.json)
            files.append(toJson(result.report));
        else
            std::cout << toText(result.report) << std::flush;
    };
    const bool good = processFiles(o.files.size(), o.jobs, "detecting speech", work, show);
    if (o.json) std::cout << Json{{"option", o.option}, {"files", files}}.text();
    if (!good) throw ErrorsReported();
}

void checkPatterns(const Options& o) {
    if (o.files.size() < 2) return;
    for (const auto& [option, pattern] :
         {std::pair("--csv", o.outputs.csv), std::pair("--labels", o.outputs.labels), std::pair("--plot", o.outputs.plot)})
        if (!pattern.empty() && pattern.find(kPlace) == std::string::npos)
            throw UsageError{option, "with several inputs FILE needs a {}, which stands for the input's name"};
}

}  // namespace

void addVad(CommandLine& vsps) {
    Command command = vsps.add("vad", "Finds the speech in recordings as a GSM-AMR encoder does.");
    const auto o = std::make_shared<Options>();
    addInput(command, o->files, o->input);
    command.option("--option", o->option, "Which detector of the standard: 1 (nine bands) or 2 (sixteen channels)")
        .takes("1|2")
        .oneOf({"1", "2"})
        .showDefault();
    command.option("--csv", o->outputs.csv, "Write a table with a line for every 20 ms").takes("FILE");
    command.option("--labels", o->outputs.labels, "Write the segments as a label track for Audacity").takes("FILE");
    command.option("--plot", o->outputs.plot, "Draw the waveform with the speech shaded; needs gnuplot")
        .takes("FILE.png|svg|pdf");
    command.flag("--json", o->json, "Print a JSON object instead of text");
    command.option("--jobs", o->jobs, "Recordings processed at a time").takes("N").within(1, 1024).showDefault();
    command.footer(
        "With several inputs, {} in the name of an output stands for the input's name without folder and extension. An\n"
        "input that cannot be used is reported, the others are still processed, and the exit code is 1.\n\n"
        "The detectors of 3GPP TS 26.094 decide for every frame of 20 ms, and extend speech by some frames of hangover.\n"
        "What an encoder feeds them comes from its pre-processing and its open-loop pitch search in the weighted speech,\n"
        "here with the lags and thresholds of the rates from 5.9 to 7.95 kbit/s; linear prediction and weighting run in\n"
        "floating point.\n\n"
        "Columns of the table: channel; time_s, the start of the frame; speech, 1 or 0; level_dbov, -inf for silence;\n"
        "snr_db, the mean ratio of the energies in the detector's bands to its noise estimates; threshold_db, above which\n"
        "option 1 takes the frame for speech, or long_term_snr_db, by which option 2 chooses its threshold.\n\n"
        "Examples:\n"
        "  vsps vad call.wav\n"
        "  vsps vad --option 2 --plot speech.png --labels speech.txt call.flac\n"
        "  vsps vad --jobs 4 --csv 'tables/{}.csv' --json calls/*.wav");
    command.run([o] {
        checkPatterns(*o);
        runVad(*o);
    });
}
