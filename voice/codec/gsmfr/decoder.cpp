#include "codec/gsmfr/decoder.h"

#include "vspsc/gsmfr.h"

namespace vspv::gsmfr {

void Decoder::reset() {
    *this = {};
    reconstruction_.reset();
}

// GSM 06.10 5.3
void Decoder::decode(const Frame& frame, Vsp16s* samples) {
    Vsp16s residual[kSamples], lar[8];
    for (Vsp32s i = 0; i < 4; i++) reconstruction_.add(frame.subFrames[i], residual + 40 * i);
    vspsLARQuantDecode_GSMFR_16s(frame.lar, lar);
    vspsShortTermSynthesisFilter_GSMFR_16s(previousLar_, lar, residual, samples, lattice_);
    for (Vsp32s i = 0; i < 8; i++) previousLar_[i] = lar[i];
    vspsPostprocess_GSMFR_16s_I(samples, &output_);
}

}  // namespace vspv::gsmfr
