// Voice activity detector (G.729 B.3).
#include "g729/vad.h"

#include "core/checks.h"
#include "core/state_size.h"
#include "g729/exports.h"
#include "g729/silence_tables.h"

namespace vsp::VSP_LEVEL {

namespace {

struct State : VadMemory<Vsp16s, Vsp16s> {
    Vsp16s reserved;
};
static_assert(sizeof(State) == 88);

using Features = VadFeatures<Vsp16s>;

constexpr VadWeights<Vsp16s> kWeightsOfUpdates[] = {
    {20, {24576, 8192}, {26214, 6554}, {19661, 13017}}, {30, {31130, 1638}, {30147, 2621}, {21299, 11469}},
    {40, {31785, 983}, {30802, 1966}, {22938, 9830}},   {50, {32440, 328}, {31457, 1311}, {24576, 8192}},
    {60, {32604, 164}, {32440, 328}, {24576, 8192}},    {0, {32604, 164}, {32702, 66}, {24576, 8192}},
};

struct Arithmetic {
    static constexpr Vsp16s kHighest = kMax16;
    static constexpr int kEarlyMinima = kVadMinima;
    static constexpr Vsp16s kSpeechReflection = 19661, kNoiseReflection = 24576;  // 0.6 and 0.75
    static constexpr Vsp16s kNoiseDistortion = 83;
    static constexpr Vsp16s kThreeDecibels = 614;
    static constexpr const VadWeights<Vsp16s>* kWeights = kWeightsOfUpdates;

    VSP_INLINE Vsp16s next(Vsp16s count) { return Add_16s(count, 1); }
    VSP_INLINE bool wellAboveNoise(const State&, const Features& f) {
        return Add_16s(f.dSE, 410) < 0 && f.energy > kVadQuiet;
    }
    VSP_INLINE bool similar(Vsp16s previous, Vsp16s energy) { return Abs_16s(Sub_16s(previous, energy)) <= kThreeDecibels; }
    VSP_INLINE bool rises(Vsp16s previous, Vsp16s energy) { return Sub_16s(energy, previous) > kThreeDecibels; }
    VSP_INLINE bool nearNoise(Vsp16s energy, Vsp16s mean) { return Sub_16s(energy, kThreeDecibels) < mean; }
    VSP_INLINE bool belowMinimum(const State& s, const Features& f) {
        return s.frames > kVadMinimumFrames &&
               ((s.meanSE < s.min && f.spectralDistortion < kNoiseDistortion) || Sub_16s(s.meanSE, s.min) > 2048);
    }
    VSP_INLINE Vsp16s weigh(const Vsp16s (&weights)[2], Vsp16s mean, Vsp16s value) {
        return high_32s(mac_32s(Mul2_16s32s(weights[0], mean), weights[1], value));
    }
};

// A line in the plane of two features: ((2 a x + 2 b c) >> shift) plus y, which stands in the high half or has the weight
// d.
struct Line {
    Vsp16s Features::*x;
    Vsp16s a, b, c;
    int shift;
    Vsp16s Features::*y;
    Vsp16s d;  // 0: y in the high half
    bool speechAbove;
};
constexpr auto kSD = &Features::spectralDistortion;
constexpr auto kSZC = &Features::dSZC, kSE = &Features::dSE, kSLE = &Features::dSLE;
constexpr Line kLines[] = {
    {kSZC, -14680, 8192, -28521, 8, kSD, 0, true},   {kSZC, 19065, 8192, -19446, 7, kSD, 0, true},
    {kSZC, 20480, 8192, 16384, 2, kSE, 0, false},    {kSZC, -16384, 8192, 19660, 2, kSE, 0, false},
    {kSE, 32767, 1024, 30802, 0, nullptr, 0, false}, {kSD, -28160, 64, 19988, 0, kSE, 512, false},
    {kSD, 32767, 32, -30199, 0, nullptr, 0, true},   {kSZC, -20480, 8192, 22938, 2, kSE, 0, false},
    {kSZC, 23831, 4096, 31576, 2, kSE, 0, false},    {kSE, 32767, 2048, 17367, 0, nullptr, 0, false},
    {kSD, -22400, 32, 25395, 0, kSLE, 256, false},   {kSE, -30427, 256, -29959, 0, kSLE, 0, true},
    {kSE, -23406, 512, 28087, 0, kSLE, 0, false},    {kSE, 24576, 1024, 29491, 0, kSLE, 16384, false},
};

// MakeDec: whether the features lie beyond one of the lines.
bool beyondALine(const Features& f) {
    for (const Line& line : kLines) {
        Vsp32s sum = mac_32s(Mul2_16s32s(f.*line.x, line.a), line.b, line.c) >> line.shift;
        if (line.y != nullptr) sum = line.d == 0 ? Add_32s(sum, f.*line.y * 0x10000) : mac_32s(sum, f.*line.y, line.d);
        if (line.speechAbove ? sum > 0 : sum < 0) return true;
    }
    return false;
}

Vsp16s lowBandEnergy(const Vsp32s* autocorr, Vsp16s exponent) {
    Vsp32s sum = 0;
    for (int i = 1; i < kVadLags; i++) sum = mac_32s(sum, high_32s(autocorr[i]), lbf_corr[i]);
    return vadEnergy(mac_32s(Mul2_32s(sum), high_32s(autocorr[0]), lbf_corr[0]), exponent);
}

Vsp16s crossings(const Vsp16s* speech) {
    int count = 0;
    for (int i = kVadFirstCrossing; i <= kVadLastCrossing; i++) count += speech[i - 1] * speech[i] < 0;
    return sat_16s(count * 410);
}

Vsp16s distortion(const Vsp16s* lsf, const Vsp16s* mean) {
    Vsp32s sum = 0;
    for (int i = 0; i < kLspOrder; i++) {
        const Vsp16s difference = Sub_16s(lsf[i], mean[i]);
        sum = mac_32s(sum, difference, difference);
    }
    return high_32s(sum);
}

// Adds a 32nd of the value to the mean of the first frames.
Vsp16s accumulate(Vsp16s mean, Vsp16s value) { return high_32s(mac_32s(mean * 0x10000, value, 1024)); }

// The decision of one of the first frames, which make up the means.
int firstFrames(State& s, const Features& f, const Vsp16s* lsf) {
    if (f.energy < kVadQuiet) {
        s.lessCount = Add_16s(s.lessCount, 1);
        return 0;
    }
    s.meanE = accumulate(s.meanE, f.energy);
    s.meanSZC = accumulate(s.meanSZC, f.crossings);
    for (int i = 0; i < kLspOrder; i++) s.meanLSF[i] = accumulate(s.meanLSF[i], lsf[i]);
    return 1;
}

// Makes up for the quiet ones of the first frames.
void finishMeans(State& s) {
    const int quiet = s.lessCount < 0 ? 0 : s.lessCount > kVadInitFrames ? kVadInitFrames : s.lessCount;
    const auto scale = [quiet](Vsp16s mean) {
        return high_32s(shl_32s(Mul2_16s32s(mean, factor_fx[quiet]), shift_fx[quiet]));
    };
    s.meanE = scale(s.meanE);
    s.meanSZC = scale(s.meanSZC);
    for (Vsp16s& mean : s.meanLSF) mean = scale(mean);
    s.meanSE = Sub_16s(s.meanE, 2048);
    s.meanSLE = Sub_16s(s.meanE, 2458);
}

}  // namespace

VspStatus vspsVADGetSize_G729B_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsVADInit_G729B_16s(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    startVad<Arithmetic>(*static_cast<State*>(pState));
    return vspStsNoErr;
}

VspStatus vspsVAD_G729B_16s(const Vsp32s* pAutoCorr, Vsp16s expR0, Vsp16s rc1, const Vsp16s* pLSF, const Vsp16s* pSpeech,
                            Vsp16s* pVad, void* pState) {
    if (anyNull(pAutoCorr, pLSF, pSpeech, pVad, pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    countVadFrame(s);
    Features f{};
    f.energy = vadEnergy(pAutoCorr[0] & ~1, expR0);
    f.lowEnergy = lowBandEnergy(pAutoCorr, expR0);
    f.spectralDistortion = distortion(pLSF, s.meanLSF);
    f.crossings = crossings(pSpeech);
    f.rc1 = rc1;
    trackMinimum<Arithmetic>(s, f.energy);
    int vad = 0;
    if (s.frames <= kVadInitFrames) vad = firstFrames(s, f, pLSF);
    if (s.frames >= kVadInitFrames) {
        if (s.frames == kVadInitFrames) finishMeans(s);
        f.dSE = Sub_16s(s.meanSE, f.energy);
        f.dSLE = Sub_16s(s.meanSLE, f.lowEnergy);
        f.dSZC = Sub_16s(s.meanSZC, f.crossings);
        vad = f.energy >= kVadQuiet && beyondALine(f);
        vad = smoothDecision<Arithmetic>(s, vad, f);
        updateMeans<Arithmetic>(s, f, pLSF);
    }
    s.previousEnergy = f.energy;
    *pVad = Vsp16s(storeDecision(s, vad));
    return vspStsNoErr;
}

VspStatus vspsVADUpdate_G729B_16s(Vsp16s vad, void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (vad != 0 && vad != 1) return vspStsRangeErr;
    static_cast<State*>(pState)->pastVad = vad;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
