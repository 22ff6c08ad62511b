// The searches of the codebooks, sample by sample with the operators of the standard. Arguments are taken as valid.
#include "g723/scalar_g723.h"

#include <algorithm>

#include "arithmetic/standard_ops.h"
#include "g723/gain_tables.h"

namespace {

using namespace vsp;

constexpr int kLen = 60;

template <int kEntries>
Vsp16s factor(const g723::PitchGains<kEntries>& codebook, int entry, int i) {
    return codebook.factors[i / 2][entry][i % 2];
}

VspStatus adaptiveCodebookCorr(const Vsp16s* target, const Vsp16s* h, const Vsp16s* past, Vsp16s lag, Vsp32s subframe,
                               Vsp16s* dst) {
    const int lags = subframe % 2 == 0 ? 3 : 4;
    Vsp32s values[80], largest = 0;
    for (int k = 0; k < lags; k++) {
        const int l = lag - 1 + k;
        Vsp16s residual[64], f[5][kLen];
        for (int i = 0; i < 64; i++) residual[i] = i < 2 ? past[145 - l - 2 + i] : past[145 - l + (i - 2) % l];
        for (int n = 0; n < kLen; n++) {
            Vsp32s sum = 0;
            for (int j = 0; j <= n; j++) sum = mac_32s(sum, residual[4 + j], h[n - j]);
            f[4][n] = round_32s(sum);
        }
        for (int i = 3; i >= 0; i--) {
            f[i][0] = mulRound_16s(residual[i], 0x2000);
            for (int n = 1; n < kLen; n++) f[i][n] = round_32s(mac_32s(f[i + 1][n - 1] * 65536, residual[i], h[n]));
        }
        Vsp32s* value = values + 20 * k;
        const auto single = [](const Vsp16s* a, const Vsp16s* b) {
            Vsp32s sum = 0;
            for (int n = 0; n < kLen; n++) sum = Add_32s(sum, Mul2_16s32s(a[n], b[n]) >> 1);
            return sum;
        };
        for (const auto& x : f) *value++ = Mul2_32s(single(target, x));
        for (const auto& x : f) *value++ = dotSaturating(x, x, kLen);
        for (int i = 1; i < 5; i++)
            for (int j = 0; j < i; j++) *value++ = Mul4_32s(single(f[i], f[j]));
    }
    for (int i = 0; i < 20 * lags; i++) largest = std::max(largest, Abs_32s(values[i]));
    for (int i = 0; i < 20 * lags; i++) dst[i] = round_32s(shl_32s(values[i], norm_32s(largest)));
    return vspStsNoErr;
}

VspStatus gainQuant(const Vsp16s* corr, Vsp16s lag, Vsp32s subframe, Vsp16s taming, Vsp32s rate, Vsp16s* offset,
                    Vsp16s* index) {
    Vsp32s largest = 0;
    *offset = 1;
    *index = 0;
    for (int k = 0; k < (subframe % 2 == 0 ? 3 : 4); k++) {
        const bool small = rate == 4 && (subframe % 2 == 0 ? lag - 1 + k : lag) < 58;
        const int entries = small ? std::min(85, 51 + 4 * taming) : std::min(170, 93 + 8 * taming);
        for (int j = 0; j < entries; j++) {
            Vsp32s sum = 0;
            for (int i = 0; i < 20; i++)
                sum = Add_32s(
                    sum, corr[20 * k + i] * (small ? factor(g723::pitchGains85, j, i) : factor(g723::pitchGains170, j, i)));
            if (sum <= largest) continue;
            largest = sum;
            *offset = Vsp16s(k);
            *index = Vsp16s(j);
        }
    }
    return vspStsNoErr;
}

// For a lag without trains; the positions are not numbered.
VspStatus multipulse(const Vsp16s* target, const Vsp16s* h, Vsp16s, Vsp32s subframe, Vsp16s* code, Vsp32s* pos,
                     Vsp16s* index) {
    const int pulses = subframe % 2 == 0 ? 6 : 5;
    Vsp16s half[kLen], r[kLen];
    for (int n = 0; n < kLen; n++) half[n] = Vsp16s(h[n] >> 1);
    const int norm = norm_32s(dotSaturating(half, half, kLen));
    Vsp32s d[kLen], most = -0x40000000;
    for (int k = 0; k < kLen; k++) {
        r[k] = round_32s(shl_32s(dotSaturating(half, half + k, kLen - k), norm));
        d[k] = shl_32s(dotSaturating(target + k, h, kLen - k), norm - 4);
    }
    for (int grid = 0; grid < 2; grid++) {
        int first = grid, middle = 22;
        for (int n = grid; n < kLen; n += 2)
            if (Abs_32s(d[n]) >= Abs_32s(d[first])) first = n;
        Vsp32s least = 0x40000000;
        for (int i = 22; i >= 2; i--) {
            const Vsp32s difference = Abs_32s(Sub_32s(Mul2_16s32s(g723::codeGains[i], r[0]), Abs_32s(d[first])));
            if (difference >= least) continue;
            least = difference;
            middle = i;
        }
        for (int g = middle - 2; g <= middle + 1; g++) {
            Vsp32s rest[kLen];
            Vsp16s tried[kLen] = {};
            std::copy_n(d, kLen, rest);
            for (int k = 0, place = first;;) {
                tried[place] = Vsp16s(rest[place] >= 0 ? g723::codeGains[g] : -g723::codeGains[g]);
                if (++k == pulses) break;
                int next = -1;
                for (int n = grid; n < kLen; n += 2) {
                    if (tried[n] != 0) continue;
                    rest[n] = msu_32s(rest[n], tried[place], r[n < place ? place - n : n - place]);
                    if (next < 0 || Abs_32s(rest[n]) > Abs_32s(rest[next])) next = n;
                }
                place = next;
            }
            Vsp32s sum = 0;
            for (int n = 0; n < kLen; n++) {
                Vsp32s filtered = 0;
                for (int j = 0; j <= n; j++) filtered = mac_32s(filtered, tried[j], h[n - j]);
                const Vsp16s y = high_32s(Mul4_32s(filtered));
                sum = Sub_32s(mac_32s(sum, target[n], y), Mul2_16s32s(y, y) >> 1);
            }
            if (sum <= most) continue;
            most = sum;
            std::copy_n(tried, kLen, code);
            index[0] = Vsp16s(g);
            index[1] = Vsp16s(grid);
        }
    }
    *pos = 0;
    return vspStsNoErr;
}

}  // namespace

void bench::addScalarG723(Api& api) {
    api.vspsAdaptiveCodebookCorr_G723_16s = adaptiveCodebookCorr;
    api.vspsGainQuant_G723_16s = gainQuant;
    api.vspsFixedCodebookSearch_MLQ_G723_16s = multipulse;
}
