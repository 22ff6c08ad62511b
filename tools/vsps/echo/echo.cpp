// vsps echo: cancels the echo in a recording of a call's near end.
#include <algorithm>
#include <iostream>
#include <memory>
#include <new>

#include "audio/audio_format.h"
#include "audio/audio_writer.h"
#include "audio/input_options.h"
#include "audio/recording.h"
#include "commands.h"
#include "console/error.h"
#include "console/output_file.h"
#include "console/report_format.h"
#include "echo/echo_plot.h"
#include "echo/echo_report.h"

namespace {

struct Options {
    std::string far, near, out, plot, engine = "subband";
    int rawRate = 0;
    EchoCancellerSettings settings;
    bool json = false;
};

Samples readOneChannel(const std::string& file, int rawRate) {
    Recording recording = readRecording(openOneChannel(file, {rawRate, 0}));
    printNotes(recording.notes);
    return std::move(recording.channels[0]);
}

void runEcho(Options& o) {
    o.settings.engine = o.engine == "subband" ? EchoEngine::subband : EchoEngine::fullband;
    const int format = outputFormat(o.out, o.rawRate != 0);
    for (const std::string& other : {o.far, o.near, o.plot})
        if (!other.empty() && sameFile(o.out, other)) throw FileError(o.out, "is the output and another file at once");
    std::unique_ptr<Gnuplot> gnuplot;
    if (!o.plot.empty()) gnuplot = std::make_unique<Gnuplot>(o.plot);
    Samples far = readOneChannel(o.far, o.rawRate);
    const Samples near = readOneChannel(o.near, o.rawRate);
    if (far.size() != near.size())
        std::cerr << "vsps: " << o.far
                  << ::format(": %.2f s %s than %s, %s\n", std::abs(double(far.size()) - double(near.size())) / kRate,
                              far.size() < near.size() ? "shorter" : "longer", o.near.c_str(),
                              far.size() < near.size() ? "silent from there on" : "the rest is left out");
    far.resize(near.size());

    const EchoRun run = cancelEcho(far, near, o.settings);
    EchoReport report{};
    report.farFile = o.far;
    report.nearFile = o.near;
    report.outFile = o.out;
    report.plotFile = o.plot;
    report.settings = o.settings;
    measureEcho(far, near, run, report);

    AudioWriter audio(o.out, format, kRate, 1);
    audio.write(run.out);
    std::unique_ptr<OutputFile> picture;
    if (gnuplot)
        picture = std::make_unique<OutputFile>(o.plot, drawEcho(*gnuplot, "Echo cancelled in " + o.near, run.frames));
    audio.commit();
    if (picture) picture->commit();
    std::cout << (o.json ? toJson(report).text() : toText(report));
}

}  // namespace

void addEcho(CommandLine& vsps) {
    Command command = vsps.add("echo", "Removes the echo of the far end from a recording of the near end.");
    const auto o = std::make_shared<Options>();
    command.option("--far", o->far, "Recording of what the far end says, the reference; one channel, any rate").required();
    command.option("--near", o->near, "Recording of the near end with the echo, begun at the same time").required();
    command.option("OUT", o->out, "Near end without echo, at 8000 Hz; the extension says how: " + outputExtensions())
        .required();
    command.option("--tail", o->settings.tailMs, "Longest echo path that can be cancelled, besides its bulk delay")
        .takes("ms")
        .within(1, 500)
        .showDefault();
    command
        .option("--engine", o->engine,
                "subband: a short complex filter in each band; fullband: one long filter of the signal")
        .takes("subband|fullband")
        .oneOf({"subband", "fullband"})
        .showDefault();
    command.flag("--fixed", o->settings.fixedPoint, "Use the fixed-point functions of the library");
    addRaw(command, o->rawRate, "FAR and NEAR have no header: see vsps level --help");
    command.option("--plot", o->plot, "Draw levels and echo removed over time; needs gnuplot").takes("FILE.png|svg|pdf");
    command.flag("--json", o->json, "Print a JSON object instead of text");
    command.footer(
        "ERLE (echo return loss enhancement) is the power of the near end over that of the output, where there is echo\n"
        "alone. Noise and near-end speech stay in the output, so ERLE cannot pass the echo-to-noise ratio. At the answer\n"
        "tone of a modem (2100 Hz with phase reversals, ITU-T G.168) the canceller steps aside.\n\n"
        "Examples:\n"
        "  vsps simulate-echo far.wav near.wav line.wav --near-at 8\n"
        "  vsps echo --far far.wav --near line.wav clean.wav --plot echo.png\n"
        "  vsps echo --far far.wav --near room.wav clean.wav --tail 256 --json");
    command.run([o] {
        try {
            runEcho(*o);
        } catch (const std::bad_alloc&) {
            throw FileError(o->near, "too long for the memory of this machine");
        }
    });
}
