#include "codec/gsmfr/encoder.h"

#include "vspsc/gsmfr.h"

namespace vspv::gsmfr {

void Encoder::reset() {
    *this = {};
    reconstruction_.reset();
}

// GSM 06.10 5.2
void Encoder::encode(const Vsp16s* samples, Frame& frame) {
    Vsp16s signal[kSamples], reflection[8], lar[8];
    Vsp32s correlation[9];
    vspsPreprocess_GSMFR_16s(samples, signal, input_);
    vspsAutoCorr_GSMFR_16s32s(signal, correlation);
    vspsSchur_GSMFR_32s16s(correlation, reflection);
    vspsLARQuantEncode_GSMFR_16s(reflection, frame.lar);
    vspsLARQuantDecode_GSMFR_16s(frame.lar, lar);
    vspsShortTermAnalysisFilter_GSMFR_16s_I(previousLar_, lar, signal, lattice_);
    for (Vsp32s i = 0; i < 8; i++) previousLar_[i] = lar[i];

    const Vsp16s* residual = signal;
    for (SubFrame& s : frame.subFrames) {
        Vsp16s rest[40], weighted[40], pulses[13], reconstructed[40];
        vspsLongTermPredict_GSMFR_16s(residual, reconstruction_.past, rest, &s.lag, &s.gain);
        vspsWeightingFilter_GSMFR_16s(rest, weighted);
        vspsRPEGridSelect_GSMFR_16s(weighted, pulses, &s.grid);
        vspsRPEQuantEncode_GSMFR_16s(pulses, s.pulses, &s.max);
        reconstruction_.add(s, reconstructed);
        residual += 40;
    }
}

}  // namespace vspv::gsmfr
