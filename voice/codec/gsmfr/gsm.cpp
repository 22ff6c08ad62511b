// The codec gsm.
#include "codec/codec.h"
#include "codec/gsmfr/decoder.h"
#include "codec/gsmfr/encoder.h"
#include "codec/gsmfr/substitution.h"

namespace vspv {

namespace {

struct GsmDecoder {
    gsmfr::Decoder decoder;
    gsmfr::Substitution substitution;
};

Vsp32s encoderBytes() { return sizeof(gsmfr::Encoder); }
Vsp32s decoderBytes() { return sizeof(GsmDecoder); }
void initEncoder(void* encoder, const Codec&) { static_cast<gsmfr::Encoder*>(encoder)->reset(); }

void initDecoder(void* decoder, const Codec&) {
    GsmDecoder& d = *static_cast<GsmDecoder*>(decoder);
    d.decoder.reset();
    d.substitution.reset();
}

void encode(void* encoder, const Codec&, const Vsp16s* samples, Vsp8u* bytes, VspvFrame&) {
    gsmfr::Frame frame;
    static_cast<gsmfr::Encoder*>(encoder)->encode(samples, frame);
    gsmfr::pack(frame, bytes);
}

VspStatus check(const Codec& codec, const Vsp8u* bytes, const VspvFrame& frame) {
    const VspStatus status = checkSpeech(codec, bytes, frame);
    if (status != vspStsNoErr || frame.quality >= vspvQualityBad) return status;
    return gsmfr::hasSignature(bytes) ? vspStsNoErr : vspStsCodeRangeErr;
}

void decode(void* decoder, const Codec&, const Vsp8u* bytes, const VspvFrame&, Vsp16s* samples) {
    GsmDecoder& d = *static_cast<GsmDecoder*>(decoder);
    gsmfr::Frame frame;
    gsmfr::unpack(bytes, frame);
    d.substitution.good(frame);
    d.decoder.decode(frame, samples);
}

void conceal(void* decoder, const Codec&, const Vsp8u*, const VspvFrame&, Vsp16s* samples) {
    GsmDecoder& d = *static_cast<GsmDecoder*>(decoder);
    d.decoder.decode(d.substitution.lost(), samples);
}

constexpr CodecFamily kFamily = {encoderBytes, decoderBytes, initEncoder, initDecoder, encode, check, decode, conceal};
constexpr Vsp32s kBitRate[] = {13000};

}  // namespace

constexpr Codec kGsm = {{"gsm", "GSM full rate, RPE-LTP", "GSM 06.10; RFC 3551", 8000, gsmfr::kSamples, gsmfr::kBytes, 1,
                         kBitRate, "GSM", 8000, 3, vspvCodecConceals},
                        &kFamily,
                        nullptr};

}  // namespace vspv
