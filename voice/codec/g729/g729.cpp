// The codecs of G.729 and its annexes.
#include "codec/codec.h"
#include "codec/g729/decoder.h"
#include "codec/g729/encoder.h"
#include "codec/g729/fast_encoder.h"

namespace vspv {

namespace {

using namespace g729;

template <class AnyEncoder>
Vsp32s encoderBytes() {
    return sizeof(AnyEncoder);
}
Vsp32s decoderBytes() { return sizeof(Decoder); }

void initEncoder(void* encoder, const Codec& codec) { static_cast<Encoder*>(encoder)->reset(variantOf(codec)); }
void initFastEncoder(void* encoder, const Codec&) { static_cast<FastEncoder*>(encoder)->reset(); }
void initDecoder(void* decoder, const Codec& codec) { static_cast<Decoder*>(decoder)->reset(variantOf(codec)); }

void encode(void* encoder, const Codec& codec, const Vsp16s* samples, Vsp8u* bytes, VspvFrame& frame) {
    static_cast<Encoder*>(encoder)->encode(variantOf(codec), rateOf(frame.bitRate), samples, bytes, frame);
}

void encodeFast(void* encoder, const Codec&, const Vsp16s* samples, Vsp8u* bytes, VspvFrame& frame) {
    static_cast<FastEncoder*>(encoder)->encode(samples, bytes, frame);
}

template <class AnyEncoder>
bool setSilence(void* encoder, const Codec&, Vsp32s mode) {
    if (mode != 0 && mode != 1) return false;
    static_cast<AnyEncoder*>(encoder)->setSilence(mode == 1);
    return true;
}

VspStatus check(const Codec& codec, const Vsp8u*, const VspvFrame& frame) {
    const bool silence = variantOf(codec).silence && frame.type >= vspvFrameSIDFirst && frame.type <= vspvFrameNoData;
    if ((frame.type != vspvFrameSpeech && !silence) || !hasRate(codec.record, frame.bitRate)) return vspStsRangeErr;
    const Vsp32s bytes = !silence ? bytesOf(rateOf(frame.bitRate)) : frame.type == vspvFrameNoData ? 0 : kSilenceBytes;
    return frame.numBytes == bytes ? vspStsNoErr : vspStsSizeErr;
}

void decode(void* decoder, const Codec& codec, const Vsp8u* bytes, const VspvFrame& told, Vsp16s* samples) {
    Decoder& d = *static_cast<Decoder*>(decoder);
    const Variant& variant = variantOf(codec);
    if (told.type == vspvFrameSpeech) {
        Frame frame;
        unpack(bytes, rateOf(told.bitRate), frame);
        d.decode(variant, frame, samples);
    } else if (told.type == vspvFrameNoData) {
        d.decodeNoise(variant, nullptr, samples);
    } else {
        Vsp16s index[4];
        unpackSilence(bytes, index);
        d.decodeNoise(variant, index, samples);
    }
}

// A damaged frame still tells its rate, unless rates and silence mix.
void conceal(void* decoder, const Codec& codec, const Vsp8u*, const VspvFrame& told, Vsp16s* samples) {
    Decoder& d = *static_cast<Decoder*>(decoder);
    const bool known = told.quality == vspvQualityBad && !variantOf(codec).combined;
    d.conceal(variantOf(codec), known ? rateOf(told.bitRate) : d.lastRate(), samples);
}

constexpr CodecFamily kFamily = {
    encoderBytes<Encoder>, decoderBytes, initEncoder, initDecoder, encode, check, decode, conceal};
constexpr CodecFamily kWithSilence = {
    encoderBytes<Encoder>, decoderBytes, initEncoder, initDecoder, encode, check, decode, conceal, setSilence<Encoder>};
constexpr CodecFamily kFastFamily = {
    encoderBytes<FastEncoder>, decoderBytes, initFastEncoder, initDecoder, encodeFast, check, decode, conceal,
    setSilence<FastEncoder>};

constexpr Variant kMain = {.fast = false, .dispersion = false, .backward = false, .silence = true, .combined = false};
constexpr Variant kFast = {.fast = true, .dispersion = false, .backward = false, .silence = true, .combined = false};
constexpr Variant kLow = {.fast = false, .dispersion = true, .backward = false, .silence = false, .combined = false};
constexpr Variant kHigh = {.fast = false, .dispersion = false, .backward = true, .silence = false, .combined = false};
constexpr Variant kAll = {.fast = false, .dispersion = true, .backward = true, .silence = true, .combined = true};

constexpr Vsp32s kBitRate[] = {8000}, kLowRates[] = {6400, 8000}, kHighRates[] = {11800, 8000},
                 kAllRates[] = {8000, 6400, 11800};

}  // namespace

constexpr Codec kG729 = {{"g729", "CS-ACELP", "ITU-T G.729, Annex B; RFC 3551", 8000, 80, 10, 1, kBitRate, "G729", 8000, 18,
                          vspvCodecDTX | vspvCodecConceals},
                         &kWithSilence,
                         &kMain};
constexpr Codec kG729A = {
    {"g729a", "CS-ACELP of less complexity, for streams of g729 too", "ITU-T G.729 Annexes A, B; RFC 3551", 8000, 80, 10, 1,
     kBitRate, "G729", 8000, 18, vspvCodecDTX | vspvCodecConceals},
    &kFastFamily,
    &kFast};
constexpr Codec kG729D = {{"g729d", "CS-ACELP at 6.4 kbit/s", "ITU-T G.729 Annex D; RFC 3551", 8000, 80, 10, 2, kLowRates,
                           "G729D", 8000, -1, vspvCodecRates | vspvCodecConceals},
                          &kFamily,
                          &kLow};
constexpr Codec kG729E = {{"g729e", "CS-ACELP at 11.8 kbit/s", "ITU-T G.729 Annex E; RFC 3551", 8000, 80, 15, 2, kHighRates,
                           "G729E", 8000, -1, vspvCodecRates | vspvCodecConceals},
                          &kFamily,
                          &kHigh};
constexpr Codec kG729I = {{"g729i", "CS-ACELP that switches between 6.4, 8 and 11.8 kbit/s", "ITU-T G.729 Annex I", 8000,
                           80, 15, 3, kAllRates, nullptr, 8000, -1, vspvCodecRates | vspvCodecDTX | vspvCodecConceals},
                          &kWithSilence,
                          &kAll};

}  // namespace vspv
