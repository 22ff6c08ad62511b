// Decoder of AMR-WB (3GPP TS 26.190 to 26.192).
#pragma once

#include "codec/amrwb/analysis.h"
#include "codec/amrwb/frame.h"
#include "codec/library_state.h"
#include "samples.h"

namespace vspv::amrwb {

// What a receiver says of a frame, as the library numbers it.
enum Received : Vsp16s {
    kGood = 0,
    kDegraded = 1,
    kLost = 2,
    kBad = 3,
    kSilenceFirst = 4,
    kSilenceUpdate = 5,
    kSilenceBad = 6,
    kNoData = 7
};

class Decoder {
  public:
    void reset();
    // Parameters of speech in a mode, also where they are bad, or of a silence descriptor; null for lost and no data. All
    // but speech keeps the mode of the speech before.
    void decode(Received type, Vsp32s mode, const Vsp16s* parameters, Vsp16s* samples);

  private:
    static constexpr Vsp32s kPast = 248;

    // A frame of speech while it is decoded.
    struct Speech {
        Vsp32s code;
        Vsp16s bad;          // 1 some of the bits can be used, 2 none
        const Vsp16s* next;  // parameter
        Vsp16s stability;    // of the spectrum
        Vsp16s isf[16], previousIsf[16];
        Vsp16s lpc[4 * 17];
    };

    void decodeFrame(Received type, const Vsp16s* parameters, Vsp16s* samples);
    void decodeNoise(Vsp32s code, Vsp16s bad, Vsp16s* isf, Vsp16s* samples);
    void decodeSpeech(Speech& s, Vsp16s* samples);
    void findFilters(Speech& s);
    void decodeSubframe(Speech& s, Vsp32s i, Vsp16s* samples);
    void decodeCode(Speech& s, Vsp16s lag, Vsp16s* code);
    // With the band above 6.4 kHz; that of a frame of speech at 6.60 kbit/s has a spectrum of its own.
    void synthesise(const Vsp16s* lpc, const Vsp16s* excitation, Vsp32s exponent, const Vsp16s* highIsf, Vsp16s highGain,
                    bool lowPass, Vsp16s* samples);

    Vsp32s mode_, noiseState_, badFrames_, exponent_, noiseThreshold_;
    bool home_, firstFrame_, previousBad_;
    Vsp16s framesWithoutSpeech_, tilt_, seed_;
    Vsp16s excitation_[kPast + kCore + 1], isfResidual_[16], isfHistory_[48], isf_[16], isp_[16];
    Vsp16s headroom_[4], gains_[22], dispersion_[8];
    Vsp16s upsampling_[24], noiseSynthesis_[20], noiseBand_[30], lowPass_[30];
    HighBand highBand_;
    LibraryState<24> adaptive_;
    LibraryState<400> noise_;
};

}  // namespace vspv::amrwb
