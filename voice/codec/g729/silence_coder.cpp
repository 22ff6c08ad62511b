#include "codec/g729/silence_coder.h"

#include "codec/g729/frame.h"

namespace vspv::g729 {

void SilenceCoder::reset() {
    vspsVADInit_G729B_16s(vad_);
    vspsDTXInit_G729B_16s(noise_);
    previous_ = 1;
    seed_ = kNoiseSeed;
}

Vsp16s SilenceCoder::detect(const LpAnalysis& analysis, const Vsp16s* lsp) {
    Vsp16s lsf[10], active = 1;
    vspsLSPToLSF_Norm_G729_16s(lsp, lsf);
    vspsVAD_G729B_16s(analysis.windowed, analysis.exponent, analysis.reflection[1], lsf, analysis.window(), &active, vad_);
    return active;
}

void SilenceCoder::correct(Vsp16s active) { vspsVADUpdate_G729B_16s(active, vad_); }

void SilenceCoder::update(const LpAnalysis& analysis, Vsp16s active) {
    vspsDTXUpdate_G729B_16s(analysis.autocorr, analysis.exponent, active, noise_);
}

void SilenceCoder::encode(LpAnalysis& analysis, bool fast, const NoiseTarget& t, Vsp8u* bytes, VspvFrame& told) {
    Vsp16s type = 0, index[4];
    const auto encodeNoise = fast ? vspsDTXEncode_G729A_16s : vspsDTXEncode_G729B_16s;
    encodeNoise(previous_, t.excitation, t.quantisedLsp, t.lsfHistory, &seed_, analysis.memory, t.excitationError, t.lpc,
                &type, index, noise_);
    told.type = vspvFrameNoData;
    told.numBytes = 0;
    if (type == 0) return;
    packSilence(index, bytes);
    told.type = wasActive() ? vspvFrameSIDFirst : vspvFrameSIDUpdate;
    told.numBytes = kSilenceBytes;
}

void SilenceCoder::frameDone(Vsp16s active) {
    previous_ = active;
    if (active != 0) seed_ = kNoiseSeed;
}

}  // namespace vspv::g729
