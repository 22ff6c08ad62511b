#include "codec/amr/decoder.h"

#include "vspsc/common.h"
#include "vspsc/gsmamr.h"

namespace vspv::amr {

namespace {

// Mean of the LSFs at 12.2 kbit/s, Q15 of 16384 = 4 kHz.
constexpr Vsp16s kMeanLsf[kOrder] = {1384, 2077, 3420, 5108, 6742, 8122, 9863, 11092, 12714, 13701};

enum DtxState : Vsp32s { kSpeech, kNoise, kMuted };
constexpr Vsp16s kWorstBadState = 6, kBadStateAfter = 5;

bool isLowRate(Vsp32s mode) { return mode <= kMode590; }

}  // namespace

struct Decoder::FrameState {
    Vsp32s mode;
    bool bad;
    Vsp16s flags[6];
    const Vsp16s *lpc, *lsf;
};

void Decoder::resetSpeech() {
    constexpr Vsp16s kLag = 40, kSeed = 21845;
    speech_ = {};
    speech_.prevLag = speech_.lagBuffer = kLag;
    speech_.seed = kSeed;
    copy(kMeanLsf, kOrder, speech_.lsf);
    for (int i = 0; i < 5; i++) {
        speech_.pitchConcealment[i] = 1640;
        speech_.codeConcealment[i] = 1;
    }
    speech_.pitchConcealment[6] = 16384;
    speech_.codeConcealment[6] = 1;
}

void Decoder::reset() {
    *this = {};
    resetSpeech();
    copy(kStartLsp, kOrder, lsp_);
    copy(kMeanLsf, kOrder, lsfMean_);
    resetPredictor(predictor_);
    dtxState_ = kNoise;
    vspsCNGInit_GSMAMR_16s(noise_);
    vspsPostFilterInit_GSMAMR_16s(postFilter_);
    vspsHighPassFilterInit_GSMAMR_16s(1, highPass_);
}

void Decoder::decodeNoise(const Parameters& parameters, Vsp32s mode, Vsp32s newState, Vsp16s* synthesis, Vsp16s* lpc) {
    constexpr Vsp16s kHangVar = 20;
    resetSpeech();
    vspsCNGDecode_GSMAMR_16s(parameters.values, mode, dtxState_, newState, memSyn_, predictor_, speech_.lsf, synthesis, lpc,
                             noise_);
    speech_.smoothing[7] = kHangVar;
    vspsLSFToLSP_GSMAMR_16s(speech_.lsf, lsp_);
    vspsLSFAverage_GSMAMR_16s(speech_.lsf, lsfMean_);
}

void Decoder::decodeLsp(const Vsp16s* index, Vsp32s mode, bool bad, Vsp16s* lpc, Vsp16s* subframeLsf) {
    Vsp16s before[kOrder], lsp[2 * kOrder], subframeLsp[4 * kOrder];
    copy(speech_.lsf, kOrder, before);
    if (bad)
        vspsLSFDecodeErased_GSMAMR_16s(mode, speech_.lspResidual, speech_.lsf, lsp);
    else
        vspsLSFDecode_GSMAMR_16s(index, mode, speech_.lspResidual, speech_.lsf, lsp);
    const Vsp16s* const end = mode == kMode122 ? lsp + kOrder : lsp;
    vspsInterpolateLSP_GSMAMR_16s(lsp_, lsp, end, mode, subframeLsp);
    for (int s = 0; s < 4; s++) vspsLSPToLPC_GSMAMR_16s(subframeLsp + kOrder * s, lpc + (kOrder + 1) * s);
    copy(end, kOrder, lsp_);
    vspsInterpolateLSP_GSMAMR_16s(before, nullptr, speech_.lsf, kMode475, subframeLsf);
}

// The synthesis of the emphasised excitation. If it saturates the excitations are taken down for good, and that without
// emphasis takes its place.
void Decoder::synthesise(const Vsp16s* lpc, const Vsp16s* emphasised, Vsp16s* plain, Vsp16s* synthesis) {
    if (vspsSynthesisFilter_NR_16s_Sfs(lpc, emphasised, synthesis, kSubframe, 12, memSyn_) == vspStsOverflow) {
        for (Vsp16s& x : speech_.excitation) x >>= 2;
        for (int i = 0; i < kSubframe; i++) plain[i] >>= 2;
        vspsSynthesisFilter_NR_16s_Sfs(lpc, plain, synthesis, kSubframe, 12, memSyn_);
    }
    copy(synthesis + kSubframe - kOrder, kOrder, memSyn_);
}

void Decoder::decodeSubframe(const Vsp16s*& index, int number, const FrameState& frame, Vsp16s* synthesis) {
    const Vsp32s mode = frame.mode, bad = frame.bad, prevBad = speech_.prevBad, badState = speech_.badState;
    const bool high = mode == kMode122;
    Vsp16s* const exc = speech_.excitation + 154;
    Vsp16s delay[2], gain[2] = {}, vector[kSubframe], code[kSubframe], spread[kSubframe], emphasised[kSubframe];
    vspsDelayDecode_GSMAMR_16s(mode, number, *index++, bad, frame.flags[4], frame.flags[5], &speech_.prevLag,
                               &speech_.lagBuffer, delay);
    vspsDecodeAdaptiveVector_GSMAMR_16s_I(delay, mode, exc);

    const auto concealPitch = [&] {
        vspsPitchGainConceal_GSMAMR_16s(bad, prevBad, badState, speech_.pitchConcealment, gain);
    };
    const auto decodePitch = [&] {
        if (!bad) vspsPitchGainDecode_GSMAMR_16s(mode, *index, gain);
        index++;
        concealPitch();
    };
    if (high) decodePitch();
    vspsAlgebraicCodebookDecode_GSMAMR_16s(index, mode, number, delay[0], high ? gain[0] : speech_.sharp, code);
    index += pulseCount(mode);
    if (mode == kMode795) decodePitch();
    if (mode != kMode475 || number % 2 == 0) speech_.gainIndex475 = *index++;
    if (!bad) vspsGainDecode_GSMAMR_16s(code, mode, number, speech_.gainIndex475, predictor_, gain);
    if (!high && mode != kMode795) concealPitch();
    vspsCodeGainConceal_GSMAMR_16s(bad, prevBad, badState, speech_.codeConcealment, predictor_, gain + 1);

    constexpr Vsp16s kLongLag = 45;
    const Vsp16s decoded = gain[0];
    Vsp16s emphasis = high ? decoded : sharpeningOf(decoded);
    if (mode == kMode102 && speech_.prevLag > kLongLag) emphasis >>= 2;
    if (mode != kMode475 || number % 2 == 1) speech_.sharp = sharpeningOf(decoded);
    if (!bad) push(speech_.pitchGains, 9, decoded);
    if ((bad || prevBad) && frame.flags[4] != 0 && isLowRate(mode)) {
        constexpr Vsp16s kKnee = 12288, kMost = 14745;
        if (gain[0] > kKnee) gain[0] = Vsp16s(kKnee + ((gain[0] - kKnee) >> 1));
        if (gain[0] > kMost) gain[0] = kMost;
    }

    Vsp16s mixed;
    vspsCodeGainSmooth_GSMAMR_16s(frame.lsf + kOrder * number, lsfMean_, frame.flags, mode, gain[1], speech_.smoothing,
                                  &mixed);
    copy(exc, kSubframe, vector);
    Vsp16s plain[kSubframe];
    copy(exc, kSubframe, plain);
    copy(code, kSubframe, spread);
    vspsInterpolateC_NR_G729_16s_Sfs(exc, high ? Vsp16s(gain[0] >> 1) : gain[0], code, gain[1], exc, kSubframe,
                                     high ? 13 : 14);
    const bool lock = isLowRate(mode) && frame.flags[5] > 3 && frame.flags[4] != 0 && bad;
    vspsPhaseDispersion_GSMAMR_16s(gain[0], mixed, mode, lock, plain, spread, speech_.dispersion);
    vspsExcitationControl_GSMAMR_16s(frame.flags, mode, badState, plain, energies_);
    vspsExcitationEmphasis_GSMAMR_16s(vector, plain, mode, emphasis, decoded, emphasised);
    synthesise(frame.lpc + (kOrder + 1) * number, emphasised, plain, synthesis);

    copy(speech_.excitation + kSubframe, 154, speech_.excitation);
    speech_.prevLag = delay[0];
}

void Decoder::decodeSpeech(const Parameters& parameters, Vsp32s mode, ReceivedType type, Vsp16s* synthesis, Vsp16s* lpc) {
    const bool missing = type == ReceivedType::noData || type == ReceivedType::onset;
    const bool bad = missing || type == ReceivedType::bad, degraded = type == ReceivedType::degraded;
    Parameters random;
    if (missing) vspsRandomParameters_GSMAMR_16s(mode, &speech_.seed, random.values);
    const Vsp16s* index = missing ? random.values : parameters.values;

    Vsp16s& state = speech_.badState;
    if (bad)
        state = state < kWorstBadState ? Vsp16s(state + 1) : kWorstBadState;
    else
        state = state == kWorstBadState ? kBadStateAfter : Vsp16s(0);
    if (dtxState_ != kSpeech) {
        state = kBadStateAfter;
        speech_.prevBad = dtxState_ == kMuted;
    }

    Vsp16s subframeLsf[4 * kOrder];
    decodeLsp(index, mode, bad, lpc, subframeLsf);
    index += lspCount(mode);
    const FrameState frame{mode,
                           bad,
                           {bad, speech_.prevBad, degraded, speech_.prevDegraded, speech_.inNoise, speech_.voicedHangover},
                           lpc,
                           subframeLsf};
    for (int n = 0; n < 4; n++) decodeSubframe(index, n, frame, synthesis + kSubframe * n);

    vspsBackgroundNoiseDetect_GSMAMR_16s(speech_.pitchGains, synthesis, speech_.noiseMemory, &speech_.voicedHangover,
                                         &speech_.inNoise);
    vspsCNGUpdate_GSMAMR_16s(speech_.lsf, synthesis, noise_);
    speech_.prevBad = bad;
    speech_.prevDegraded = degraded;
    vspsLSFAverage_GSMAMR_16s(speech_.lsf, lsfMean_);
}

void Decoder::decode(const Parameters& parameters, Vsp32s mode, ReceivedType type, Vsp16s* samples) {
    constexpr int k13Bits = ~7;
    if (type == ReceivedType::noData)
        mode = lastMode_;
    else
        lastMode_ = mode;
    Vsp32s newState;
    vspsCNGHandler_GSMAMR_16s(Vsp32s(type), dtxState_, &newState, noise_);
    Vsp16s synthesis[kSamples], lpc[4 * (kOrder + 1)];
    if (newState != kSpeech)
        decodeNoise(parameters, mode, newState, synthesis, lpc);
    else
        decodeSpeech(parameters, mode, type, synthesis, lpc);
    dtxState_ = newState;
    vspsPostFilter_GSMAMR_16s(synthesis, lpc, mode, samples, postFilter_);
    vspsHighPassFilter_GSMAMR_16s_I(samples, kSamples, highPass_);
    for (int i = 0; i < kSamples; i++) samples[i] = Vsp16s(samples[i] & k13Bits);
}

}  // namespace vspv::amr
