// The codec g722: octets of one code word each, at every rate.
#include "vspsc/g722.h"

#include "codec/codec.h"

namespace vspv {

namespace {

constexpr Vsp32s kFrame = 320, kCodes = 160;
constexpr Vsp32s kBitRates[] = {64000, 56000, 48000};

// As the library numbers them: 1, 2, 3. At the second one bit of a code word is left out, at the third one two.
Vsp32s modeOf(Vsp32s bitRate) { return 1 + (64000 - bitRate) / 8000; }

// Behind them are the states of the library.
struct Encoder {
    Vsp16s delay[24];
    void* state() { return this + 1; }
};
struct Decoder {
    Vsp32s mode;
    Vsp16s delay[24];
    Vsp16s history[4 * kCodes + 1];
    void* state() { return this + 1; }
};

Vsp32s encoderBytes() {
    Vsp32s bytes = 0;
    vspsSBADPCMEncodeStateSize_G722_16s(&bytes);
    return Vsp32s(sizeof(Encoder)) + bytes;
}

Vsp32s decoderBytes() {
    Vsp32s bytes = 0;
    vspsSBADPCMDecodeStateSize_G722_16s(&bytes);
    return Vsp32s(sizeof(Decoder)) + bytes;
}

void initEncoder(void* encoder, const Codec&) {
    Encoder& e = *static_cast<Encoder*>(encoder);
    e = {};
    vspsSBADPCMEncodeInit_G722_16s(e.state());
}

void initDecoder(void* decoder, const Codec&) {
    Decoder& d = *static_cast<Decoder*>(decoder);
    d = {1, {}, {}};
    for (Vsp32s i = 1; i <= 4 * kCodes; i++) d.history[i] = 0xFF;
    vspsSBADPCMDecodeInit_G722_16s(d.state());
}

void encode(void* encoder, const Codec&, const Vsp16s* samples, Vsp8u* bytes, VspvFrame& frame) {
    Encoder& e = *static_cast<Encoder*>(encoder);
    Vsp16s bands[kFrame], codes[kCodes];
    vspsQMFAnalysis_G722_16s(samples, bands, kFrame, e.delay);
    vspsSBADPCMEncode_G722_16s(bands, codes, kFrame, e.state());
    const Vsp32s leftOut = (1 << (modeOf(frame.bitRate) - 1)) - 1;
    for (Vsp32s i = 0; i < kCodes; i++) bytes[i] = Vsp8u(codes[i] & ~leftOut);
}

void decodeCodes(Decoder& d, Vsp16s* codes, bool lost, Vsp16s* samples) {
    Vsp16s bands[kFrame];
    vspsConcealCodes_G722_16s_I(codes, kCodes, lost, d.history);
    vspsSBADPCMDecode_G722_16s(codes, bands, kCodes, d.mode, d.state());
    vspsQMFSynthesis_G722_16s(bands, samples, kFrame, d.delay);
}

void decode(void* decoder, const Codec&, const Vsp8u* bytes, const VspvFrame& frame, Vsp16s* samples) {
    Decoder& d = *static_cast<Decoder*>(decoder);
    Vsp16s codes[kCodes];
    for (Vsp32s i = 0; i < kCodes; i++) codes[i] = bytes[i];
    d.mode = modeOf(frame.bitRate);
    decodeCodes(d, codes, false, samples);
}

void conceal(void* decoder, const Codec&, const Vsp8u*, const VspvFrame&, Vsp16s* samples) {
    Vsp16s codes[kCodes] = {};
    decodeCodes(*static_cast<Decoder*>(decoder), codes, true, samples);
}

constexpr CodecFamily kFamily = {encoderBytes, decoderBytes, initEncoder, initDecoder,
                                 encode,       checkSpeech,  decode,      conceal};

}  // namespace

// RFC 3551 explains why the RTP clock has half the sampling rate.
constexpr Codec kG722 = {{"g722", "wideband sub-band ADPCM", "ITU-T G.722; RFC 3551", 16000, kFrame, kCodes, 3, kBitRates,
                          "G722", 8000, 9, vspvCodecRates | vspvCodecConceals},
                         &kFamily,
                         nullptr};

}  // namespace vspv
