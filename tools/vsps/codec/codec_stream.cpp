#include "codec/codec_stream.h"

namespace {

using SizeQuery = VspStatus (*)(const VspvCodec*, Vsp32s*);

std::vector<Vsp64s> memoryFor(SizeQuery getSize, const VspvCodec& codec) {
    Vsp32s bytes = 0;
    getSize(&codec, &bytes);
    return std::vector<Vsp64s>((std::size_t(bytes) + sizeof(Vsp64s) - 1) / sizeof(Vsp64s));
}

}  // namespace

StreamEncoder::StreamEncoder(const VspvCodec& codec, int bitRate)
    : codec_(codec), memory_(memoryFor(vspvEncoderGetSize, codec)), bytes_(std::size_t(codec.maxFrameBytes)) {
    vspvEncoderInit(encoder(), &codec_);
    vspvEncoderSetRate(encoder(), bitRate);
}

std::string_view StreamEncoder::encode(Samples frame) {
    frame.resize(std::size_t(codec_.frameSamples));
    VspvFrame told{};
    vspvEncode(encoder(), frame.data(), bytes_.data(), &told);
    return {reinterpret_cast<const char*>(bytes_.data()), std::size_t(told.numBytes)};
}

StreamDecoder::StreamDecoder(const VspvCodec& codec, int bitRate)
    : codec_(codec), bitRate_(bitRate), memory_(memoryFor(vspvDecoderGetSize, codec)) {
    vspvDecoderInit(decoder(), &codec_);
}

bool StreamDecoder::decode(const std::string& bytes, bool lost, Samples& frame) {
    const VspvFrame told{vspvFrameSpeech, lost ? vspvQualityLost : vspvQualityGood, bitRate_, Vsp32s(bytes.size())};
    frame.resize(std::size_t(codec_.frameSamples));
    return vspvDecode(decoder(), reinterpret_cast<const Vsp8u*>(bytes.data()), &told, frame.data()) == vspStsNoErr;
}
