// The codecs g726-16, -24, -32 and -40, and those of the same names in the bit order of AAL type 2.
#include "vspsc/g726.h"

#include "codec/bit_packing.h"
#include "codec/codec.h"
#include "codec/period_repeater.h"

namespace vspv {

namespace {

constexpr Vsp32s kFrame = 160;

struct Settings {
    Vsp32s rate;  // as the library numbers them
    Vsp32s bits;  // of a code
    BitOrder order;
};

const Settings& settingsOf(const Codec& codec) { return *static_cast<const Settings*>(codec.settings); }

// Behind it is the state of the library.
struct Decoder {
    PeriodRepeater repeater;
    void* state() { return this + 1; }
};

Vsp32s encoderBytes() {
    Vsp32s bytes = 0;
    vspsEncodeGetStateSize_G726_16s8u(&bytes);
    return bytes;
}

Vsp32s decoderBytes() {
    Vsp32s bytes = 0;
    vspsDecodeGetStateSize_G726_8u16s(&bytes);
    return Vsp32s(sizeof(Decoder)) + bytes;
}

void initEncoder(void* encoder, const Codec& codec) { vspsEncodeInit_G726_16s8u(encoder, settingsOf(codec).rate); }

void initDecoder(void* decoder, const Codec& codec) {
    Decoder& d = *static_cast<Decoder*>(decoder);
    d.repeater.reset();
    vspsDecodeInit_G726_8u16s(d.state(), settingsOf(codec).rate);
}

void encode(void* encoder, const Codec& codec, const Vsp16s* samples, Vsp8u* bytes, VspvFrame&) {
    Vsp8u codes[kFrame];
    vspsEncode_G726_16s8u(samples, codes, kFrame, encoder);
    BitWriter writer(bytes, settingsOf(codec).order);
    for (const Vsp8u code : codes) writer.put(code, settingsOf(codec).bits);
}

void decode(void* decoder, const Codec& codec, const Vsp8u* bytes, const VspvFrame&, Vsp16s* samples) {
    Decoder& d = *static_cast<Decoder*>(decoder);
    Vsp8u codes[kFrame];
    BitReader reader(bytes, settingsOf(codec).order);
    for (Vsp8u& code : codes) code = Vsp8u(reader.take(settingsOf(codec).bits));
    vspsDecode_G726_8u16s(codes, samples, kFrame, d.state());
    d.repeater.decoded(samples, kFrame);
}

// The coder keeps what it has adapted to. To let it follow the repetition, with the codes that come nearest, gains nothing.
void conceal(void* decoder, const Codec&, const Vsp8u*, const VspvFrame&, Vsp16s* samples) {
    static_cast<Decoder*>(decoder)->repeater.conceal(samples, kFrame);
}

constexpr CodecFamily kFamily = {encoderBytes, decoderBytes, initEncoder, initDecoder,
                                 encode,       checkSpeech,  decode,      conceal};

// Codes of 2, 3, 4 and 5 bits, as RFC 3551 and as AAL type 2 order them.
constexpr Settings kRfc[] = {{17, 2, BitOrder::lowestFirst},
                             {22, 3, BitOrder::lowestFirst},
                             {23, 4, BitOrder::lowestFirst},
                             {24, 5, BitOrder::lowestFirst}};
constexpr Settings kAal2[] = {{17, 2, BitOrder::highestFirst},
                              {22, 3, BitOrder::highestFirst},
                              {23, 4, BitOrder::highestFirst},
                              {24, 5, BitOrder::highestFirst}};
constexpr Vsp32s kBitRates[] = {16000, 24000, 32000, 40000};

constexpr Codec coder(const char* name, const char* description, const char* standard, const char* rtpName,
                      const Settings& settings) {
    const Vsp32s* bitRate = &kBitRates[settings.bits - 2];
    return {{name, description, standard, 8000, kFrame, kFrame * settings.bits / 8, 1, bitRate, rtpName, 8000, -1,
             vspvCodecConceals},
            &kFamily,
            &settings};
}

constexpr char kStandard[] = "ITU-T G.726; RFC 3551", kAal2Standard[] = "ITU-T G.726, I.366.2 Annex E; RFC 3551";

}  // namespace

constexpr Codec kG726_16 = coder("g726-16", "ADPCM, 2 bits a sample", kStandard, "G726-16", kRfc[0]);
constexpr Codec kG726_24 = coder("g726-24", "ADPCM, 3 bits a sample", kStandard, "G726-24", kRfc[1]);
constexpr Codec kG726_32 = coder("g726-32", "ADPCM, 4 bits a sample", kStandard, "G726-32", kRfc[2]);
constexpr Codec kG726_40 = coder("g726-40", "ADPCM, 5 bits a sample", kStandard, "G726-40", kRfc[3]);
constexpr Codec kAal2G726_16 =
    coder("aal2-g726-16", "ADPCM, 2 bits a sample, highest bits first", kAal2Standard, "AAL2-G726-16", kAal2[0]);
constexpr Codec kAal2G726_24 =
    coder("aal2-g726-24", "ADPCM, 3 bits a sample, highest bits first", kAal2Standard, "AAL2-G726-24", kAal2[1]);
constexpr Codec kAal2G726_32 =
    coder("aal2-g726-32", "ADPCM, 4 bits a sample, highest bits first", kAal2Standard, "AAL2-G726-32", kAal2[2]);
constexpr Codec kAal2G726_40 =
    coder("aal2-g726-40", "ADPCM, 5 bits a sample, highest bits first", kAal2Standard, "AAL2-G726-40", kAal2[3]);

}  // namespace vspv
