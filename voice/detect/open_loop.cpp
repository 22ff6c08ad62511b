#include "detect/open_loop.h"

#include <string.h>

#include "vspsc/common.h"
#include "vspsc/gsmamr.h"

namespace vspv {

static constexpr Vsp32s kMode = 7;  // 7.4 kbit/s
static constexpr Vsp32s kEncoderInput = 0, kWindow200_40 = 0;
static constexpr Vsp32s kSubframes = 4, kLookAhead = 40;

Vsp32s OpenLoop::stateBytes() {
    Vsp32s bytes = 0;
    vspsHighPassFilterGetSize_GSMAMR_16s(&bytes);
    return bytes;
}

OpenLoop::OpenLoop(Vsp32s option, void* highPass) : option_(option) {
    vspsHighPassFilterInit_GSMAMR_16s(kEncoderInput, highPass);
}

void OpenLoop::read(const Vsp16s* frame, void* highPass) {
    Vsp16s processed[kFrame];
    for (Vsp32s i = 0; i < kFrame; i++) processed[i] = Vsp16s(frame[i] & ~7);
    vspsHighPassFilter_GSMAMR_16s_I(processed, kFrame, highPass);
    readProcessed(processed);
}

void OpenLoop::readProcessed(const Vsp16s* frame) {
    memmove(speech_, speech_ + kFrame, sizeof speech_ - kFrame * sizeof *speech_);
    memcpy(speech_ + kWindow - kFrame, frame, kFrame * sizeof *frame);
}

void OpenLoop::search(Vsp16s* pitchFlags) {
    memmove(weighted_, weighted_ + kFrame, kLongestLag * sizeof *weighted_);
    weigh(weighted_ + kLongestLag);
    Vsp16s lags[2];
    vspsOpenLoopPitchSearch_GSMAMR_16s(weighted_ + kLongestLag, kMode, option_, searchMem_, vadMem_, pitchFlags, lags);
}

void OpenLoop::weigh(Vsp16s* weighted) {
    Vsp32s autoCorr[kOrder + 1], norm;
    Vsp16s reflection[4], lsp[kOrder], lsps[kSubframes][kOrder], lpcs[kSubframes][kOrder + 1];
    vspsAutoCorr_GSMAMR_16s32s(speech_, kWindow200_40, autoCorr, &norm);
    vspsLagWindow_G729_32s_I(autoCorr + 1, kOrder);
    vspsLevinsonDurbin_GSMAMR_32s16s(autoCorr, lpc_, lpcs[kSubframes - 1], reflection);
    vspsLPCToLSP_GSMAMR_16s(lpcs[kSubframes - 1], lsp_, lsp);
    vspsInterpolateLSP_GSMAMR_16s(lsp_, nullptr, lsp, kMode, lsps[0]);
    for (Vsp32s i = 0; i < kSubframes - 1; i++) vspsLSPToLPC_GSMAMR_16s(lsps[i], lpcs[i]);
    memcpy(lsp_, lsp, sizeof lsp_);
    vspsWeightedSpeech_GSMAMR_16s(speech_ + kWindow - kFrame - kLookAhead, lpcs[0], kMode, weightingMem_, weighted);
}

}  // namespace vspv
