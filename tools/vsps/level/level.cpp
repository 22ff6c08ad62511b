// vsps level: automatic level control over a whole recording.
#include <iostream>
#include <memory>

#include "audio/audio_format.h"
#include "audio/audio_writer.h"
#include "audio/input_options.h"
#include "audio/spool.h"
#include "commands.h"
#include "console/output_file.h"
#include "console/progress.h"
#include "console/stopwatch.h"
#include "level/level_plot.h"
#include "level/level_report.h"

namespace {

struct Options {
    std::string in, out, plot;
    InputSettings input;
    LevelSettings settings;
    bool json = false;
};

// Hears the whole recording, which it keeps for the second pass.
void learnLevel(AudioReader& in, std::vector<LevelControl>& controls, Spool& spool, Progress& progress) {
    Samples ignored;
    for (Block block; in.read(kBlockLength, block);) {
        for (std::size_t i = 0; i < block.size(); i++) {
            ignored.resize(block[i].size());
            controls[i].process(block[i], ignored);
        }
        spool.write(block);
        progress.advance(block[0].size());
    }
    spool.rewind();
}

// Runs the control over every channel.
void control(AudioReader& in, const LevelSettings& settings, AudioWriter& out, std::vector<ChannelMeter>& meters) {
    std::vector<LevelControl> controls(in.channels(), LevelControl(settings));
    Progress progress("controlling the level", in.expected() * (settings.twoPass ? 2 : 1));
    std::unique_ptr<Spool> spool;
    if (settings.twoPass) {
        spool = std::make_unique<Spool>();
        learnLevel(in, controls, *spool, progress);
    }
    Block controlled(in.channels());
    for (Block block; spool ? spool->read(block) : in.read(kBlockLength, block);) {
        for (std::size_t i = 0; i < block.size(); i++) {
            controlled[i].resize(block[i].size());
            controls[i].process(block[i], controlled[i]);
            meters[i].process(block[i], controlled[i]);
        }
        out.write(controlled);
        progress.advance(block[0].size());
    }
}

void runLevel(const Options& o) {
    const Stopwatch stopwatch;
    const int format = outputFormat(o.out, o.input.rawRate != 0);
    std::unique_ptr<Gnuplot> gnuplot;
    if (!o.plot.empty()) gnuplot = std::make_unique<Gnuplot>(o.plot);
    refuseSameFiles({o.in}, {o.out, o.plot});
    if (o.settings.highestSample() < 1)
        std::cerr << "vsps: no sample keeps a limit of " << o.settings.limit << " dB: the output is silent\n";
    AudioReader in = openInput(o.in, o.input);
    if (in.channels() > 1)
        std::cerr << "vsps: " << in.name() << ": " << in.channels() << " channels, each controlled by itself\n";
    AudioWriter out(o.out, format, in.rate(), int(in.channels()));

    std::vector<ChannelMeter> meters(in.channels(), ChannelMeter(o.settings));
    control(in, o.settings, out, meters);
    printNotes(in.notes());
    LevelReport report{o.in, o.out, o.plot, in.fileRate(), in.length(), o.settings, 0, {}};
    for (ChannelMeter& meter : meters) report.channels.push_back(meter.finish());

    std::unique_ptr<OutputFile> picture;
    if (gnuplot)
        picture =
            std::make_unique<OutputFile>(o.plot, drawLevels(*gnuplot, "Level control of " + in.name(), meters, o.settings));
    out.commit();
    if (picture) picture->commit();
    report.elapsedSeconds = stopwatch.seconds();
    reportStream({o.out, o.plot}) << (o.json ? toJson(report).text() : toText(report));
}

}  // namespace

void addLevel(CommandLine& vsps) {
    Command command =
        vsps.add("level", "Brings the speech in a recording to an even level (automatic level control after ITU-T G.169).");
    const auto o = std::make_shared<Options>();
    addInput(command, o->in, o->input);
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
        "OUT can be - for standard output, a WAV file or, with --raw, 16-bit little-endian samples without a header; the\n"
        "report goes to standard error then.\n\n"
        "Examples:\n"
        "  vsps level call.wav even.wav\n"
        "  vsps level --two-pass --target 23 --plot even.png call.flac even.wav\n"
        "  vsps level --raw 8000 --json trunk.al even.au\n"
        "  arecord -f S16_LE -r 8000 | vsps level - - | aplay");
    command.run([o] { runLevel(*o); });
}
