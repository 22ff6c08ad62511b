// vsps level: automatic level control over a whole recording.
#include <chrono>
#include <cmath>
#include <iostream>
#include <memory>
#include <new>

#include "audio/input_options.h"
#include "commands.h"
#include "console/error.h"
#include "console/output_file.h"
#include "console/report_format.h"
#include "level/level_plot.h"
#include "level/level_report.h"

namespace {

struct Options {
    InputOptions in;
    std::string out, plot;
    LevelSettings settings;
    bool json = false;
};

// Runs the control over every channel; returns the seconds it took.
double control(const Recording& recording, const LevelSettings& settings, std::vector<Samples>& out) {
    const auto begin = std::chrono::steady_clock::now();
    for (const Samples& channel : recording.channels) out.push_back(controlLevel(channel, settings));
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void runLevel(const Options& o) {
    const int format = outputFormat(o.out);
    std::unique_ptr<Gnuplot> gnuplot;
    if (!o.plot.empty()) {
        gnuplot = std::make_unique<Gnuplot>(o.plot);
        if (sameFile(o.plot, o.out)) throw FileError(o.plot, "is the plot and the output at once");
    }
    const Recording recording = o.in.read();
    if (recording.channels.size() > 1)
        std::cerr << "vsps: " << o.in.file << ": " << recording.channels.size() << " channels, each controlled by itself\n";

    std::vector<Samples> out;
    LevelReport report{o.in.file, o.out, o.plot, recording.fileRate, recording.length(), o.settings, 0, {}};
    report.controlSeconds = control(recording, o.settings, out);
    std::vector<GainTrace> traces;
    for (std::size_t i = 0; i < out.size(); i++) {
        traces.push_back(traceGain(recording.channels[i], out[i]));
        report.channels.push_back(measureChannel(recording.channels[i], out[i], traces[i], o.settings));
    }

    OutputFile audio(o.out, encodeAudio(out, format, o.out));
    std::unique_ptr<OutputFile> picture;
    if (gnuplot)
        picture =
            std::make_unique<OutputFile>(o.plot, drawLevels(*gnuplot, "Level control of " + o.in.file, traces, o.settings));
    audio.commit();
    if (picture) picture->commit();
    if (o.json)
        std::cout << toJson(report).text();
    else
        std::cout << toText(report);
}

}  // namespace

void addLevel(CommandLine& vsps) {
    Command command =
        vsps.add("level", "Brings the speech in a recording to an even level (automatic level control after ITU-T G.169).");
    const auto o = std::make_shared<Options>();
    addInput(command, o->in);
    command.option("OUT", o->out, "Result at 8000 Hz; the extension says how: " + outputExtensions()).required();
    command.option("--target", o->settings.target, "Level of the speech, dB below full scale")
        .takes("FLOAT:dB")
        .within(0, 200, "a number of decibels")
        .showDefault();
    command.option("--limit", o->settings.limit, "Highest peak, dB below full scale")
        .takes("FLOAT:dB")
        .within(0, 200, "a number of decibels")
        .showDefault();
    command.option("--max-gain", o->settings.maxGain, "Highest gain, dB")
        .takes("FLOAT:dB")
        .within(0, 200, "a number of decibels")
        .showDefault();
    command.flag("--two-pass", o->settings.twoPass,
                 "Hear the whole recording first, so that its start comes out right too");
    command.option("--plot", o->plot, "Draw levels and gain over time; needs gnuplot").takes("FILE.png|svg|pdf");
    command.flag("--json", o->json, "Print a JSON object instead of text");
    command.footer(
        "The report gives active speech levels (ITU-T P.56) in dBov, that is, dB relative to full scale: a full-scale\n"
        "sine is at -3 dBov. The gain begins at -30 dB and rises with the first speech: without --two-pass the first\n"
        "words come out attenuated.\n\n"
        "Examples:\n"
        "  vsps level call.wav even.wav\n"
        "  vsps level --two-pass --target 23 --plot even.png call.flac even.wav\n"
        "  vsps level --raw 8000 --json trunk.al even.au");
    command.run([o] {
        try {
            runLevel(*o);
        } catch (const std::bad_alloc&) {
            throw FileError(o->in.file, "too long for the memory of this machine");
        }
    });
}
