// The open-loop pitch search of GSM-AMR (3GPP TS 26.090 5.3), and what its voice activity detectors (26.094) hear from it.
#include "arithmetic/basic_ops.h"
#include "common/open_loop.h"
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "gsmamr/modes.h"
#include "gsmamr/open_loop_tables.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kPitMax = 143, kFrame = 160;
constexpr Vsp16s kNewestFlag = 0x4000;

// The memories of the search and of the detectors as the arguments have them.
enum { kOldLags = 0, kGainFlags = 5, kMedianLag = 7, kWeight = 8, kWeightFlag = 9 };
enum { kToneFlags = 0, kBestCorrHp = 1, kOldLag = 2, kOldLagCount = 3, kLtpFlag = 4 };

Vsp16s median(const Vsp16s* lags) {
    Vsp16s sorted[5];
    for (int i = 0; i < 5; i++) {
        int place = i;
        for (; place > 0 && sorted[place - 1] > lags[i]; place--) sorted[place] = sorted[place - 1];
        sorted[place] = lags[i];
    }
    return sorted[2];
}

bool isTone(const Candidate& c) {
    constexpr Vsp16s kShare = 21298;  // 0.65 in Q15
    const Vsp16s rounded = round_32s(c.energy);
    return rounded > 0 && Sub_32s(c.correlation, Mul2_32s(rounded * kShare)) > 0;
}

struct Found {
    Candidate best;
    bool tone;
};

// A part of the frame with its past, scaled, and its correlations.
class Search {
  public:
    Search(const Vsp16s* src, int len, int shortest) : shortest_(shortest) {
        const int n = kPitMax + len;
        const Vsp16s* const signal = src - kPitMax;
        shift_ = openLoopShift(energy(signal, n));
        shiftSignal(shift_, signal, scaled_, n);
        ownLagSums(scaled_ + kPitMax, len, shortest, kPitMax, sums_);
        scan_ = {scaled_ + kPitMax, len, kPitMax, sums_};
    }

    // At most rates: the best of three sections of lags.
    Found amongSections(bool is122) const {
        const Candidate candidates[3] = {scan_.largest(4 * shortest_, kPitMax),
                                         scan_.largest(2 * shortest_, 4 * shortest_ - 1),
                                         scan_.largest(shortest_, 2 * shortest_ - 1)};
        Vsp16s values[3];
        bool tone = false;
        for (int i = 0; i < 3; i++) {
            values[i] = is122 ? unscaled(candidates[i]) : Vsp16s(normalised(candidates[i]));
            tone |= isTone(candidates[i]);
        }
        return {candidates[favourShorter(values)], tone};
    }

    // At 10.2 kbit/s: short lags are preferred, and lags near the median of the last ones.
    Found weighted(const Vsp16s* mem) const {
        const int lags = kPitMax - shortest_ + 1;
        Vsp32s values[kPitMax];
        for (int i = 0; i < lags; i++) values[i] = mul_32s16s(sums_[i], corrweight[kLagWeights - 1 - i]);
        if (mem[kWeightFlag] != 0)
            for (int i = 0; i < lags; i++) {
                const int entry = kLagWeightCentre + kPitMax - i - mem[kMedianLag];
                values[i] = mul_32s16s(values[i], corrweight[entry < 0             ? 0
                                                             : entry < kLagWeights ? entry
                                                                                   : kLagWeights - 1]);
            }
        const Candidate best = scan_.candidate(kPitMax - ownLastMax(values, lags));
        return {best, isTone(best)};
    }

    // The largest correlation of the high-pass filtered signal over its energy, Q15.
    Vsp16s bestCorrHp() const {
        const Vsp16s* const x = scan_.current;
        Vsp32s delayed;
        ownLagSums(x, scan_.len, 1, 1, &delayed);
        const Vsp32s current = Cnvrt_64s32s(2 * energy(x, scan_.len));
        const Vsp32s whole = Abs_32s(Sub_32s(Mul2_32s(current), Mul2_32s(delayed)));
        const Vsp32s most = highPassed();
        const int a = norm_32s_Pos(most) - 1, b = norm_32s_Pos(whole);
        const int u = (a < 0 ? most >> 1 : most << a) >> 16, v = (whole << b) >> 16;
        const Vsp16s q = v == 0 ? Vsp16s(0) : Vsp16s(div_16s(u, v));
        return a < b ? ShiftL_16s(q, b - a) : Vsp16s(q >> (a - b));
    }

  private:
    // At 12.2 kbit/s: normalised, without the scaling of the signal.
    Vsp16s unscaled(const Candidate& c) const {
        const Vsp64s value = Mpy_32(c.correlation, ownInvSqrt(c.energy) * 2);
        return Vsp16s(Cnvrt_64s32s(Cnvrt_64s32s(shift_ > 0 ? value >> 3 : shift_ < 0 ? value * 8 : value) * 32768LL) >> 16);
    }

    Vsp32s highPassed() const {
        const int lags = kPitMax - shortest_ + 1;
        Vsp32s magnitudes = 0, most = 0;
        for (int i = 0; i < lags; i++) magnitudes |= sums_[i] ^ (sums_[i] >> 31);
        if (magnitudes < 1 << 29) {  // nothing leaves 32 bits
            for (int i = 1; i < lags - 1; i++) {
                const Vsp32s value = 2 * sums_[i] - sums_[i - 1] - sums_[i + 1], magnitude = value < 0 ? -value : value;
                most = magnitude > most ? magnitude : most;
            }
            return most;
        }
        for (int i = 1; i < lags - 1; i++) {
            const Vsp32s value = Abs_32s(Sub_32s(Sub_32s(Mul2_32s(sums_[i]), sums_[i - 1]), sums_[i + 1]));
            most = value > most ? value : most;
        }
        return most;
    }

    const int shortest_;
    int shift_;
    Vsp16s scaled_[kPitMax + kFrame];
    Vsp32s sums_[kPitMax];
    LagScan scan_;
};

// At 10.2 kbit/s: how far the next search shall keep to the lags so far.
void rememberLag(const Candidate& best, Vsp16s* gainFlag, Vsp16s* mem) {
    constexpr Vsp16s kPeriodic = 13107, kForget = 29491, kRely = 9830;  // 0.4, 0.9 and 0.3 in Q15
    *gainFlag = round_32s(Sub_32s(best.correlation, Mul2_32s(round_32s(best.energy) * kPeriodic)));
    if (*gainFlag > 0) {
        for (int i = 4; i > 0; i--) mem[kOldLags + i] = mem[kOldLags + i - 1];
        mem[kOldLags] = Vsp16s(best.lag);
        mem[kMedianLag] = median(mem + kOldLags);
        mem[kWeight] = kMax16;
    } else {
        mem[kMedianLag] = Vsp16s(best.lag);
        mem[kWeight] = Vsp16s((mem[kWeight] * kForget) >> 15);
    }
    mem[kWeightFlag] = mem[kWeight] >= kRely;
}

// Option 1: has the lag hardly changed?
void rememberPitch(const Vsp16s* lags, Vsp16s* vadMem, Vsp16s* pitchFlags) {
    int count = 0;
    for (int i = 0; i < 2; i++) {
        const int change = vadMem[kOldLag] - lags[i];
        count += -4 < change && change < 4;
        vadMem[kOldLag] = lags[i];
    }
    *pitchFlags = Vsp16s(*pitchFlags >> 1 | (vadMem[kOldLagCount] + count >= 4 ? kNewestFlag : 0));
    vadMem[kOldLagCount] = Vsp16s(count);
}

}  // namespace

VspStatus vspsOpenLoopPitchSearch_GSMAMR_16s(const Vsp16s* pSrc, Vsp32s mode, Vsp32s vad, Vsp16s* pMem, Vsp16s* pVadMem,
                                             Vsp16s* pPitchFlags, Vsp16s* pLag) {
    if (anyNull(pSrc, pMem, pLag)) return vspStsNullPtrErr;
    if (!isSpeechMode(mode)) return vspStsRangeErr;
    if (vad < 0 || vad > 2) return vspStsRangeErr;
    if (mode == kMode102 && (pMem[kMedianLag] < 17 || pMem[kMedianLag] > 144)) return vspStsRangeErr;
    if (vad != 0 && pVadMem == nullptr) return vspStsNullPtrErr;
    if (vad == 1 && pPitchFlags == nullptr) return vspStsNullPtrErr;

    const bool once = mode <= kMode515;
    const int searches = once ? 1 : 2, len = kFrame / searches, shortest = mode == kMode122 ? 18 : 20;
    Vsp16s lags[2];
    Vsp32s correlation = 0, delayedEnergy = 0;
    for (int i = 0; i < searches; i++) {
        const Search search(pSrc + i * len, len, shortest);
        const auto [best, tone] = mode == kMode102 ? search.weighted(pMem) : search.amongSections(mode == kMode122);
        lags[i] = Vsp16s(best.lag);
        if (mode == kMode102)
            rememberLag(best, pMem + kGainFlags + i, pMem);
        else
            pMem[kGainFlags] = pMem[kGainFlags + 1] = 0;
        if (vad == 1) {
            const int flags = once ? pVadMem[kToneFlags] >> 2 | kNewestFlag >> 1 : pVadMem[kToneFlags] >> 1;
            pVadMem[kToneFlags] = Vsp16s(flags | (tone ? kNewestFlag : 0));
            if (i == searches - 1) pVadMem[kBestCorrHp] = search.bestCorrHp();
        }
        correlation = Add_32s(correlation, best.correlation);
        delayedEnergy = Add_32s(delayedEnergy, best.energy);
    }
    if (once) lags[1] = lags[0];
    if (vad == 1) rememberPitch(lags, pVadMem, pPitchFlags);
    if (vad == 2) {
        const Vsp16s periodic = once ? 18022 : mode == kMode102 ? 19660 : 21299;  // 0.55, 0.6, 0.65 in Q15
        pVadMem[kLtpFlag] = correlation > mul_32s16s(delayedEnergy, periodic);
    }
    pLag[0] = lags[0];
    pLag[1] = lags[1];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
