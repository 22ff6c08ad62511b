// vsps encode: recordings to streams of coded frames.
#include <memory>

#include "codec/codec_choice.h"
#include "codec/codec_command.h"
#include "codec/codec_stream.h"
#include "commands.h"
#include "console/progress.h"
#include "console/stopwatch.h"

namespace {

struct Options {
    CodecOptions common;
    InputSettings input;
    int dtx = 0;
};

CodecResult encode(const Options& o, const CodecFiles& files) {
    const Stopwatch stopwatch;
    const CodedFileChoice choice{files.out, o.common.codec, o.common.bitRate};
    const VspvCodec& codec = codecOf(choice);
    CodecResult result{{files.in, files.out, &codec, chooseBitRate(codec, choice.bitRate)}, {}};
    CodecReport& report = result.report;
    StreamEncoder encoder(codec, report.bitRate);
    if (!encoder.setDTX(o.dtx))
        throw UsageError{"--dtx", std::string(codec.name) + " has no such mode of discontinuous transmission"};
    AudioReader in = openOneChannel(files.in, o.input);
    in.convertTo(codec.samplingRate);
    const std::unique_ptr<FrameWriter> out = createCoded(choice);
    if (o.dtx != 0 && !out->holdsSilence())
        throw UsageError{"--dtx", "needs a format with frames of several lengths, .bit, .amr, .awb or .g723"};
    OriginalComparison comparison(files, o.input, codec.samplingRate);
    StreamDecoder decoder(codec);

    Progress progress("encoding", in.expected());
    Samples heard;
    const auto code = [&](Samples samples) {
        const CodedFrame& frame = encoder.encode(std::move(samples));
        out->write(frame);
        report.frames++;
        if (files.original.empty()) return;
        decoder.decode(frame, heard);
        comparison.add(heard);
    };
    for (Block block; in.read(std::size_t(codec.frameSamples), block); progress.advance(block[0].size()))
        code(std::move(block[0]));
    while (report.frames % out->framesOfBlock() != 0) code({});
    report.samples = in.length();
    report.bytes = out->octets();
    report.elapsedSeconds = stopwatch.seconds();
    result.notes = in.notes();
    comparison.finish(result);
    out->commit();
    comparison.commitPlot();
    return result;
}

}  // namespace

void addEncode(CommandLine& vsps) {
    Command command = vsps.add("encode", "Codes the speech in recordings, into streams of octets or WAV files.");
    const auto o = std::make_shared<Options>();
    addCodecOptions(
        command, o->common,
        "Recordings: WAV, FLAC, AU, AIFF, ..., any rate; and last the stream, whose extension is the codec's name "
        "or one of " +
            codedExtensions() + "; - is standard input or output");
    addInputSettings(command, o->input, "The recordings");
    command.option("--dtx", o->dtx, "Send little or nothing in pauses, where the codec can; amr: detector 1 or 2")
        .takes("[MODE]")
        .defaultsTo("1")
        .within(0, 2);
    command.footer(
        "\"vsps codecs\" lists the codecs. A recording is resampled to the codec's rate. GSM frames are whole, the last "
        "one\n"
        "completed with silence; the other streams end with the octet of the last sample. WAV files need --codec, and "
        "hold\n"
        "what has a tag there. With several inputs, {} in OUT, ORIGINAL and the plot's name stands for the input's name\n"
        "without folder and extension. --against also decodes and compares, see \"vsps decode --help\".\n\n"
        "Examples:\n"
        "  vsps encode call.wav call.g726-32\n"
        "  vsps encode --rate 48000 call.flac call.g722 --against call.flac\n"
        "  vsps encode call.flac call.wav --codec gsm\n"
        "  vsps encode --jobs 4 calls/*.wav 'coded/{}.gsm'\n"
        "  vsps encode call.wav - --codec gsm | vsps decode - heard.wav --codec gsm --lose 5");
    command.run([o] { processCoded(o->common, "encoding", [&](const CodecFiles& files) { return encode(*o, files); }); });
}
