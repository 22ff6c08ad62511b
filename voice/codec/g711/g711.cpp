// The codecs pcma and pcmu.
#include "codec/codec.h"
#include "codec/g711/laws.h"
#include "codec/period_repeater.h"

namespace vspv {

static constexpr Vsp32s kFrame = 160;

static Vsp32s encoderBytes() { return 0; }
static Vsp32s decoderBytes() { return sizeof(PeriodRepeater); }
static void initEncoder(void*, const Codec&) {}
static void initDecoder(void* decoder, const Codec&) { static_cast<PeriodRepeater*>(decoder)->reset(); }

template <Vsp8u (*octet)(Vsp16s)>
static void encode(void*, const Codec&, const Vsp16s* samples, Vsp8u* bytes, VspvFrame&) {
    for (Vsp32s i = 0; i < kFrame; i++) bytes[i] = octet(samples[i]);
}

template <Vsp16s (*sample)(Vsp8u)>
static void decode(void* decoder, const Codec&, const Vsp8u* bytes, const VspvFrame&, Vsp16s* samples) {
    for (Vsp32s i = 0; i < kFrame; i++) samples[i] = sample(bytes[i]);
    static_cast<PeriodRepeater*>(decoder)->decoded(samples, kFrame);
}

static void conceal(void* decoder, const Codec&, const Vsp8u*, const VspvFrame&, Vsp16s* samples) {
    static_cast<PeriodRepeater*>(decoder)->conceal(samples, kFrame);
}

static constexpr CodecFamily kALaw = {encoderBytes,      decoderBytes, initEncoder,        initDecoder,
                                      encode<aLawOctet>, checkSpeech,  decode<aLawSample>, conceal};
static constexpr CodecFamily kMuLaw = {encoderBytes,       decoderBytes, initEncoder,         initDecoder,
                                       encode<muLawOctet>, checkSpeech,  decode<muLawSample>, conceal};
static constexpr Vsp32s kBitRate[] = {64000};

constexpr Codec kPcma = {{"pcma", "logarithmic PCM, A-law", "ITU-T G.711; RFC 3551", 8000, kFrame, kFrame, 1, kBitRate,
                          "PCMA", 8000, 8, vspvCodecConceals},
                         &kALaw,
                         nullptr};
constexpr Codec kPcmu = {{"pcmu", "logarithmic PCM, mu-law", "ITU-T G.711; RFC 3551", 8000, kFrame, kFrame, 1, kBitRate,
                          "PCMU", 8000, 0, vspvCodecConceals},
                         &kMuLaw,
                         nullptr};

}  // namespace vspv
