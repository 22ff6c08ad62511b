// vsps decode: streams of coded frames to recordings, with losses if they are asked for.
#include <memory>
#include <random>

#include "audio/audio_format.h"
#include "audio/audio_writer.h"
#include "codec/codec_command.h"
#include "codec/codec_stream.h"
#include "commands.h"
#include "console/error.h"
#include "console/progress.h"
#include "console/stopwatch.h"

namespace {

struct Options {
    CodecOptions common;
    double losePercent = 0;
    unsigned seed = 1;
};

// Loses frames at random, the same ones for the same seed.
class Losses {
  public:
    Losses(double percent, unsigned seed) : percent_(percent), random_(seed) {}
    bool next() { return 100.0 * double(random_()) / 4294967296.0 < percent_; }

  private:
    double percent_;
    std::mt19937 random_;
};

CodecResult decode(const Options& o, const CodecFiles& files) {
    const Stopwatch stopwatch;
    const int format = outputFormat(files.out, false);
    const std::unique_ptr<FrameReader> in = openCoded({files.in, o.common.codec, o.common.bitRate});
    const VspvCodec& codec = in->codec();
    AudioWriter out(files.out, format, codec.samplingRate, 1);
    OriginalComparison comparison(files, {}, codec.samplingRate);

    CodecResult result{{files.in, files.out, &codec}, {}};
    CodecReport& report = result.report;
    report.lost = 0;
    StreamDecoder decoder(codec);
    Losses losses(o.losePercent, o.seed);
    Progress progress("decoding", in->expectedOctets());
    CodedFrame frame;
    Samples samples;
    for (; in->read(frame); report.frames++) {
        if (report.frames == 0) report.bitRate = frame.told.bitRate;
        if (losses.next()) {
            frame.told.quality = vspvQualityLost;
            ++*report.lost;
        }
        if (!decoder.decode(frame, samples))
            throw FileError(in->name(), "frame " + std::to_string(report.frames + 1) + " is not one of " + codec.name);
        out.write(samples);
        comparison.add(samples);
        progress.advance(in->octets() - report.bytes);
        report.bytes = in->octets();
        report.samples += samples.size();
    }
    report.elapsedSeconds = stopwatch.seconds();
    comparison.finish(result);
    out.commit();
    comparison.commitPlot();
    return result;
}

}  // namespace

void addDecode(CommandLine& vsps) {
    Command command = vsps.add("decode", "Decodes streams of coded speech; conceals frames that it is told to lose.");
    const auto o = std::make_shared<Options>();
    addCodecOptions(command, o->common,
                    "Streams, whose extension is the codec's name or one of " + codedExtensions() +
                        ", and last the result, whose extension says how: " + outputExtensions() +
                        "; - is standard input or output");
    command.option("--lose", o->losePercent, "Lose so many frames, at random, and conceal them")
        .takes("PERCENT")
        .within(0, 100, "a percentage");
    command.option("--seed", o->seed, "Lose other frames with another number").takes("N").showDefault();
    command.footer(
        "\"vsps codecs\" lists the codecs. What is decoded has the codec's sampling rate. A WAV file says itself what "
        "codec it\n"
        "has. With several inputs, {} in OUT, ORIGINAL and the plot's name stands for the input's name without folder and\n"
        "extension.\n\n"
        "--against aligns the original and what is decoded, and gives means over steps of 16 ms with speech: the\n"
        "signal-to-noise ratio, each step within -10 and 35 dB, and the distance between the spectra of 32 ms, the root "
        "mean\n"
        "square over frequency of their difference in dB, down to 50 dB below the strongest one.\n\n"
        "Examples:\n"
        "  vsps decode call.gsm call.wav\n"
        "  vsps decode --lose 10 call.g722 bad-network.wav --against call.wav --plot difference.png\n"
        "  vsps decode --jobs 4 coded/*.g726-32 'heard/{}.flac' --against 'calls/{}.wav' --json");
    command.run([o] { processCoded(o->common, "decoding", [&](const CodecFiles& files) { return decode(*o, files); }); });
}
