// The detectors and their transform as the tests define them, and the open-loop search sample by sample. Arguments are
// taken as valid.
#include "gsmamr/scalar_gsmamr.h"

#include <algorithm>
#include <cmath>

#include "arithmetic/basic_ops.h"
#include "gsmamr/definitions.h"

namespace {

using namespace vsp;

VspStatus vad1(const Vsp16s* src, VspGSMAMRVad1State* state, Vsp16s* flag, Vsp16s bestCorrHp, Vsp16s toneFlags) {
    *flag = plain::vad1(src, *state, bestCorrHp, toneFlags);
    return vspStsNoErr;
}

VspStatus vad2(const Vsp16s* src, VspGSMAMRVad2State* state, Vsp16s* flag, Vsp32s ltpFlag) {
    *flag = plain::vad2(src, *state, ltpFlag);
    return vspStsNoErr;
}

VspStatus fft128(Vsp16s* srcDst) {
    plain::fft128(srcDst);
    return vspStsNoErr;
}

// At 5.9 to 7.95 kbit/s with detector 1; what is divided by a root or an energy is not rounded as in the standard.
VspStatus openLoop(const Vsp16s* src, Vsp32s, Vsp32s, Vsp16s* mem, Vsp16s* vadMem, Vsp16s* pitchFlags, Vsp16s* lags) {
    constexpr int kLongest = 143, kHalf = 80, kSignal = kLongest + kHalf;
    const int countBefore = vadMem[3];
    vadMem[3] = mem[5] = mem[6] = 0;
    for (int half = 0; half < 2; half++) {
        Vsp16s s[kSignal];
        std::copy_n(src + half * kHalf - kLongest, kSignal, s);
        const auto product = [&s](int before, int lag) {
            Vsp32s sum = 0;
            for (int n = kLongest; n < kSignal; n++) sum = mac_32s(sum, s[n - before], s[n - lag]);
            return sum;
        };
        Vsp32s energy = 0, c[kLongest + 1];
        for (const Vsp16s x : s) energy = mac_32s(energy, x, x);
        for (Vsp16s& x : s) x = energy == kMax32 ? Vsp16s(x >> 3) : energy < 1 << 20 ? ShiftL_16s(x, 3) : x;
        for (int lag = 20; lag <= kLongest; lag++) c[lag] = product(0, lag);

        bool tone = false;
        double largest = 0;
        for (const auto& [from, to] : {std::pair(kLongest, 80), std::pair(79, 40), std::pair(39, 20)}) {
            int best = from;
            for (int lag = from; lag >= to; lag--) best = c[lag] >= c[best] ? lag : best;
            const Vsp32s e = product(best, best);
            tone = tone || (round_32s(e) > 0 && Sub_32s(c[best], Mul2_32s(round_32s(e) * 21298)) > 0);
            const double value = e > 0 ? c[best] / std::sqrt(double(e)) : 0;
            if (from == kLongest || 0.85 * largest < value) largest = value, lags[half] = Vsp16s(best);
        }
        vadMem[0] = Vsp16s(vadMem[0] >> 1 | (tone ? 0x4000 : 0));
        vadMem[3] = Vsp16s(vadMem[3] + (std::abs(vadMem[2] - lags[half]) < 4));
        vadMem[2] = lags[half];
        if (half == 0) continue;
        Vsp32s most = 0;
        for (int i = 21; i < kLongest; i++)
            most = std::max(most, Abs_32s(Sub_32s(Sub_32s(Mul2_32s(c[i]), c[i + 1]), c[i - 1])));
        const double whole = Abs_32s(Sub_32s(Mul2_32s(product(0, 0)), Mul2_32s(product(0, 1))));
        vadMem[1] = Vsp16s(whole == 0 ? 0 : std::min(32767.0, 32768 * (most / whole)));
    }
    *pitchFlags = Vsp16s(*pitchFlags >> 1 | (countBefore + vadMem[3] >= 4 ? 0x4000 : 0));
    return vspStsNoErr;
}

}  // namespace

void bench::addScalarGsmamr(vsp::Api& api) {
    api.vspsOpenLoopPitchSearch_GSMAMR_16s = openLoop;
    api.vspsVAD1_GSMAMR_16s = vad1;
    api.vspsVAD2_GSMAMR_16s = vad2;
    api.vspsFFTFwd_RToPerm_GSMAMR_16s_I = fft128;
}
