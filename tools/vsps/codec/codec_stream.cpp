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
    : codec_(codec), memory_(memoryFor(vspvEncoderGetSize, codec)) {
    vspvEncoderInit(encoder(), &codec_);
    vspvEncoderSetRate(encoder(), bitRate);
}

bool StreamEncoder::setDTX(int mode) { return vspvEncoderSetDTX(encoder(), mode) == vspStsNoErr; }

const CodedFrame& StreamEncoder::encode(Samples samples) {
    frame_.samples = samples.size();
    samples.resize(std::size_t(codec_.frameSamples));
    frame_.bytes.resize(std::size_t(codec_.maxFrameBytes));
    vspvEncode(encoder(), samples.data(), reinterpret_cast<Vsp8u*>(frame_.bytes.data()), &frame_.told);
    frame_.bytes.resize(std::size_t(frame_.told.numBytes));
    return frame_;
}

StreamDecoder::StreamDecoder(const VspvCodec& codec) : codec_(codec), memory_(memoryFor(vspvDecoderGetSize, codec)) {
    vspvDecoderInit(decoder(), &codec_);
}

bool StreamDecoder::decode(const CodedFrame& frame, Samples& samples) {
    samples.resize(std::size_t(codec_.frameSamples));
    const auto bytes = reinterpret_cast<const Vsp8u*>(frame.bytes.data());
    if (vspvDecode(decoder(), bytes, &frame.told, samples.data()) != vspStsNoErr) return false;
    samples.resize(frame.samples);
    return true;
}
