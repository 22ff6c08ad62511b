// Voice activity detector in floating point (G.729 B.3 and Annex C+).
#include "arithmetic/elementary.h"
#include "core/checks.h"
#include "core/state_size.h"
#include "g729/exports.h"
#include "g729/silence_tables.h"
#include "g729/vad_shape.h"

namespace vsp::VSP_LEVEL {

namespace {

using State = VadMemory<Vsp32f, Vsp32s>;
using Features = VadFeatures<Vsp32f>;
static_assert(sizeof(State) == 172);

constexpr Vsp32f kQuiet = 21;  // decibels

constexpr VadWeights<Vsp32f> kWeightsOfUpdates[] = {
    {20, {0.75f, 0.25f}, {0.8f, 0.2f}, {0.6f, 0.4f}},       {30, {0.95f, 0.05f}, {0.92f, 0.08f}, {0.65f, 0.35f}},
    {40, {0.97f, 0.03f}, {0.94f, 0.06f}, {0.7f, 0.3f}},     {50, {0.99f, 0.01f}, {0.96f, 0.04f}, {0.75f, 0.25f}},
    {60, {0.995f, 0.005f}, {0.99f, 0.01f}, {0.75f, 0.25f}}, {0, {0.995f, 0.005f}, {0.998f, 0.002f}, {0.75f, 0.25f}},
};

struct Arithmetic {
    static constexpr Vsp32f kHighest = 1e38f;
    static constexpr int kEarlyMinima = kVadMinima - 1;
    static constexpr Vsp32f kSpeechReflection = 0.6f, kNoiseReflection = 0.75f;
    static constexpr Vsp32f kNoiseDistortion = 0.002532959f;
    static constexpr Vsp32f kThreeDecibels = 3;
    static constexpr const VadWeights<Vsp32f>* kWeights = kWeightsOfUpdates;

    VSP_INLINE Vsp32s next(Vsp32s count) { return count < 0x7FFFFFFF ? count + 1 : count; }
    VSP_INLINE bool wellAboveNoise(const State& s, const Features& f) {
        return f.energy > s.meanSE + 2 && f.energy > kQuiet;
    }
    VSP_INLINE bool similar(Vsp32f previous, Vsp32f energy) { return __builtin_fabsf(previous - energy) <= kThreeDecibels; }
    VSP_INLINE bool rises(Vsp32f previous, Vsp32f energy) { return !(energy - previous <= kThreeDecibels); }
    VSP_INLINE bool nearNoise(Vsp32f energy, Vsp32f mean) { return energy < mean + kThreeDecibels; }
    VSP_INLINE bool belowMinimum(const State& s, const Features& f) {
        return (s.frames > kVadMinimumFrames && s.meanSE < s.min && f.spectralDistortion < kNoiseDistortion) ||
               s.meanSE > s.min + 10;
    }
    VSP_INLINE Vsp32f weigh(const Vsp32f (&weights)[2], Vsp32f mean, Vsp32f value) {
        return weights[0] * mean + weights[1] * value;
    }
};

// Whether the features lie beyond one of the lines between speech and noise.
bool beyondALine(const Features& f) {
    const Vsp32f sd = f.spectralDistortion, szc = f.dSZC, se = f.dSE, sle = f.dSLE;
    return sd > 0.00175f * szc + 0.00085f || sd > -0.004545455f * szc + 0.001159091f || se < -25 * szc - 5 ||
           se < 20 * szc - 6 || se < -4.7f || se < 8800 * sd - 12.2f || sd > 0.0009f || se < 25 * szc - 7 ||
           se < -29.09091f * szc - 4.8182f || se < -5.3f || sle < 14000 * sd - 15.5f || sle > 0.928571f * se + 1.14285f ||
           sle < -1.5f * se - 9 || sle < 0.714285f * se - 2.1428571f;
}

Vsp32f decibels(Vsp32f energy) { return 10 * log10_32f(energy / 240 + 1e-38f); }

Vsp32f lowBandEnergy(const Vsp32f* autocorr) {
    Vsp32f sum = 0;
    for (int i = 1; i < kVadLags; i++) sum += autocorr[i] * lbf_corr_32f[i];
    sum = autocorr[0] * lbf_corr_32f[0] + 2 * sum;
    return decibels(sum < 0 ? 0 : sum);
}

Vsp32f crossings(const Vsp32f* speech) {
    int count = 0;
    for (int i = kVadFirstCrossing; i <= kVadLastCrossing; i++) count += speech[i - 1] * speech[i] < 0;
    return Vsp32f(count) / 80;
}

// The decision of one of the first frames, which make up the means.
int firstFrames(State& s, const Features& f, const Vsp32f* lsf) {
    if (f.energy < kQuiet) {
        s.lessCount = Arithmetic::next(s.lessCount);
        return 0;
    }
    const Vsp32f n = Vsp32f(s.frames) - Vsp32f(s.lessCount);
    const auto take = [n](Vsp32f& mean, Vsp32f value) { mean = (mean * (n - 1) + value) / n; };
    take(s.meanE, f.energy);
    take(s.meanSZC, f.crossings);
    for (int i = 0; i < kLspOrder; i++) take(s.meanLSF[i], lsf[i]);
    return 1;
}

}  // namespace

VspStatus vspsVADGetSize_G729B_32f(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsVADInit_G729B_32f(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    startVad<Arithmetic>(*static_cast<State*>(pState));
    return vspStsNoErr;
}

VspStatus vspsVAD_G729B_32f(const Vsp32f* pAutoCorr, Vsp32f rc1, const Vsp32f* pLSF, const Vsp32f* pSpeech, Vsp32s* pVad,
                            void* pState) {
    if (anyNull(pAutoCorr, pLSF, pSpeech, pVad, pState)) return vspStsNullPtrErr;
    constexpr Vsp32f kTwoPi = 6.2831853f;
    State& s = *static_cast<State*>(pState);
    countVadFrame(s);
    Vsp32f lsf[kLspOrder];
    Features f{};
    for (int i = 0; i < kLspOrder; i++) {
        lsf[i] = pLSF[i] / kTwoPi;
        f.spectralDistortion += (lsf[i] - s.meanLSF[i]) * (lsf[i] - s.meanLSF[i]);
    }
    f.energy = decibels(pAutoCorr[0]);
    f.lowEnergy = lowBandEnergy(pAutoCorr);
    f.crossings = crossings(pSpeech);
    f.rc1 = rc1;
    trackMinimum<Arithmetic>(s, f.energy);
    int vad = 0;
    if (s.frames <= kVadInitFrames) vad = firstFrames(s, f, lsf);
    if (s.frames >= kVadInitFrames) {
        if (s.frames == kVadInitFrames) {
            s.meanSE = s.meanE - 10;
            s.meanSLE = s.meanE - 12;
        }
        f.dSE = s.meanSE - f.energy;
        f.dSLE = s.meanSLE - f.lowEnergy;
        f.dSZC = s.meanSZC - f.crossings;
        vad = !(f.energy < kQuiet) && beyondALine(f);
        vad = smoothDecision<Arithmetic>(s, vad, f);
        updateMeans<Arithmetic>(s, f, lsf);
    }
    s.previousEnergy = f.energy;
    *pVad = storeDecision(s, vad);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
