// vsps echo: cancels the echo in a recording of a call's near end.
#include <iostream>
#include <memory>

#include "audio/audio_format.h"
#include "audio/audio_writer.h"
#include "commands.h"
#include "console/output_file.h"
#include "console/progress.h"
#include "console/report_format.h"
#include "console/standard_streams.h"
#include "console/stopwatch.h"
#include "echo/call_reader.h"
#include "echo/echo_plot.h"
#include "echo/echo_report.h"

namespace {

struct Options {
    CallFiles call;
    std::string out, plot, engine = "subband";
    VspvEchoSettings settings = echoSettings(8000);
    bool suppress = false, noSuppress = false, fixedPoint = false, json = false;
};

void checkUsage(const Options& o) {
    const CallFiles& call = o.call;
    const bool two = !call.far.empty() || !call.near.empty();
    if (two && !call.both.empty()) throw UsageError{"--far-near", "excludes --far and --near"};
    if (call.both.empty() && call.far.empty()) throw UsageError{"--far", "is required, or --far-near"};
    if (call.both.empty() && call.near.empty()) throw UsageError{"--near", "is required, or --far-near"};
    if (call.swap && call.both.empty()) throw UsageError{"--swap", "needs --far-near"};
    if (call.input.channel != 0 && !call.both.empty()) throw UsageError{"--channel", "excludes --far-near"};
    if (o.suppress && o.noSuppress) throw UsageError{"--suppress", "excludes --no-suppress"};
    if (o.suppress && o.engine != "subband") throw UsageError{"--suppress", "needs --engine subband"};
}

// A recording of which it was expected that something in it can be cancelled.
constexpr double kLongEnough = 5;  // s of far-end speech

void warn(const CallReader& in, const EchoMeter& meter, const SwapTrial& trial, const EchoMeasures& measures) {
    if (trial.seemSwapped(meter.learned()))
        std::cerr << "vsps: " << in.nearName() << ": far end and near end seem to be swapped: the echo is in the far end\n";
    else if (!measures.bulkDelayMs && meter.learned().speechSeconds() > kLongEnough)
        std::cerr << "vsps: " << in.nearName() << ": seems to have nothing to do with the far end: no echo found\n";
}

void cancelEcho(CallReader& in, const VspvEchoSettings& settings, AudioWriter& out, EchoMeter& meter, SwapTrial& trial) {
    TracedCanceller canceller(settings);
    Progress progress("cancelling echo", in.expected());
    const auto passOn = [&] {
        out.write(canceller.out());
        meter.addOutput(canceller.out(), canceller.frames());
    };
    for (Samples far, near; in.read(kBlockLength, far, near);) {
        canceller.process(far, near);
        meter.addInput(far, near);
        passOn();
        trial.process(far, near, meter.learned());
        progress.advance(near.size());
    }
    canceller.finish();
    passOn();
}

void runEcho(Options& o) {
    const Stopwatch stopwatch;
    checkUsage(o);
    o.settings.engine = o.engine == "subband" ? vspvEchoSubband : vspvEchoFullband;
    o.settings.arithmetic = o.fixedPoint ? vspvEchoFixed : vspvEchoFloat;
    o.settings.suppression = o.engine == "subband" && !o.noSuppress ? 1 : 0;
    const int format = outputFormat(o.out, o.call.input.rawRate != 0);
    refuseSameFiles({o.call.far, o.call.near, o.call.both}, {o.out, o.plot});
    std::unique_ptr<Gnuplot> gnuplot;
    if (!o.plot.empty()) gnuplot = std::make_unique<Gnuplot>(o.plot);
    CallReader in(o.call);
    o.settings.samplingRate = in.rate();
    AudioWriter out(o.out, format, in.rate(), 1);

    EchoMeter meter(in.rate());
    SwapTrial trial(o.settings);
    cancelEcho(in, o.settings, out, meter, trial);
    printNotes(in.notes());
    const bool two = o.call.both.empty();
    EchoReport report{two ? o.call.far : o.call.both,
                      two ? o.call.near : o.call.both,
                      o.out,
                      o.plot,
                      o.settings,
                      in.nearFileRate(),
                      in.length(),
                      0,
                      meter.finish()};
    warn(in, meter, trial, report.measures);

    std::unique_ptr<OutputFile> picture;
    if (gnuplot)
        picture = std::make_unique<OutputFile>(
            o.plot, drawEcho(*gnuplot, "Echo cancelled in " + in.nearName(), meter.trace(), o.settings.suppression != 0));
    out.commit();
    if (picture) picture->commit();
    report.elapsedSeconds = stopwatch.seconds();
    reportStream({o.out, o.plot}) << (o.json ? toJson(report).text() : toText(report));
}

}  // namespace

void addEcho(CommandLine& vsps) {
    Command command = vsps.add("echo", "Removes the echo of the far end from a recording of the near end.");
    const auto o = std::make_shared<Options>();
    command.option("--far", o->call.far, "Recording of what the far end says, the reference; one channel, any rate")
        .takes("FAR");
    command.option("--near", o->call.near, "Recording of the near end with the echo, begun at the same time").takes("NEAR");
    command.option("--far-near", o->call.both, "Instead of both: one recording with the far end left, the near end right")
        .takes("FILE");
    command.flag("--swap", o->call.swap, "In FILE the near end is left, the far end right");
    command
        .option("OUT", o->out,
                "Near end without echo, at 16000 Hz if NEAR has that rate or a higher one, else at 8000 Hz; the extension "
                "says how: " +
                    outputExtensions())
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
    command.flag("--suppress", o->suppress,
                 "Suppress what the filters leave of the echo, with comfort noise in its place; as it is in sub-bands");
    command.flag("--no-suppress", o->noSuppress, "Write what the filters leave");
    command.flag("--fixed", o->fixedPoint, "Use the fixed-point functions of the library");
    addInputSettings(command, o->call.input, "FAR and NEAR");
    command.option("--plot", o->plot, "Draw levels and echo removed over time; needs gnuplot").takes("FILE.png|svg|pdf");
    command.flag("--json", o->json, "Print a JSON object instead of text");
    command.footer(
        "ERLE (echo return loss enhancement) is the power of the near end over that of the output, where there is echo\n"
        "alone. Noise and near-end speech stay in the output, so ERLE cannot pass the echo-to-noise ratio. At the answer\n"
        "tone of a modem (2100 Hz with phase reversals, ITU-T G.168) the canceller steps aside.\n\n"
        "OUT is for listening: a suppressor takes out what the filters leave, near-end speech over it suffers a little. "
        "What\n"
        "is measured are the filters alone, with a second canceller: ERLE over time, convergence, and the green line of "
        "the\n"
        "plot; the levels are those of OUT. With --no-suppress OUT is what the filters leave.\n\n"
        "The bulk delay, the pure delay before the echo path, is searched from 0 to " +
        format("%.0f", o->settings.maxBulkDelayMs) +
        " ms while there is echo that the\n"
        "filter does not reach, and stays as it is while the near end talks. An echo that begins later stays in the "
        "output,\n"
        "and the report says that no echo was found.\n\n"
        "One of FAR, NEAR and FILE can be - for standard input. OUT can be - for standard output, a WAV file or, with\n"
        "--raw, 16-bit little-endian samples without a header; the report goes to standard error then.\n\n"
        "Examples:\n"
        "  vsps simulate-echo far.wav near.wav line.wav --near-at 8\n"
        "  vsps echo --far far.wav --near line.wav clean.wav --plot echo.png\n"
        "  vsps echo --far-near call.wav --swap clean.wav\n"
        "  vsps echo --far far.wav --near room.wav clean.wav --tail 256 --json");
    command.run([o] { runEcho(*o); });
}
