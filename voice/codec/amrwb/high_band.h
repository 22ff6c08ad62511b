// The band from 6.4 to 7 kHz, made of noise (3GPP TS 26.190 5.9 and 6.3), up to the gain of the noise.
#pragma once

#include "codec/amrwb/filters.h"

namespace vspv::amrwb {

constexpr Vsp32s kFrame = 320, kSubframe = 64, kSubframe16 = 80, kOrder = 16;
constexpr Vsp16s kTilt = 22282;  // of the pre-emphasis, Q15

class HighBand {
  public:
    void reset();

    // The subframe below 6.4 kHz, from its excitation times 2^exponent.
    void synthesise(const Vsp16s* lpc, const Vsp16s* excitation, Vsp32s exponent, Vsp16s* synthesised);
    // Noise with the excitation's energy. The gain is that which the synthesised subframe, which is overwritten, suggests.
    Vsp16s makeNoise(const Vsp16s* excitation, Vsp32s exponent, Vsp16s* synthesised, Vsp32s framesWithoutSpeech,
                     Vsp16s* noise);

  private:
    Vsp32s synthesis_[kOrder];
    Vsp16s deemphasis_, seed_;
    HighPass highPass50_, highPass400_;
};

}  // namespace vspv::amrwb
