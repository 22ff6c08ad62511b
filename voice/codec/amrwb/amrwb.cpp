// The codec amrwb.
#include "codec/amrwb/decoder.h"
#include "codec/amrwb/encoder.h"
#include "codec/codec.h"

namespace vspv {

namespace {

using amrwb::Decoder;
using amrwb::Encoder;

Vsp32s encoderBytes() { return sizeof(Encoder); }
Vsp32s decoderBytes() { return sizeof(Decoder); }

void initEncoder(void* encoder, const Codec&) {
    Encoder& e = *static_cast<Encoder*>(encoder);
    e.setDTX(false);
    e.reset();
}

void initDecoder(void* decoder, const Codec&) { static_cast<Decoder*>(decoder)->reset(); }

bool setDTX(void* encoder, const Codec&, Vsp32s mode) {
    if (mode < 0 || mode > 1) return false;
    static_cast<Encoder*>(encoder)->setDTX(mode == 1);
    return true;
}

void encode(void* encoder, const Codec&, const Vsp16s* samples, Vsp8u* bytes, VspvFrame& frame) {
    static_cast<Encoder*>(encoder)->encode(amrwb::modeOf(frame.bitRate), samples, bytes, frame);
}

VspStatus check(const Codec&, const Vsp8u*, const VspvFrame& frame) {
    return rfc4867::checkFrame(amrwb::kFrameTypes, frame);
}

void decode(void* decoder, const Codec&, const Vsp8u* bytes, const VspvFrame& frame, Vsp16s* samples) {
    Decoder& d = *static_cast<Decoder*>(decoder);
    Vsp16s parameters[amrwb::kMaxParameters];
    const bool bad = frame.quality == vspvQualityBad;
    if (frame.quality == vspvQualityLost) {
        d.decode(amrwb::kLost, 0, nullptr, samples);
    } else if (frame.type == vspvFrameNoData) {
        d.decode(amrwb::kNoData, 0, nullptr, samples);
    } else if (frame.type == vspvFrameSpeech) {
        const Vsp32s mode = amrwb::modeOf(frame.bitRate);
        amrwb::unpack(mode, bytes, parameters);
        d.decode(bad                                    ? amrwb::kBad
                 : frame.quality == vspvQualityDegraded ? amrwb::kDegraded
                                                        : amrwb::kGood,
                 mode, parameters, samples);
    } else {
        amrwb::unpackSilence(bytes, parameters);
        const bool first = frame.type == vspvFrameSIDFirst;
        d.decode(bad ? amrwb::kSilenceBad : first ? amrwb::kSilenceFirst : amrwb::kSilenceUpdate, 0, parameters, samples);
    }
}

constexpr CodecFamily kFamily = {encoderBytes, decoderBytes, initEncoder, initDecoder, encode,
                                 check,        decode,       decode,      setDTX};
constexpr Vsp32s kBitRates[] = {23850, 23050, 19850, 18250, 15850, 14250, 12650, 8850, 6600};

}  // namespace

constexpr Codec kAmrWb = {{"amrwb", "adaptive multi-rate, wide band", "3GPP TS 26.171, ITU-T G.722.2; RFC 4867", 16000, 320,
                           60, 9, kBitRates, "AMR-WB", 16000, -1, vspvCodecRates | vspvCodecDTX | vspvCodecConceals},
                          &kFamily,
                          nullptr};

}  // namespace vspv
