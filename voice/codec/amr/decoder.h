#pragma once

#include "codec/amr/frame.h"

namespace vspv::amr {

class Decoder {
  public:
    void reset();

    // Parameters of a frame that did not arrive are not read. mode is the bit rate, also of silence descriptors.
    void decode(const Parameters& parameters, Vsp32s mode, ReceivedType type, Vsp16s* samples);

  private:
    struct FrameState;

    void resetSpeech();
    void decodeNoise(const Parameters& parameters, Vsp32s mode, Vsp32s newState, Vsp16s* synthesis, Vsp16s* lpc);
    void decodeSpeech(const Parameters& parameters, Vsp32s mode, ReceivedType type, Vsp16s* synthesis, Vsp16s* lpc);
    void decodeLsp(const Vsp16s* index, Vsp32s mode, bool bad, Vsp16s* lpc, Vsp16s* subframeLsf);
    void decodeSubframe(const Vsp16s*& index, int number, const FrameState& frame, Vsp16s* synthesis);
    void synthesise(const Vsp16s* lpc, const Vsp16s* emphasised, Vsp16s* plain, Vsp16s* synthesis);

    // What a frame of comfort noise resets.
    struct Speech {
        Vsp16s excitation[154 + kSubframe], sharp, prevLag, lagBuffer, prevBad, prevDegraded, badState;
        Vsp16s inNoise, voicedHangover, pitchGains[9], noiseMemory[61], seed, smoothing[9];
        Vsp16s lspResidual[kOrder], lsf[kOrder], pitchConcealment[7], codeConcealment[7], dispersion[8];
        Vsp16s gainIndex475;
    };

    Speech speech_;
    Vsp16s lsp_[kOrder], memSyn_[kOrder], energies_[9], lsfMean_[kOrder], predictor_[8];
    Vsp32s lastMode_, dtxState_;
    alignas(8) unsigned char noise_[408], postFilter_[44], highPass_[16];
};

}  // namespace vspv::amr
