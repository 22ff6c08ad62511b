// A coder put together from the functions, without the packing of bits: 76 parameters per frame.
#pragma once

#include "core/api.h"

namespace vsp::test::gsmfr {

constexpr int kParameters = 76;

class Codec {
  public:
    explicit Codec(const Api& functions) : api(functions) {}

    void encode(const Vsp16s* samples, Vsp16s* parameters) {
        Vsp16s s[160], r[8], lar[8];
        Vsp32s acf[9];
        api.vspsPreprocess_GSMFR_16s(samples, s, input_);
        api.vspsAutoCorr_GSMFR_16s32s(s, acf);
        api.vspsSchur_GSMFR_32s16s(acf, r);
        api.vspsLARQuantEncode_GSMFR_16s(r, parameters);
        api.vspsLARQuantDecode_GSMFR_16s(parameters, lar);
        api.vspsShortTermAnalysisFilter_GSMFR_16s_I(lar_, lar, s, lattice_);
        keep(lar);
        Vsp16s* p = parameters + 8;
        for (const Vsp16s* d = s; d < s + 160; d += 40, p += 17) {
            Vsp16s e[40], x[40], pulses[13], reconstructed[40];
            api.vspsLongTermPredict_GSMFR_16s(d, past_, e, &p[0], &p[1]);
            api.vspsWeightingFilter_GSMFR_16s(e, x);
            api.vspsRPEGridSelect_GSMFR_16s(x, pulses, &p[2]);
            api.vspsRPEQuantEncode_GSMFR_16s(pulses, p + 4, &p[3]);
            reconstruct(p, reconstructed);
        }
    }

    void decode(const Vsp16s* parameters, Vsp16s* samples) {
        Vsp16s residual[160], lar[8];
        for (int i = 0; i < 4; i++) reconstruct(parameters + 8 + 17 * i, residual + 40 * i);
        api.vspsLARQuantDecode_GSMFR_16s(parameters, lar);
        api.vspsShortTermSynthesisFilter_GSMFR_16s(lar_, lar, residual, samples, lattice_);
        keep(lar);
        api.vspsPostprocess_GSMFR_16s_I(samples, &output_);
    }

  private:
    void reconstruct(const Vsp16s* p, Vsp16s* dst) {
        Vsp16s factor, scale, pulses[13], excitation[40];
        api.vspsRPEScaleDecode_GSMFR_16s(p[3], &factor, &scale);
        api.vspsRPEQuantDecode_GSMFR_16s(p + 4, pulses, factor, scale);
        api.vspsRPEGridPosition_GSMFR_16s(pulses, excitation, p[2]);
        api.vspsLongTermSynthesis_GSMFR_16s(excitation, past_, dst, p[0], p[1], &previousLag_);
    }

    void keep(const Vsp16s* lar) {
        for (int i = 0; i < 8; i++) lar_[i] = lar[i];
    }

    const Api& api;
    Vsp32s input_[3] = {};
    Vsp16s lar_[8] = {}, lattice_[8] = {}, past_[120] = {}, previousLag_ = 40, output_ = 0;
};

}  // namespace vsp::test::gsmfr
