// The codecs g7221 and g7221c: frames of 20 ms with as many bits as the rate gives, in octets from the top (RFC 5577).
#include "vspsc/g7221.h"

#include "codec/codec.h"

namespace vspv {

namespace {

constexpr Vsp32s kMaxFrame = 640, kRegion = 20, kMaxRegions = 28, kMaxWords = 60, kFramesPerSecond = 50;
constexpr Vsp32s kBitRates[] = {32000, 24000, 16000}, kBitRatesC[] = {48000, 32000, 24000};

struct Encoder {
    Vsp16s last[kMaxFrame];
};
struct Decoder {
    Vsp16s window[kMaxFrame / 2], old[kRegion * kMaxRegions], oldMagShift, seed[4];
};

// How a codec divides a frame.
struct Layout {
    Vsp32s samples, regions, controlBits;
};
Layout layoutOf(const Codec& codec) {
    const bool narrow = codec.record.frameSamples == 320;
    return {codec.record.frameSamples, narrow ? 14 : 28, narrow ? 4 : 5};
}

Vsp32s encoderBytes() { return Vsp32s(sizeof(Encoder)); }
Vsp32s decoderBytes() { return Vsp32s(sizeof(Decoder)); }

void initEncoder(void* encoder, const Codec&) { *static_cast<Encoder*>(encoder) = {}; }
void initDecoder(void* decoder, const Codec&) { *static_cast<Decoder*>(decoder) = {{}, {}, 0, {1, 1, 1, 1}}; }

void encode(void* encoder, const Codec& codec, const Vsp16s* samples, Vsp8u* bytes, VspvFrame& frame) {
    Encoder& e = *static_cast<Encoder*>(encoder);
    const Layout l = layoutOf(codec);
    const Vsp32s bits = frame.bitRate / kFramesPerSecond;
    Vsp16s coefs[kMaxFrame], magShift, index[kMaxRegions], length[kMaxRegions], powerBits;
    Vsp16u code[kMaxRegions];
    vspsMLTAnalysis_G722_16s(samples, l.samples, e.last, coefs, &magShift);
    vspsRegionPower_G722_16s(coefs, magShift, l.regions, index, length, code, &powerBits);

    const Vsp32s available = bits - powerBits - l.controlBits;
    Vsp16s category[kMaxRegions], balance[31], control, count[kMaxRegions], words[kMaxWords];
    Vsp32u coded[4 * kMaxRegions];
    vspsCategorize_G722_16s(index, available, 0, l.regions, category, balance);
    vspsRegionPowerAdjust_G722_16s_I(magShift, l.regions, coefs, index);
    vspsVectorQuantize_G722_16s32u(coefs, index, available, l.regions, balance, category, &control, count, coded);
    vspsPackFrame_G722_32u16s(length, code, control, count, coded, bits, l.regions, words);

    frame.numBytes = bits / 8;
    for (Vsp32s i = 0; i < bits / 16; i++) {
        bytes[2 * i] = Vsp8u(words[i] >> 8);
        bytes[2 * i + 1] = Vsp8u(words[i]);
    }
}

VspStatus check(const Codec& codec, const Vsp8u*, const VspvFrame& frame) {
    if (frame.type != vspvFrameSpeech || !hasRate(codec.record, frame.bitRate)) return vspStsRangeErr;
    return frame.numBytes == frame.bitRate / kFramesPerSecond / 8 ? vspStsNoErr : vspStsSizeErr;
}

// From the coefficients of a frame, good or not.
void synthesize(Decoder& d, const Layout& l, Vsp32s flag, Vsp16s* coefs, Vsp16s magShift, Vsp16s* samples) {
    vspsConcealCoefs_G722_16s_I(flag, l.regions, coefs, d.old, &magShift, &d.oldMagShift);
    vspsMLTSynthesis_G722_16s(coefs, magShift, l.samples, d.window, samples);
}

void decode(void* decoder, const Codec& codec, const Vsp8u* bytes, const VspvFrame& frame, Vsp16s* samples) {
    Decoder& d = *static_cast<Decoder*>(decoder);
    const Layout l = layoutOf(codec);
    const Vsp32s bits = 8 * frame.numBytes;
    Vsp16s words[kMaxWords], index[kMaxRegions], deviation[kMaxRegions], magShift;
    for (Vsp32s i = 0; i < bits / 16; i++) words[i] = Vsp16s(bytes[2 * i] << 8 | bytes[2 * i + 1]);
    Vsp32s position;
    vspsRegionPowerDecode_G722_16s(words, bits, l.regions, index, deviation, &magShift, &position);

    // The powers of a corrupt frame may leave no bits.
    Vsp32s control = 0;
    for (Vsp32s i = 0; i < l.controlBits; i++) {
        const Vsp32s bit = position < bits ? bytes[position / 8] >> (7 - position % 8) & 1 : 0;
        control = 2 * control + bit;
        position += position < bits;
    }
    Vsp32s left = bits - position;
    Vsp16s category[kMaxRegions], balance[31], coefs[kMaxFrame], flag;
    vspsCategorize_G722_16s(index, left, control, l.regions, category, balance);
    vspsVectorDecode_G722_16s(words, bits, deviation, l.regions, &position, &left, category, d.seed, coefs);
    vspsFrameCheck_G722_16s(words, bits, index, position, left, control, l.regions, &flag);
    synthesize(d, l, flag, coefs, magShift, samples);
}

void conceal(void* decoder, const Codec& codec, const Vsp8u*, const VspvFrame&, Vsp16s* samples) {
    Vsp16s coefs[kMaxFrame] = {};
    synthesize(*static_cast<Decoder*>(decoder), layoutOf(codec), 1, coefs, 0, samples);
}

constexpr CodecFamily kFamily = {encoderBytes, decoderBytes, initEncoder, initDecoder, encode, check, decode, conceal};

}  // namespace

constexpr Codec kG7221 = {{"g7221", "transform codec for 7 kHz", "ITU-T G.722.1; RFC 5577", 16000, 320, 80, 3, kBitRates,
                           "G7221", 16000, -1, vspvCodecRates | vspvCodecConceals},
                          &kFamily,
                          nullptr};
constexpr Codec kG7221C = {{"g7221c", "transform codec for 14 kHz", "ITU-T G.722.1 Annex C; RFC 5577", 32000, 640, 120, 3,
                            kBitRatesC, "G7221", 32000, -1, vspvCodecRates | vspvCodecConceals},
                           &kFamily,
                           nullptr};

}  // namespace vspv
