// vsps denoise: attenuates the noise in a recording.
#include <algorithm>
#include <iostream>
#include <memory>

#include "audio/audio_format.h"
#include "audio/audio_writer.h"
#include "audio/input_options.h"
#include "commands.h"
#include "console/output_file.h"
#include "console/progress.h"
#include "console/stopwatch.h"
#include "denoise/denoise_plot.h"
#include "denoise/denoise_report.h"

namespace {

struct Options {
    std::string in, out, plot;
    InputSettings input;
    std::string mode = "normal";
    bool json = false;
};

using Spectrograms = std::vector<std::unique_ptr<DenoiseSpectrograms>>;

const std::vector<std::string> kModes = {"off", "low", "normal", "high", "auto"};  // in the order of their values

int modeOf(const std::string& name) { return int(std::find(kModes.begin(), kModes.end(), name) - kModes.begin()); }

void denoise(AudioReader& in, std::vector<NoiseRemoval>& channels, AudioWriter& out, Spectrograms& spectrograms) {
    Progress progress("removing noise", in.expected());
    Block cleaned(in.channels());
    const auto writeCleaned = [&] {
        for (std::size_t i = 0; i < spectrograms.size(); i++) spectrograms[i]->after.add(cleaned[i]);
        if (!cleaned[0].empty()) out.write(cleaned);
        for (Samples& channel : cleaned) channel.clear();
    };
    for (Block block; in.read(kBlockLength, block); progress.advance(block[0].size())) {
        for (std::size_t i = 0; i < block.size(); i++) channels[i].process(block[i], cleaned[i]);
        for (std::size_t i = 0; i < spectrograms.size(); i++) spectrograms[i]->before.add(block[i]);
        writeCleaned();
    }
    for (std::size_t i = 0; i < channels.size(); i++) channels[i].finish(cleaned[i]);
    writeCleaned();
    for (const auto& channel : spectrograms) {
        channel->before.finish();
        channel->after.finish();
    }
}

void runDenoise(const Options& o) {
    const Stopwatch stopwatch;
    const int format = outputFormat(o.out, o.input.rawRate != 0);
    std::unique_ptr<Gnuplot> gnuplot;
    if (!o.plot.empty()) gnuplot = std::make_unique<Gnuplot>(o.plot);
    refuseSameFiles({o.in}, {o.out, o.plot});
    AudioReader in = openInput(o.in, o.input);
    if (in.channels() > 1)
        std::cerr << "vsps: " << in.name() << ": " << in.channels() << " channels, each treated by itself\n";
    const int rate = denoiserRate(in.fileRate());
    in.convertTo(rate);
    AudioWriter out(o.out, format, rate, int(in.channels()));

    std::vector<NoiseRemoval> channels;
    for (std::size_t i = 0; i < in.channels(); i++) channels.emplace_back(rate, modeOf(o.mode));
    Spectrograms spectrograms;
    if (gnuplot)
        for (std::size_t i = 0; i < std::min(in.channels(), kDenoisePlotChannels); i++)
            spectrograms.push_back(std::make_unique<DenoiseSpectrograms>(rate));
    denoise(in, channels, out, spectrograms);
    printNotes(in.notes());

    std::unique_ptr<OutputFile> picture;
    if (gnuplot) {
        if (spectrograms.size() < in.channels())
            std::cerr << "vsps: the plot shows the first " << kDenoisePlotChannels << " channels\n";
        picture = std::make_unique<OutputFile>(
            o.plot, drawDenoise(*gnuplot, "Noise in " + in.name() + ", mode " + o.mode, spectrograms, rate));
    }
    out.commit();
    if (picture) picture->commit();
    const DenoiseReport report{o.in, o.out, o.plot, in.fileRate(), rate, in.length(), o.mode, stopwatch.seconds()};
    reportStream({o.out, o.plot}) << (o.json ? toJson(report, channels).text() : toText(report, channels));
}

}  // namespace

void addDenoise(CommandLine& vsps) {
    Command command = vsps.add("denoise", "Attenuates the noise in a recording and leaves the speech.");
    const auto o = std::make_shared<Options>();
    addInput(command, o->in, o->input);
    command
        .option("OUT", o->out,
                "Result at 8000, 16000, 22050 or 32000 Hz, the highest that IN has; the extension says how: " +
                    outputExtensions())
        .required();
    command.option("--mode", o->mode, "How much: off, low (10 dB), normal (14 dB), high (18 dB) or auto")
        .takes("off|low|normal|high|auto")
        .oneOf(kModes)
        .showDefault();
    command.option("--plot", o->plot, "Draw the spectrogram before and after; needs gnuplot").takes("FILE.png|svg|pdf");
    command.flag("--json", o->json, "Print a JSON object instead of text");
    command.footer(
        "The noise is learned from the recording itself, within about a second; auto takes 18 dB off steady noise and\n"
        "less off what changes as voices do. The result is in step with IN and as long.\n\n"
        "The report gives the part of the time with speech, and by how much the power of the rest became less.\n\n"
        "OUT can be - for standard output, a WAV file or, with --raw, 16-bit little-endian samples without a header; the\n"
        "report goes to standard error then.\n\n"
        "Examples:\n"
        "  vsps denoise call.wav clean.wav\n"
        "  vsps denoise --mode auto --plot clean.png call.flac clean.flac\n"
        "  vsps denoise --raw 8000 --json trunk.al clean.au\n"
        "  arecord -f S16_LE -r 16000 | vsps denoise - - | aplay");
    command.run([o] { runDenoise(*o); });
}
