// Decoder of the main body and of all annexes that have one of their own.
#pragma once

#include "codec/g729/backward_analysis.h"
#include "codec/g729/variant.h"

namespace vspv::g729 {

class Decoder {
  public:
    void reset(const Variant& variant);
    void decode(const Variant& variant, const Frame& frame, Vsp16s* samples);
    // An empty index stands for a frame without data.
    void decodeNoise(const Variant& variant, const Vsp16s* index, Vsp16s* samples);
    // The rate counts after speech only; after noise a lost frame is one without data.
    void conceal(const Variant& variant, Rate rate, Vsp16s* samples);
    Rate lastRate() const { return rate_; }

  private:
    // A speech frame while it is decoded. An erased one has no codes.
    struct Speech {
        Rate rate;
        bool erased;
        const Frame* frame;
        Vsp16s mode, voicing;
        Vsp16s lpc[62];  // of both subframes, behind each other
        Vsp16s firstLag;
        Vsp16s lags[2];

        Vsp32s order() const { return mode != 0 ? kMaxOrder : 10; }
        LpFilter filter(Vsp32s i) const { return {lpc + (order() + 1) * i, order()}; }
    };

    void speech(const Variant& variant, Rate rate, const Frame* frame, Vsp16s* samples);
    void noise(const Variant& variant, const Vsp16s* index, bool erased, Vsp16s* samples);
    void findFilters(const Variant& variant, Speech& s);
    void decodeSubframe(const Variant& variant, Speech& s, Vsp32s i);
    void delayOf(const Variant& variant, const Speech& s, Vsp32s i, Vsp16s* delay);
    void decodeGains(const Speech& s, Vsp32s i, const Vsp16s* code);
    void scaledSynthesis(const LpFilter& filter, Vsp32s i);
    void endFastFrame(const LpFilter* filters, const Vsp16s* lags, Vsp16s frameType, Vsp16s* samples);
    void endFrame(const Variant& variant, const LpFilter* filters, const Vsp16s* lags, Vsp16s frameType, Rate rate,
                  Vsp16s mode, bool erased, Vsp16s* samples);

    Vsp16s excitation_[154 + 80], synthesised_[kMaxOrder + 80];
    Vsp16s lsp_[10], lsf_[10], lsfHistory_[40], predictorMode_;
    Vsp16s sharpening_, gain_[2], pastEnergy_[4], oldDelay_[2], seed_, voicing_;
    Rate rate_;

    // Annex B
    Vsp16s frameType_, noiseSeed_, energy_, energyShift_;
    NoiseDecoderState noise_;

    DispersionState dispersion_;  // Annex D
    HighPassState output_;
    union {
        PostFilterState main;
        FastPostFilterState fast;
        BackwardPostFilterState backward;
    } postFilter_;

    // Annexes E and I
    BackwardAnalysis backward_;
    Vsp16s erasedFilter_[kMaxOrder + 1], previousFilter_[kMaxOrder + 1], previousMode_, previousVoicing_, wasErased_;
    Vsp16s filterFade_, interpolation_, track_[4], muting_, dominance_[3], postFilterGamma_[3];
    Vsp32s erasedSubframes_, backwardSubframes_;
};

}  // namespace vspv::g729
