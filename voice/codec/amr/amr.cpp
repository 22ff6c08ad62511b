// The codec amr.
#include "codec/amr/decoder.h"
#include "codec/amr/encoder.h"
#include "codec/codec.h"

namespace vspv {

namespace {

using amr::Decoder;
using amr::Encoder;

Vsp32s encoderBytes() { return sizeof(Encoder); }
Vsp32s decoderBytes() { return sizeof(Decoder); }

void initEncoder(void* encoder, const Codec&) {
    Encoder& e = *static_cast<Encoder*>(encoder);
    e.setDetector(0);
    e.reset();
}

void initDecoder(void* decoder, const Codec&) { static_cast<Decoder*>(decoder)->reset(); }

bool setDTX(void* encoder, const Codec&, Vsp32s option) {
    if (option < 0 || option > 2) return false;
    static_cast<Encoder*>(encoder)->setDetector(option);
    return true;
}

void encode(void* encoder, const Codec&, const Vsp16s* samples, Vsp8u* bytes, VspvFrame& frame) {
    static_cast<Encoder*>(encoder)->encode(amr::modeOf(frame.bitRate), samples, bytes, frame);
}

VspStatus check(const Codec&, const Vsp8u*, const VspvFrame& frame) { return rfc4867::checkFrame(amr::kFrameTypes, frame); }

void decode(void* decoder, const Codec&, const Vsp8u* bytes, const VspvFrame& frame, Vsp16s* samples) {
    Decoder& d = *static_cast<Decoder*>(decoder);
    Vsp16s parameters[amr::kMaxParameters];
    const bool bad = frame.quality == vspvQualityBad;
    if (frame.quality == vspvQualityLost || frame.type == vspvFrameNoData) {
        d.decode(amr::kNoData, 0, nullptr, samples);
    } else if (frame.type == vspvFrameOnset) {
        d.decode(amr::kOnset, amr::modeOf(frame.bitRate), nullptr, samples);
    } else if (frame.type == vspvFrameSpeech) {
        const Vsp32s mode = amr::modeOf(frame.bitRate);
        amr::unpack(mode, bytes, parameters);
        d.decode(bad                                    ? amr::kBad
                 : frame.quality == vspvQualityDegraded ? amr::kDegraded
                                                        : amr::kGood,
                 mode, parameters, samples);
    } else {
        const Vsp32s mode = amr::unpackSilence(bytes, parameters);
        const bool first = frame.type == vspvFrameSIDFirst;
        d.decode(bad ? amr::kSilenceBad : first ? amr::kSilenceFirst : amr::kSilenceUpdate, mode, parameters, samples);
    }
}

constexpr CodecFamily kFamily = {encoderBytes, decoderBytes, initEncoder, initDecoder, encode,
                                 check,        decode,       decode,      setDTX};
constexpr Vsp32s kBitRates[] = {12200, 10200, 7950, 7400, 6700, 5900, 5150, 4750};

}  // namespace

constexpr Codec kAmr = {{"amr", "adaptive multi-rate, narrow band", "3GPP TS 26.071; RFC 4867", 8000, 160, 31, 8, kBitRates,
                         "AMR", 8000, -1, vspvCodecRates | vspvCodecDTX | vspvCodecConceals},
                        &kFamily,
                        nullptr};

}  // namespace vspv
