#include "codec/amr/decoder.h"

#include "codec/amr/excitation.h"
#include "vspsc/common.h"

namespace vspv::amr {

namespace {

constexpr Vsp32s k475 = 0, k590 = 3, k795 = 8, k102 = 11, k122 = 12;  // codes of rates
constexpr Vsp16s kLspReset[10] = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
constexpr Vsp16s kPredictorReset[8] = {-14336, -14336, -14336, -14336, -2381, -2381, -2381, -2381};
constexpr Vsp16s kMeanLsf[10] = {1384, 2077, 3420, 5108, 6742, 8122, 9863, 11092, 12714, 13701};
constexpr Vsp16s kMostSharpening = 13017;  // Q14
constexpr Vsp32s kLastBadFrames = 6;

}  // namespace

void Decoder::SpeechMemory::reset() {
    *this = {};
    previousLag = receivedLag = 40;
    seed = 21845;
    copy(kMeanLsf, lsf, 10);
    for (Vsp32s i = 0; i < 5; i++) {
        pitchConcealment[i] = 1640;
        codeConcealment[i] = 1;
    }
    pitchConcealment[6] = 16384;
    codeConcealment[6] = 1;
}

void Decoder::reset() {
    *this = {};
    m_.reset();
    copy(kLspReset, lsp_, 10);
    copy(kMeanLsf, lsfMean_, 10);
    copy(kPredictorReset, predictor_, 8);
    noiseState_ = home_ = 1;
    vspsCNGInit_GSMAMR_16s(noise_);
    vspsPostFilterInit_GSMAMR_16s(postFilter_);
    vspsHighPassFilterInit_GSMAMR_16s(1, output_);
}

// At home a homing frame is answered by that of the encoder; away from home it leads there.
void Decoder::decode(Received type, Vsp32s mode, const Vsp16s* parameters, Vsp16s* samples) {
    const bool wasHome = home_ != 0, speechParameters = type <= kBad && parameters != nullptr;
    const bool homing = speechParameters && isHoming(mode, parameters, wasHome);
    if (homing && wasHome)
        for (Vsp32s i = 0; i < kFrame; i++) samples[i] = 8;
    else
        decodeFrame(type, mode, parameters, samples);
    if (homing) reset();
    home_ = homing;
}

void Decoder::decodeFrame(Received type, Vsp32s mode, const Vsp16s* parameters, Vsp16s* samples) {
    if (type == kNoData) mode = mode_;
    mode_ = mode;
    Vsp32s state = 0;
    Vsp16s synthesised[kFrame], lpc[44];
    const Vsp32s lastState = noiseState_;
    vspsCNGHandler_GSMAMR_16s(type, lastState, &state, noise_);
    if (state == 0) {
        speech(type, mode, parameters, lastState, synthesised, lpc);
    } else {
        static constexpr Vsp16s kNone[kSilenceParameters] = {};
        const bool descriptor = type >= kSilenceFirst && type <= kSilenceBad;
        m_.reset();
        vspsCNGDecode_GSMAMR_16s(descriptor ? parameters : kNone, kRateCodes[mode], lastState, state, synthesisMemory_,
                                 predictor_, m_.lsf, synthesised, lpc, noise_);
        m_.smoothing[7] = 20;
        vspsLSFToLSP_GSMAMR_16s(m_.lsf, lsp_);
    }
    vspsLSFAverage_GSMAMR_16s(m_.lsf, lsfMean_);
    noiseState_ = state;
    vspsPostFilter_GSMAMR_16s(synthesised, lpc, kRateCodes[mode], samples, postFilter_);
    vspsHighPassFilter_GSMAMR_16s_I(samples, kFrame, output_);
    for (Vsp32s i = 0; i < kFrame; i++) samples[i] = Vsp16s(samples[i] & ~7);
}

void Decoder::speech(Received type, Vsp32s mode, const Vsp16s* parameters, Vsp32s lastState, Vsp16s* synthesised,
                     Vsp16s* lpc) {
    Speech s{};
    Vsp16s random[kMaxParameters];
    s.code = kRateCodes[mode];
    s.bad = type == kBad || type == kOnset || type == kNoData;
    s.degraded = type == kDegraded;
    s.next = parameters;
    if (type == kOnset || type == kNoData) {
        vspsRandomParameters_GSMAMR_16s(s.code, &m_.seed, random);
        s.next = random;
    }
    if (s.bad)
        m_.badFrames = m_.badFrames < kLastBadFrames ? m_.badFrames + 1 : kLastBadFrames;
    else
        m_.badFrames = m_.badFrames == kLastBadFrames ? kLastBadFrames - 1 : 0;
    if (lastState != 0) {
        m_.badFrames = kLastBadFrames - 1;
        m_.previousBad = lastState == 2;
    }
    findFilters(s);
    for (Vsp32s i = 0; i < 4; i++) decodeSubframe(s, i, synthesised + kSubframe * i);
    copy(s.lpc, lpc, 44);
    vspsBackgroundNoiseDetect_GSMAMR_16s(m_.pitchGains, synthesised, m_.noiseDetector, &m_.voicedHangover, &m_.inNoise);
    vspsCNGUpdate_GSMAMR_16s(m_.lsf, synthesised, noise_);
    m_.previousBad = s.bad;
    m_.previousDegraded = s.degraded;
}

void Decoder::findFilters(Speech& s) {
    Vsp16s oldLsf[10], lsp[20], interpolated[40];
    copy(m_.lsf, oldLsf, 10);
    if (s.bad)
        vspsLSFDecodeErased_GSMAMR_16s(s.code, m_.lsfResidual, m_.lsf, lsp);
    else
        vspsLSFDecode_GSMAMR_16s(s.next, s.code, m_.lsfResidual, m_.lsf, lsp);
    s.next += s.code == k122 ? 5 : 3;
    const Vsp16s* last = s.code == k122 ? lsp + 10 : lsp;
    vspsInterpolateLSP_GSMAMR_16s(lsp_, s.code == k122 ? lsp : nullptr, last, s.code, interpolated);
    for (Vsp32s i = 0; i < 4; i++) vspsLSPToLPC_GSMAMR_16s(interpolated + 10 * i, s.lpc + 11 * i);
    copy(last, lsp_, 10);
    vspsInterpolateLSP_GSMAMR_16s(oldLsf, nullptr, m_.lsf, k475, s.lsf);
}

void Decoder::concealPitchGain(const Speech& s, Vsp16s* gain) {
    vspsPitchGainConceal_GSMAMR_16s(s.bad, m_.previousBad, m_.badFrames, m_.pitchConcealment, gain);
}

// Behind the code: at 12.2 kbit/s the pitch gain is known already.
void Decoder::decodeGains(Speech& s, Vsp32s i, const Vsp16s* code, Vsp16s* gain) {
    if (s.code == k795) {
        const Vsp16s index = *s.next++;
        if (!s.bad) vspsPitchGainDecode_GSMAMR_16s(s.code, index, gain);
        concealPitchGain(s, gain);
    }
    if (s.code != k475 || i % 2 == 0) s.gainIndex = *s.next++;
    if (!s.bad) vspsGainDecode_GSMAMR_16s(code, s.code, i, s.gainIndex, predictor_, gain);
    if (s.code != k795 && s.code != k122) concealPitchGain(s, gain);
    vspsCodeGainConceal_GSMAMR_16s(s.bad, m_.previousBad, m_.badFrames, m_.codeConcealment, predictor_, gain + 1);
}

// 3GPP TS 26.090 6.1 and TS 26.091
void Decoder::decodeSubframe(Speech& s, Vsp32s i, Vsp16s* synthesised) {
    Vsp16s* excitation = m_.excitation + kPast;
    Vsp16s delay[2], gain[2] = {}, code[kSubframe];
    vspsDelayDecode_GSMAMR_16s(s.code, i, *s.next++, s.bad, m_.inNoise, m_.voicedHangover, &m_.previousLag, &m_.receivedLag,
                               delay);
    vspsDecodeAdaptiveVector_GSMAMR_16s_I(delay, s.code, excitation);
    if (s.code == k122) {
        const Vsp16s index = *s.next++;
        if (!s.bad) vspsPitchGainDecode_GSMAMR_16s(s.code, index, gain);
        concealPitchGain(s, gain);
    }
    vspsAlgebraicCodebookDecode_GSMAMR_16s(s.next, s.code, i, delay[0], s.code == k122 ? gain[0] : m_.sharpening, code);
    s.next += s.code == k122 ? 10 : s.code == k102 ? 7 : 2;
    decodeGains(s, i, code, gain);

    const Vsp16s pitchGain = gain[0], limited = pitchGain < kMostSharpening ? pitchGain : kMostSharpening;
    Vsp16s sharp = s.code == k122 ? pitchGain : limited;
    if (s.code == k102 && m_.previousLag > 45) sharp = Vsp16s(sharp >> 2);
    if (s.code != k475 || i % 2 == 1) m_.sharpening = limited;
    if (!s.bad) {
        moveDown(m_.pitchGains, 8, 1);
        m_.pitchGains[8] = pitchGain;
    }
    if ((s.bad || m_.previousBad != 0) && m_.inNoise != 0 && s.code <= k590 && pitchGain > 12288) {
        const Vsp32s less = 12288 + ((pitchGain - 12288) >> 1);
        gain[0] = Vsp16s(less < 14745 ? less : 14745);
    }

    const Vsp16s flags[6] = {s.bad,      Vsp16s(m_.previousBad), s.degraded, Vsp16s(m_.previousDegraded),
                             m_.inNoise, m_.voicedHangover};
    Vsp16s mixed, vector[kSubframe], controlled[kSubframe], dispersedCode[kSubframe], emphasised[kSubframe];
    vspsCodeGainSmooth_GSMAMR_16s(s.lsf + 10 * i, lsfMean_, flags, s.code, gain[1], m_.smoothing, &mixed);
    copy(excitation, vector, kSubframe);
    copy(excitation, controlled, kSubframe);
    copy(code, dispersedCode, kSubframe);
    totalExcitation(s.code, vector, gain, code, excitation);
    const bool lock = s.code <= k590 && m_.voicedHangover > 3 && m_.inNoise != 0 && s.bad;
    vspsPhaseDispersion_GSMAMR_16s(gain[0], mixed, s.code, lock, controlled, dispersedCode, m_.dispersion);
    vspsExcitationControl_GSMAMR_16s(flags, s.code, m_.badFrames, controlled, energies_);
    vspsExcitationEmphasis_GSMAMR_16s(vector, controlled, s.code, sharp, pitchGain, emphasised);
    synthesise(s.lpc + 11 * i, emphasised, controlled, synthesised);
    moveDown(m_.excitation, kPast, kSubframe);
    m_.previousLag = delay[0];
}

// Where the filter saturates, all of the excitation loses two bits, and what has not been emphasised is filtered.
void Decoder::synthesise(const Vsp16s* lpc, const Vsp16s* emphasised, Vsp16s* controlled, Vsp16s* synthesised) {
    if (vspsSynthesisFilter_NR_16s_Sfs(lpc, emphasised, synthesised, kSubframe, 12, synthesisMemory_) == vspStsOverflow) {
        for (Vsp16s& x : m_.excitation) x = Vsp16s(x >> 2);
        for (Vsp32s n = 0; n < kSubframe; n++) controlled[n] = Vsp16s(controlled[n] >> 2);
        vspsSynthesisFilter_NR_16s_Sfs(lpc, controlled, synthesised, kSubframe, 12, synthesisMemory_);
    }
    copy(synthesised + kSubframe - 10, synthesisMemory_, 10);
}

}  // namespace vspv::amr
