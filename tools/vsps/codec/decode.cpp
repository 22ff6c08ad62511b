// vsps decode: a stream of coded frames to a recording, with losses if they are asked for.
#include <memory>
#include <ostream>
#include <random>

#include "audio/audio_format.h"
#include "audio/audio_writer.h"
#include "codec/codec_choice.h"
#include "codec/codec_report.h"
#include "codec/codec_stream.h"
#include "commands.h"
#include "console/error.h"
#include "console/progress.h"
#include "console/stopwatch.h"

namespace {

struct Options {
    std::string in, out, codec;
    int bitRate = 0;
    double losePercent = 0;
    unsigned seed = 1;
    bool json = false;
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

void runDecode(const Options& o) {
    const Stopwatch stopwatch;
    const int format = outputFormat(o.out, false);
    refuseSameFiles({o.in}, {o.out});
    const std::unique_ptr<FrameReader> in = openCoded({o.in, o.codec, o.bitRate});
    const VspvCodec& codec = in->codec();
    AudioWriter out(o.out, format, codec.samplingRate, 1);

    CodecReport report{o.in, o.out, &codec};
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
        progress.advance(in->octets() - report.bytes);
        report.bytes = in->octets();
        report.samples += samples.size();
    }
    out.commit();
    report.elapsedSeconds = stopwatch.seconds();
    reportStream({o.out}) << (o.json ? toJson(report).text() : toText(report));
}

}  // namespace

void addDecode(CommandLine& vsps) {
    Command command = vsps.add("decode", "Decodes a stream of coded speech; conceals frames that it is told to lose.");
    const auto o = std::make_shared<Options>();
    command.option("IN", o->in, "Stream; its extension is the codec's name or .al .ul; - is standard input").required();
    command.option("OUT", o->out, "Result at the codec's rate; the extension says how: " + outputExtensions()).required();
    command.option("--codec", o->codec, "The codec, whatever the extension says").oneOf(codecNames());
    command.option("--rate", o->bitRate, "Bit rate of a codec that has several").takes("BITS").within(1, 1e6);
    command.option("--lose", o->losePercent, "Lose so many frames, at random, and conceal them")
        .takes("PERCENT")
        .within(0, 100, "a percentage");
    command.option("--seed", o->seed, "Lose other frames with another number").takes("N").showDefault();
    command.flag("--json", o->json, "Print a JSON object instead of text");
    command.footer(
        "\"vsps codecs\" lists the codecs.\n\n"
        "Examples:\n"
        "  vsps decode call.gsm call.wav\n"
        "  vsps decode --lose 10 call.g722 bad-network.wav");
    command.run([o] { runDecode(*o); });
}
