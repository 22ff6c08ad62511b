// Discontinuous transmission in the encoder (`tx_dtx_handler`, `dtx_buffer`, `dtx_enc`; 3GPP TS 26.192, 26.193).
#include "amrwb/comfort_noise.h"
#include "amrwb/exports.h"
#include "amrwb/modes.h"
#include "core/checks.h"
#include "core/state_size.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kPairs = kDtxHistory * (kDtxHistory - 1) / 2;
constexpr int kEnergyIndex = 5, kDitherIndex = 6;

struct State {
    Vsp32s distance[kPairs];          // of the frames of the history: those of the newest to the others, the next one, ...
    Vsp32s distanceSum[kDtxHistory];  // of a frame to all others, the newest first
    Vsp16s isf[kDtxHistory][kIsfOrder], level[kDtxHistory];
    Vsp16s newest, hangover, elapsed, seed;
    Vsp16s unused[4];
};
static_assert(sizeof(State) == 432 && alignof(State) == 4);

// The distances after a frame that replaced the oldest one.
void updateDistances(State& s) {
    int pair = -1;
    for (int i = 0; i < kDtxHistory - 1; i++) {
        pair += kDtxHistory - 1 - i;
        s.distanceSum[i] = Sub_32s(s.distanceSum[i], s.distance[pair]);
    }
    for (int i = kDtxHistory - 1; i > 0; i--) s.distanceSum[i] = s.distanceSum[i - 1];
    s.distanceSum[0] = 0;
    // Every row but that of the newest frame becomes the next one without its last element.
    for (int n = 1, end = kPairs - 1; n < kDtxHistory - 1; end -= n++)
        for (int j = n; j > 0; j--) s.distance[end - j + 1] = s.distance[end - j - n];

    const Vsp16s* const isf = s.isf[s.newest & (kDtxHistory - 1)];
    for (int i = 1; i < kDtxHistory; i++) {
        const Vsp16s* const other = s.isf[(s.newest - i) & (kDtxHistory - 1)];
        Vsp32s sum = 0;
        for (int j = 0; j < kIsfOrder; j++) {
            const Vsp16s difference = Sub_16s(isf[j], other[j]);
            sum = mac_32s(sum, difference, difference);
        }
        s.distance[i - 1] = sum;
        s.distanceSum[0] = Add_32s(s.distanceSum[0], sum);
        s.distanceSum[i] = Add_32s(s.distanceSum[i], sum);
    }
}

// The mean of the history, in which the vector closest to the others replaces the two farthest away where these are far.
void typicalIsf(const State& s, Vsp16s* isf) {
    constexpr Vsp16s kInverseThreshold = 14564;  // 1 / 2.25
    int farthest = 0, closest = 0, second = -1;
    for (int i = 1; i < kDtxHistory; i++) {
        if (s.distanceSum[i] > s.distanceSum[farthest]) farthest = i;
        if (s.distanceSum[i] < s.distanceSum[closest]) closest = i;
    }
    Vsp32s secondSum = -kMax32;
    for (int i = 0; i < kDtxHistory; i++)
        if (s.distanceSum[i] > secondSum && i != farthest) {
            second = i;
            secondSum = s.distanceSum[i];
        }
    const int norm = norm_32s(s.distanceSum[farthest]);
    const Vsp32s least = shl_32s(s.distanceSum[closest], norm);
    const auto isFar = [norm, least](Vsp32s sum) {
        return Mul2_16s32s(round_32s(shl_32s(sum, norm)), kInverseThreshold) > least;
    };
    const bool replacesFarthest = isFar(s.distanceSum[farthest]), replacesSecond = isFar(secondSum);

    Vsp32s sums[kIsfOrder] = {};
    for (int i = 0; i < kDtxHistory; i++) {
        const bool replaced = i == farthest ? replacesFarthest : i == second && replacesSecond;
        const int taken = replaced ? closest : i;
        const Vsp16s* const vector = s.isf[(s.newest - taken) & (kDtxHistory - 1)];
        for (int j = 0; j < kIsfOrder; j++) sums[j] += vector[j];
    }
    for (int j = 0; j < kIsfOrder; j++) isf[j] = Vsp16s(sums[j] >> 3);
}

// Whether the noise changes so much that the decoder is to vary it.
bool isDithered(const State& s, Vsp16s levelSum) {
    constexpr Vsp16s kLevelThreshold = 180;
    Vsp32s distance = 0;
    for (const Vsp32s sum : s.distanceSum) distance = Add_32s(distance, sum);
    const Vsp16s mean = Vsp16s(levelSum >> 3);
    Vsp16s deviation = 0;
    for (const Vsp16s level : s.level) deviation = Add_16s(deviation, Abs_16s(Sub_16s(level, mean)));
    return distance >> 26 > 0 || deviation > kLevelThreshold;
}

}  // namespace

VspStatus vspsDTXGetSize_AMRWB_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsDTXInit_AMRWB_16s(void* pState) {
    constexpr Vsp16s kSeed = 21845;
    if (anyNull(pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    s = {};
    for (auto& isf : s.isf) resetIsf(isf);
    s.hangover = kDtxHangover;
    s.elapsed = kMax16;
    s.seed = kSeed;
    return vspStsNoErr;
}

VspStatus vspsDTXHandler_AMRWB_16s(Vsp16s vad, Vsp32s* pMode, Vsp16s* pHangover, void* pState) {
    if (anyNull(pMode, pHangover, pState)) return vspStsNullPtrErr;
    if ((vad != 0 && vad != 1) || !isWideMode(*pMode)) return vspStsRangeErr;
    State& s = *static_cast<State*>(pState);
    if (ownDtxFrame(s, vad != 0) != DtxFrame::speech) *pMode = kModeDtx;
    *pHangover = s.hangover;
    return vspStsNoErr;
}

VspStatus vspsDTXBuffer_AMRWB_16s(const Vsp16s* pISF, const Vsp16s* pExc, Vsp32s scale, Vsp32s mode, void* pState) {
    static constexpr Vsp16s kModeAdjustment[9] = {230, 179, 141, 128, 122, 115, 115, 115, 115};
    if (anyNull(pISF, pExc, pState)) return vspStsNullPtrErr;
    if (scale < 0 || scale > 8 || !isWideMode(mode)) return vspStsRangeErr;
    State& s = *static_cast<State*>(pState);
    s.newest = nextInHistory(s.newest);
    for (int i = 0; i < kIsfOrder; i++) s.isf[s.newest][i] = pISF[i];
    const auto unscaled = [scale](auto x) { return shr(x, scale); };
    const Vsp16s level = frameLogEnergy(dot(pExc, pExc, kWideFrame, unscaled, unscaled));
    s.level[s.newest] = Vsp16s(level - kModeAdjustment[wideModeIndex(mode)]);
    return vspStsNoErr;
}

VspStatus vspsDTXEncode_AMRWB_16s(Vsp16s* pISF, Vsp16s* pExc, Vsp16s* pIndex, void* pState) {
    if (anyNull(pISF, pExc, pIndex, pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    Vsp16s levelSum = 0;
    for (const Vsp16s level : s.level) levelSum = Add_16s(levelSum, level);
    updateDistances(s);

    Vsp16s isf[kIsfOrder];
    typicalIsf(s, isf);
    vspsISFQuantDTX_AMRWB_16s(isf, pISF, pIndex);
    const Vsp16s index = Vsp16s(Mul_16s(Add_16s(Vsp16s(levelSum >> 2), 512), 21504) >> 6);
    pIndex[kEnergyIndex] = index < 0 ? Vsp16s(0) : index > 63 ? Vsp16s(63) : index;
    pIndex[kDitherIndex] = isDithered(s, levelSum);

    const Vsp16s level = logEnergyOfIndex(pIndex[kEnergyIndex]);
    ownNoiseExcitation(Vsp16s(level >> 10), Vsp16s((level & 1023) << 5), &s.seed, pExc);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
