// The codec g723.
#include "codec/codec.h"
#include "codec/g723/decoder.h"
#include "codec/g723/encoder.h"

#pragma GCC visibility push(default)  // of what the library exports
#include "vspsvoice/g723.h"
#pragma GCC visibility pop

namespace vspv {

namespace {

using g723::Decoder;
using g723::Encoder;

Vsp32s encoderBytes() { return sizeof(Encoder); }
Vsp32s decoderBytes() { return sizeof(Decoder); }

void initEncoder(void* encoder, const Codec&) { static_cast<Encoder*>(encoder)->reset(); }
void initDecoder(void* decoder, const Codec&) { static_cast<Decoder*>(decoder)->reset(); }

bool setDTX(void* encoder, const Codec&, Vsp32s mode) {
    if (mode != 0 && mode != 1) return false;
    static_cast<Encoder*>(encoder)->setSilence(mode == 1);
    return true;
}

void encode(void* encoder, const Codec&, const Vsp16s* samples, Vsp8u* bytes, VspvFrame& frame) {
    static_cast<Encoder*>(encoder)->encode(g723::rateOf(frame.bitRate), samples, bytes, frame);
}

bool isSilence(const VspvFrame& frame) { return frame.type == vspvFrameSIDFirst || frame.type == vspvFrameSIDUpdate; }

VspStatus check(const Codec& codec, const Vsp8u* bytes, const VspvFrame& f) {
    if (f.type < vspvFrameSpeech || f.type > vspvFrameNoData || !hasRate(codec.record, f.bitRate)) return vspStsRangeErr;
    if (f.type == vspvFrameNoData) return f.numBytes == 0 || f.numBytes == 1 ? vspStsNoErr : vspStsSizeErr;
    const g723::Rate rate = g723::rateOf(f.bitRate);
    if (f.numBytes != (isSilence(f) ? g723::kSilenceBytes : g723::bytesOf(rate))) return vspStsSizeErr;
    const Vsp32u kind = isSilence(f) ? g723::kKindSilence : rate == g723::k6k3 ? g723::kKind6k3 : g723::kKind5k3;
    return f.quality >= vspvQualityBad || g723::kindOf(bytes) == kind ? vspStsNoErr : vspStsCodeRangeErr;
}

void decode(void* decoder, const Codec&, const Vsp8u* bytes, const VspvFrame& told, Vsp16s* samples) {
    Decoder& d = *static_cast<Decoder*>(decoder);
    if (told.type == vspvFrameNoData) return d.decodeNoise(nullptr, samples);
    if (isSilence(told)) {
        Vsp16s index[4];
        g723::unpackSilence(bytes, index);
        return d.decodeNoise(index, samples);
    }
    g723::Frame frame;
    if (g723::unpack(bytes, frame))
        d.decode(frame, samples);
    else
        d.conceal(samples);
}

void conceal(void* decoder, const Codec&, const Vsp8u*, const VspvFrame&, Vsp16s* samples) {
    static_cast<Decoder*>(decoder)->conceal(samples);
}

constexpr CodecFamily kFamily = {encoderBytes, decoderBytes, initEncoder, initDecoder, encode,
                                 check,        decode,       conceal,     setDTX};
constexpr Vsp32s kBitRates[] = {6300, 5300};

}  // namespace

constexpr Codec kG723 = {{"g723", "MP-MLQ and ACELP", "ITU-T G.723.1, Annex A; RFC 3551", 8000, g723::kFrame, 24, 2,
                          kBitRates, "G723", 8000, 4, vspvCodecRates | vspvCodecDTX | vspvCodecConceals},
                         &kFamily,
                         nullptr};

}  // namespace vspv

using namespace vspv;

VspStatus vspvG723SetHighPass(VspvEncoder* pEncoder, Vsp32s on) {
    if (pEncoder == nullptr) return vspStsNullPtrErr;
    void* encoder = partOf(pEncoder, kG723);
    if (encoder == nullptr) return vspStsBadArgErr;
    if (on != 0 && on != 1) return vspStsRangeErr;
    static_cast<Encoder*>(encoder)->setHighPass(on == 1);
    return vspStsNoErr;
}

VspStatus vspvG723SetPostFilter(VspvDecoder* pDecoder, Vsp32s on) {
    if (pDecoder == nullptr) return vspStsNullPtrErr;
    void* decoder = partOf(pDecoder, kG723);
    if (decoder == nullptr) return vspStsBadArgErr;
    if (on != 0 && on != 1) return vspStsRangeErr;
    static_cast<Decoder*>(decoder)->setPostFilter(on == 1);
    return vspStsNoErr;
}

VspStatus vspvG723Frame(Vsp8u firstOctet, VspvFrame* pFrame) {
    static constexpr VspvFrame kFrames[4] = {{vspvFrameSpeech, vspvQualityGood, 6300, 24},
                                             {vspvFrameSpeech, vspvQualityGood, 5300, 20},
                                             {vspvFrameSIDUpdate, vspvQualityGood, 6300, g723::kSilenceBytes},
                                             {vspvFrameNoData, vspvQualityGood, 6300, 1}};
    if (pFrame == nullptr) return vspStsNullPtrErr;
    *pFrame = kFrames[g723::kindOf(&firstOctet)];
    return vspStsNoErr;
}
