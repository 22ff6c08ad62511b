// Decoder of GSM-AMR (3GPP TS 26.090 to 26.092).
#pragma once

#include "codec/amr/frame.h"
#include "codec/library_state.h"
#include "samples.h"
#include "vspsc/gsmamr.h"

namespace vspv::amr {

// What a receiver says of a frame, as the library numbers it.
enum Received : Vsp32s {
    kGood = 0,
    kDegraded = 1,
    kOnset = 2,
    kBad = 3,
    kSilenceFirst = 4,
    kSilenceUpdate = 5,
    kSilenceBad = 6,
    kNoData = 7
};

class Decoder {
  public:
    void reset();
    // Parameters of speech, also where they are bad, or of a silence descriptor; null for onset and no data.
    void decode(Received type, Vsp32s mode, const Vsp16s* parameters, Vsp16s* samples);

  private:
    static constexpr Vsp32s kFrame = 160, kSubframe = 40, kPast = 154;

    // What comfort noise resets.
    struct SpeechMemory {
        Vsp16s excitation[kPast + kSubframe];
        Vsp16s sharpening, previousLag, receivedLag, seed;
        Vsp32s previousBad, previousDegraded, badFrames;
        Vsp16s inNoise, voicedHangover, pitchGains[9], noiseDetector[61];
        Vsp16s smoothing[9], lsfResidual[10], lsf[10], pitchConcealment[7], codeConcealment[7], dispersion[8];

        void reset();
    };

    // A frame of speech while it is decoded.
    struct Speech {
        Vsp32s code;
        bool bad, degraded;
        const Vsp16s* next;  // parameter
        Vsp16s lpc[44], lsf[40];
        Vsp16s gainIndex;  // 4.75 kbit/s: of two subframes
    };

    void decodeFrame(Received type, Vsp32s mode, const Vsp16s* parameters, Vsp16s* samples);
    void speech(Received type, Vsp32s mode, const Vsp16s* parameters, Vsp32s lastState, Vsp16s* synthesised, Vsp16s* lpc);
    void findFilters(Speech& s);
    void decodeSubframe(Speech& s, Vsp32s i, Vsp16s* synthesised);
    void decodeGains(Speech& s, Vsp32s i, const Vsp16s* code, Vsp16s* gain);
    void concealPitchGain(const Speech& s, Vsp16s* gain);
    void synthesise(const Vsp16s* lpc, const Vsp16s* emphasised, Vsp16s* controlled, Vsp16s* synthesised);

    SpeechMemory m_;
    Vsp16s lsp_[10], synthesisMemory_[10], energies_[9], lsfMean_[10], predictor_[8];
    Vsp32s mode_, noiseState_, home_;
    LibraryState<408> noise_;
    LibraryState<48> postFilter_;
    LibraryState<16> output_;
};

}  // namespace vspv::amr
