// vsps encode: a recording to a stream of coded frames.
#include <memory>
#include <ostream>

#include "audio/input_options.h"
#include "codec/codec_choice.h"
#include "codec/codec_report.h"
#include "codec/codec_stream.h"
#include "commands.h"
#include "console/output_file.h"
#include "console/progress.h"
#include "console/stopwatch.h"

namespace {

struct Options {
    std::string in, out, codec;
    InputSettings input;
    int bitRate = 0;
    bool dtx = false, json = false;
};

void runEncode(const Options& o) {
    const Stopwatch stopwatch;
    const CodedFileChoice choice{o.out, o.codec, o.bitRate};
    const VspvCodec& codec = codecOf(choice);
    CodecReport report{o.in, o.out, &codec, chooseBitRate(codec, o.bitRate)};
    StreamEncoder encoder(codec, report.bitRate);
    if (o.dtx && !encoder.setDTX())
        throw UsageError{"--dtx", std::string(codec.name) + " has no discontinuous transmission"};
    refuseSameFiles({o.in}, {o.out});
    AudioReader in = openOneChannel(o.in, o.input);
    in.convertTo(codec.samplingRate);
    const std::unique_ptr<FrameWriter> out = createCoded(choice);

    Progress progress("encoding", in.expected());
    for (Block block; in.read(std::size_t(codec.frameSamples), block); report.frames++) {
        out->write(encoder.encode(block[0]));
        progress.advance(block[0].size());
    }
    for (; report.frames % out->framesOfBlock() != 0; report.frames++) out->write(encoder.encode({}));
    report.samples = in.length();
    report.bytes = out->octets();
    out->commit();
    printNotes(in.notes());
    report.elapsedSeconds = stopwatch.seconds();
    reportStream({o.out}) << (o.json ? toJson(report).text() : toText(report));
}

}  // namespace

void addEncode(CommandLine& vsps) {
    Command command = vsps.add("encode", "Codes the speech in a recording: a stream of octets without a header.");
    const auto o = std::make_shared<Options>();
    addInput(command, o->in, o->input);
    command.option("OUT", o->out, "Stream; its extension is the codec's name or .al .ul; - is standard output").required();
    command.option("--codec", o->codec, "The codec, whatever the extension says").oneOf(codecNames());
    command.option("--rate", o->bitRate, "Bit rate of a codec that has several").takes("BITS").within(1, 1e6);
    command.flag("--dtx", o->dtx, "Send little or nothing in pauses, where the codec has discontinuous transmission");
    command.flag("--json", o->json, "Print a JSON object instead of text");
    command.footer(
        "\"vsps codecs\" lists the codecs. The recording is resampled to the codec's rate. GSM frames are whole, the last "
        "one\n"
        "completed with silence; the other streams end with the octet of the last sample.\n\n"
        "Examples:\n"
        "  vsps encode call.wav call.g726-32\n"
        "  vsps encode --rate 48000 call.flac call.g722\n"
        "  vsps encode call.wav - --codec gsm | vsps decode - heard.wav --codec gsm --lose 5");
    command.run([o] { runEncode(*o); });
}
