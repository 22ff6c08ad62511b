// vsps tone: answer tones with phase reversals in recordings.
#include <iostream>
#include <memory>
#include <new>

#include "audio/input_options.h"
#include "commands.h"
#include "console/error.h"
#include "console/many_files.h"
#include "console/output_file.h"
#include "console/standard_streams.h"
#include "tone/tone_report.h"

namespace {

constexpr int kWideband = 16000;  // Hz, the detector's other rate

struct Options {
    std::vector<std::string> files;
    InputSettings input;
    std::size_t jobs = 1;
    bool fixedPoint = false, json = false;
};

struct Result {
    std::vector<std::string> notes;  // for stderr
    ToneReport report;
};

Result process(const Options& o, const std::string& file) try {
    AudioReader in = openInput(file, o.input);
    if (in.fileRate() == kWideband) in.convertTo(kWideband);
    std::vector<AnswerToneFinder> finders(in.channels(), AnswerToneFinder(in.rate(), o.fixedPoint));
    ToneReport report{file, in.fileRate(), in.rate(), 0, std::vector<std::vector<AnswerTone>>(in.channels())};
    Progress progress("detecting tones", in.expected());
    for (Block block; in.read(kBlockLength, block); progress.advance(block[0].size()))
        for (std::size_t i = 0; i < block.size(); i++) finders[i].process(block[i], report.channels[i]);
    for (std::size_t i = 0; i < finders.size(); i++) finders[i].finish(report.channels[i]);
    report.seconds = in.seconds();

    Result result{in.notes(), report};
    if (in.channels() > 1)
        result.notes.push_back(in.name() + ": " + std::to_string(in.channels()) + " channels, each heard by itself");
    return result;
} catch (const std::bad_alloc&) {
    throw FileError(inputName(file), "out of memory");
}

void runTone(const Options& o) {
    refuseSameFiles(o.files, {});
    Json files = Json::array();
    const auto work = [&](std::size_t i) { return process(o, o.files[i]); };
    const auto show = [&](const Result& result) {
        printNotes(result.notes);
        if (o.json)
            files.append(toJson(result.report));
        else
            std::cout << toText(result.report) << std::flush;
    };
    const bool good = processFiles(o.files.size(), o.jobs, "detecting tones", work, show);
    if (o.json) std::cout << Json{{"variant", o.fixedPoint ? "fixed" : "float"}, {"files", files}}.text();
    if (!good) throw ErrorsReported();
}

}  // namespace

void addTone(CommandLine& vsps) {
    Command command =
        vsps.add("tone", "Finds the answer tones with which modems and fax machines disable echo cancellers.");
    const auto o = std::make_shared<Options>();
    addInput(command, o->files, o->input);
    command.flag("--fixed", o->fixedPoint, "Use the fixed-point detector instead of the floating-point one");
    command.flag("--json", o->json, "Print a JSON object instead of text");
    command.option("--jobs", o->jobs, "Recordings processed at a time").takes("N").within(1, 1024).showDefault();
    command.footer(
        "The tone has 2100 Hz and a phase reversal every 450 ms (ITU-T V.25). The detector reports a reversal if the one\n"
        "before it was 413 to 466 ms earlier: the second reversal of a tone is the first that it reports, and a tone\n"
        "without reversals is none. It begins anew after 50 ms of digital silence. Recordings at 8000 and 16000 Hz are\n"
        "heard as they are, others at 8000 Hz. With several inputs, one that cannot be used is reported, the others are\n"
        "still processed, and the exit code is 1.\n\n"
        "For each tone: where 2100 Hz begins and ends to prevail, to 10 ms, its level, and the reported reversals,\n"
        "some milliseconds late; the tone counts as detected at the first of them. With --json the time of each.\n\n"
        "Examples:\n"
        "  vsps tone fax.wav\n"
        "  vsps tone --fixed --raw 8000 trunk.al\n"
        "  vsps tone --jobs 4 --json calls/*.wav");
    command.run([o] { runTone(*o); });
}
