// The detectors and their transform as the standard's reference works: one operation of one sample after the other, with
// every saturation spelled out. The tests compare the library with it; the benchmarks take it as the scalar definition.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "arithmetic/basic_ops.h"
#include "gsmamr/tables.h"
#include "vspsc/gsmamr.h"

namespace vsp::plain {

using I16 = Vsp16s;
using I32 = Vsp32s;

inline I16 add(I16 a, I16 b) { return sat_16s(a + b); }
inline I16 sub(I16 a, I16 b) { return sat_16s(a - b); }
inline I16 mult(I16 a, I16 b) { return sat_16s((a * b) >> 15); }
inline I16 multR(I16 a, I16 b) { return sat_16s((a * b + 0x4000) >> 15); }
inline I32 lMult(I16 a, I16 b) { return Mul2_32s(a * b); }
inline I32 lMac(I32 sum, I16 a, I16 b) { return Add_32s(sum, lMult(a, b)); }
inline I32 lMsu(I32 sum, I16 a, I16 b) { return Sub_32s(sum, lMult(a, b)); }
inline I16 round16(I32 a) { return I16(Add_32s(a, 0x8000) >> 16); }
inline I32 lShl(I32 a, int n) { return Cnvrt_64s32s(Vsp64s(a) << n); }
inline I16 shl(I16 a, int n) { return n < 0 ? I16(a >> std::min(-n, 15)) : sat_16s(I32(a) << std::min(n, 15)); }
inline I16 divS(I16 a, I16 b) { return a <= 0 ? I16(0) : a >= b ? I16(32767) : I16(32768 * a / b); }
inline I32 mpy32x16(I32 a, I16 c) { return lMac(lMult(I16(a >> 16), c), mult(I16((a >> 1) & 0x7FFF), c), 1); }

inline int normS(I16 a) {
    const int magnitude = a < 0 ? ~a : a;
    if (a == 0) return 0;
    int n = 0;
    while (n < 15 && (magnitude << (n + 1)) <= 32767) n++;
    return n;
}

// --- The transform -----------------------------------------------------------------------------------------------------

struct Factors {
    I16 c[64], s[64];
    Factors() {
        for (int k = 0; k < 64; k++) {
            c[k] = I16(std::min(32767L, std::lround(32768 * std::cos(M_PI * k / 64))));
            s[k] = I16(-std::lround(32768 * std::sin(M_PI * k / 64)));
        }
    }
};

inline void fft128(I16* x) {
    static const Factors f;
    I16 re[64], im[64];
    for (int n = 0; n < 64; n++) {
        int reversed = 0;
        for (int bit = 0; bit < 6; bit++) reversed |= ((n >> bit) & 1) << (5 - bit);
        re[reversed] = x[2 * n];
        im[reversed] = x[2 * n + 1];
    }
    for (int h = 1; h < 64; h *= 2)
        for (int group = 0; group < 64; group += 2 * h)
            for (int j = 0; j < h; j++) {
                const int t = group + j, u = t + h, k = 64 * j / h;
                const I16 p = round16(lMsu(lMult(re[u], f.c[k]), im[u], f.s[k]));
                const I16 q = round16(lMac(lMult(im[u], f.c[k]), re[u], f.s[k]));
                re[u] = I16(sub(re[t], p) >> 1);
                im[u] = I16(sub(im[t], q) >> 1);
                re[t] = I16(add(re[t], p) >> 1);
                im[t] = I16(add(im[t], q) >> 1);
            }
    x[0] = add(re[0], im[0]);
    x[1] = sub(re[0], im[0]);
    for (int k = 1; k <= 32; k++) {
        const int m = 64 - k;
        const I16 sr = add(re[k], re[m]), di = sub(im[k], im[m]), si = add(im[k], im[m]), dr = sub(re[m], re[k]);
        const I32 highSr = sr * 65536, highDi = di * 65536;
        x[2 * k] = round16(lMsu(lMac(highSr, si, f.c[k]), dr, f.s[k]) >> 1);
        x[2 * k + 1] = round16(lMac(lMac(highDi, dr, f.c[k]), si, f.s[k]) >> 1);
        x[2 * m] = round16(lMac(lMac(highSr, si, f.c[m]), dr, f.s[m]) >> 1);
        x[2 * m + 1] = round16(lMac(lMsu(Sub_32s(0, highDi), dr, f.c[m]), si, f.s[m]) >> 1);
    }
}

// --- Option 1 ----------------------------------------------------------------------------------------------------------

inline I16 allPass(I16 c, I16 x, I16& memory) {
    const I16 t = sub(x, mult(c, memory)), y = add(memory, mult(c, t));
    memory = t;
    return y;
}

inline void pair5(I16& even, I16& odd, I16 memory[2], int halve) {
    const I16 a = allPass(21955, even, memory[0]), b = allPass(6390, odd, memory[1]);
    even = I16(add(a, b) >> halve);
    odd = I16(sub(a, b) >> halve);
}

inline void pair3(I16& in0, I16& in1, I16& memory) {
    const I16 y = allPass(13363, in1, memory), x = in0;
    in0 = I16(add(x, y) >> 1);
    in1 = I16(sub(x, y) >> 1);
}

inline void filterBank(const I16* frame, VspGSMAMRVad1State& s, I16 level[9]) {
    I16 w[160];
    for (int i = 0; i < 160; i++) w[i] = I16(frame[i] >> 2);
    for (int i = 0; i < 160; i += 2) pair5(w[i], w[i + 1], s.filterMem5[0], 0);
    for (int i = 0; i < 160; i += 4) {
        pair5(w[i], w[i + 2], s.filterMem5[1], 1);
        pair5(w[i + 1], w[i + 3], s.filterMem5[2], 1);
    }
    for (int i = 0; i < 160; i += 8) {
        pair3(w[i], w[i + 4], s.filterMem3[0]);
        pair3(w[i + 2], w[i + 6], s.filterMem3[1]);
        pair3(w[i + 3], w[i + 7], s.filterMem3[4]);
    }
    for (int i = 0; i < 160; i += 16) {
        pair3(w[i], w[i + 8], s.filterMem3[2]);
        pair3(w[i + 4], w[i + 12], s.filterMem3[3]);
    }
    struct Band {
        int count1, count2, step, start, scale;
    };
    static constexpr Band kBands[9] = {{8, 10, 16, 0, 16}, {8, 10, 16, 8, 16}, {8, 10, 16, 12, 16},
                                       {8, 10, 16, 4, 16}, {16, 20, 8, 6, 16}, {16, 20, 8, 2, 16},
                                       {16, 20, 8, 3, 16}, {16, 20, 8, 7, 16}, {32, 40, 4, 1, 15}};
    for (int b = 0; b < 9; b++) {
        const Band& band = kBands[b];
        const auto magnitude = [&](int i) { return I16(std::min(32767, std::abs(int(w[band.step * i + band.start])))); };
        I32 late = 0;
        for (int i = band.count1; i < band.count2; i++) late = lMac(late, magnitude(i), 1);
        I32 all = Add_32s(late, lShl(s.subLevel[b], 16 - band.scale));
        s.subLevel[b] = I16(lShl(late, band.scale) >> 16);
        for (int i = 0; i < band.count1; i++) all = lMac(all, magnitude(i), 1);
        level[b] = I16(lShl(all, band.scale) >> 16);
    }
}

inline bool stationary(const VspGSMAMRVad1State& s, const I16 level[9]) {
    I16 ratio = 0;
    for (int b = 0; b < 9; b++) {
        const I16 high = std::max<I16>(std::max(level[b], s.aveLevel[b]), 184);
        const I16 low = std::max<I16>(std::min(level[b], s.aveLevel[b]), 184);
        const int e = normS(low);
        ratio = add(ratio, I16(divS(I16(high >> 1), shl(low, e)) >> (8 - e)));
    }
    return ratio <= 1000;
}

inline void updateNoise(VspGSMAMRVad1State& s, const I16 level[9], I16 toneFlags) {
    const bool speech = (s.vadReg & 0x4000) != 0;
    if (s.complexWarning != 0) s.statCount = std::max<I16>(s.statCount, 5);
    if ((s.pitchFlags & 0x6000) == 0x6000 || (toneFlags & 0x7C00) == 0x7C00 || (s.vadReg & 0x7F80) == 0 ||
        !stationary(s, level))
        s.statCount = 20;
    else if (speech && s.statCount != 0)
        s.statCount = sub(s.statCount, 1);
    const I16 alpha = I16(s.statCount == 20 ? 32767 : speech ? 3276 : 16383);
    I16 up = 0, down = 1638, step = 0;
    if ((s.vadReg & 0x7800) == 0 && (s.pitchFlags & 0x7800) == 0 && s.complexHangCount == 0)
        up = 1638, down = 2097, step = 2;
    else if (s.statCount == 0 && s.complexHangCount == 0)
        up = 491, down = 1867, step = 2;
    for (int b = 0; b < 9; b++) {
        s.aveLevel[b] = add(s.aveLevel[b], multR(alpha, sub(level[b], s.aveLevel[b])));
        const I16 d = sub(s.oldLevel[b], s.bckrEst[b]);
        const I16 moved = add(s.bckrEst[b], d < 0 ? sub(multR(down, d), 2) : add(multR(up, d), step));
        s.bckrEst[b] = std::clamp<I16>(moved, 40, 16000);
        s.oldLevel[b] = level[b];
    }
}

inline I16 decide1(VspGSMAMRVad1State& s, const I16 level[9], I32 power, I16 bestCorrHp, I16 toneFlags) {
    I32 sum = 0, noise = 0;
    for (int b = 0; b < 9; b++) {
        const int e = normS(s.bckrEst[b]);
        const I16 normalised = shl(s.bckrEst[b], e);
        const I16 q = shl(normalised > 0 ? divS(I16(level[b] >> 1), normalised) : I16(32767), e - 5);
        sum = lMac(sum, q, q);
        noise += s.bckrEst[b];
    }
    const I16 noiseLevel = I16(noise >> 3);
    const bool lowPower = power < 15000;
    s.vadReg = I16(s.vadReg >> 1);
    if (mult(I16(lShl(sum, 6) >> 16), 3641) > std::max<I16>(720, add(mult(noiseLevel, -2808), 1260))) s.vadReg |= 0x4000;

    const I16 alpha = I16(s.corrHpFast < 19660 ? 2621 : bestCorrHp < s.corrHpFast ? 6553 : 655);
    s.corrHpFast = round16(lMac(lMsu(s.corrHpFast * 65536, alpha, s.corrHpFast), alpha, bestCorrHp));
    if (s.corrHpFast < 13106 || lowPower) s.corrHpFast = 13106;
    s.complexHigh = I16(s.complexHigh >> 1);
    s.complexLow = I16(s.complexLow >> 1);
    if (!lowPower && s.corrHpFast > 19660) s.complexHigh |= 0x4000;
    if (!lowPower && s.corrHpFast > 16383) s.complexLow |= 0x4000;
    s.complexHangTimer = s.corrHpFast > 22936 ? add(s.complexHangTimer, 1) : I16(0);
    s.complexWarning = (s.complexHigh & 0x7F80) == 0x7F80 || (s.complexLow & 0x7FFF) == 0x7FFF;
    updateNoise(s, level, toneFlags);

    if (lowPower) {
        s.burstCount = s.hangCount = s.complexHangCount = s.complexHangTimer = 0;
        return 0;
    }
    if (s.complexHangTimer > 100) s.complexHangCount = std::max<I16>(s.complexHangCount, 250);
    if (s.complexHangCount != 0) {
        s.burstCount = 4;
        s.complexHangCount = sub(s.complexHangCount, 1);
        return 1;
    }
    if ((s.vadReg & 0x3FF0) == 0 && s.corrHpFast > 21298) return 1;
    if ((s.vadReg & 0x4000) != 0) {
        s.burstCount = add(s.burstCount, 1);
        if (s.burstCount >= (noiseLevel > 100 ? 4 : 5)) s.hangCount = noiseLevel > 100 ? 7 : 4;
        return 1;
    }
    s.burstCount = 0;
    if (s.hangCount <= 0) return 0;
    s.hangCount--;
    return 1;
}

inline I16 vad1(const I16* src, VspGSMAMRVad1State& s, I16 bestCorrHp, I16 toneFlags) {
    I32 power = 0;
    for (int i = 0; i < 160; i++) power = lMac(power, src[i], src[i]);
    if (power < 343040) s.pitchFlags &= 0x3FFF;
    if (power < 15000) s.complexLow &= 0x3FFF;
    I16 level[9];
    filterBank(src + 40, s, level);
    return decide1(s, level, power, bestCorrHp, toneFlags);
}

// --- Option 2 ----------------------------------------------------------------------------------------------------------

inline I16 decibels(I32 x, int fractionBits) {
    I16 exponent, fraction;
    ownLog2(x, &exponent, &fraction);
    exponent = I16(exponent - fractionBits);
    const I32 y = lMac(lMult(exponent, 24660), mult(fraction, 24660), 1);
    return I16((y >> 6) + ((y >> 5) & 1));
}

inline I32 shiftRightRounded(I32 a, int n) {
    if (n <= 0) return lShl(a, -n);
    return n > 31 ? 0 : (a >> n) + ((a >> (n - 1)) & 1);
}

inline I16 halfFrame(const I16* src, VspGSMAMRVad2State& s, I32 ltpFlag) {
    s.frameCnt = Add_32s(s.frameCnt, 1);

    // Normalisation, pre-emphasis, transform.
    int largest = 0;
    for (int i = 0; i < 80; i++) largest = std::max(largest, std::min(32767, std::abs(int(src[i]))));
    const int norm = largest == 0 ? 14 : normS(I16(largest)) - 2;
    s.preEmphMem = shl(s.preEmphMem, norm - s.lastNormShift);
    s.lastNormShift = I16(norm);
    I16 x[128] = {};
    for (int i = 0; i < 80; i++) {
        const I16 sample = shl(src[i], norm);
        x[24 + i] = add(sample, mult(-26214, s.preEmphMem));
        s.preEmphMem = sample;
    }
    fft128(x);

    // Channel energies.
    const int before = s.shiftState == 1;
    if (before == 1 && norm >= 3) s.shiftState = 0;
    if (before == 0 && norm <= 0) s.shiftState = 1;
    const int state = s.shiftState == 1;
    if (state != before)
        for (I32& e : s.chEnrg) e = state == 0 ? lShl(e, 5) : e >> 5;
    const bool firstHalf = s.frameCnt == 1;
    I32 total = 0, peak = kMin32;
    for (int ch = 0; ch < 16; ch++) {
        I32 e = 0;
        for (int i = 2 * Table16Ch[ch][0]; i < 2 * Table16Ch[ch][1] + 2; i++) e = lMac(e, x[i], x[i]);
        e = shiftRightRounded(e, 2 * norm - tableEnrgNormShift[state]);
        const I16 weight = mult(TableDFTch[ch], firstHalf ? 32767 : 18022);
        e = Add_32s(mpy32x16(s.chEnrg[ch], firstHalf ? 0 : 14746), mpy32x16(e, weight));
        s.chEnrg[ch] = std::max<I32>(e, tableMinChanEnrg[state]);
        total = Add_32s(total, s.chEnrg[ch]);
        if (ch >= 2) peak = std::max(peak, s.chEnrg[ch]);
    }
    const bool peaked = mpy32x16(total, 20480) < peak;

    // Signal-to-noise ratios.
    I32 noise = 0, power = 0;
    I16 chDb[16];
    int metric = 0;
    for (int ch = 0; ch < 16; ch++) {
        const I32 e = s.chEnrg[ch];
        if (s.frameCnt < 5) s.chNoise[ch] = peaked || e < tableIneNoise[state] ? 8192 : state == 1 ? lShl(e, 5) : e;
        noise = Add_32s(noise, s.chNoise[ch]);
        chDb[ch] = decibels(e, tableFbits[state]);
        const I16 snr = sub(chDb[ch], decibels(s.chNoise[ch], 9));
        metric += TableVoiceMetric[std::clamp((mult(21845, snr) + 32) >> 6, 0, 89)];
        power = Add_32s(power, ownPow2(I16(((snr * 10885) >> 23) + 3), I16(((snr * 10885) >> 8) & 0x7FFF)));
    }
    I16 snr;
    if (s.frameCnt <= 4 || s.forcedUpdateFlag == 1) {
        s.negSnrVar = s.negSnrBias = 0;
        s.tsnr = snr = sub(14320, decibels(noise, 9));
    } else {
        snr = decibels(power, 7);
        if (snr > s.tsnr)
            s.tsnr = round16(lMac(lMult(29491, s.tsnr), 3277, snr));
        else if (snr > I16(((5 * s.tsnr) & 0xFFFFF) >> 3))
            s.tsnr = round16(lMac(lMult(32702, s.tsnr), 66, snr));
    }
    if (snr < 0) {
        const I16 square = round16(lShl(lMult(snr, snr), 7));
        s.negSnrVar = std::min<I16>(1024, round16(lMac(lMult(32440, s.negSnrVar), 328, square)));
        const Vsp64s bias = (Vsp64s(s.negSnrVar) * 16 * 24576 - 65257472) >> 15;
        s.negSnrBias = bias < 0 ? I16(0) : I16(bias >> 8);
    }
    const int index = std::clamp(I16((s.tsnr * 10923) >> 15) >> 8, 0, 19);

    // Decision.
    bool speech = metric > TablePeakSNR[index] + s.negSnrBias;
    if (speech) {
        s.burstCount = add(s.burstCount, 1);
        if (s.burstCount > TableBurstcount[index]) s.hangoverCount = TableHangover[index];
    } else {
        s.burstCount = 0;
        s.hangoverCount = sub(s.hangoverCount, 1);
        speech = s.hangoverCount > 0;
        if (!speech) s.hangoverCount = 0;
    }

    // Spectral deviation.
    const I16 d = sub(s.tsnr, snr);
    I16 a = 3277, b = 29491;
    if (d >= 1 && s.tsnr >= 1) {
        b = s.tsnr < d ? I16(22938) : I16(29491 - mult(divS(d, s.tsnr), 6553));
        a = s.tsnr < d ? I16(9830) : I16(32767 - b);
    }
    int deviation = 0;
    for (int ch = 0; ch < 16; ch++) {
        if (firstHalf) s.chEnrgLongDb[ch] = chDb[ch];
        deviation += std::abs(s.chEnrgLongDb[ch] - chDb[ch]);
        s.chEnrgLongDb[ch] = round16(lMac(lMult(chDb[ch], a), s.chEnrgLongDb[ch], b));
    }

    // Noise update.
    s.forcedUpdateFlag = 0;
    bool update = false;
    if (metric <= 35) {
        update = s.burstCount == 0;
        if (update) s.updateCnt = 0;
    } else if (total > tableNoiseFloorChan[state] && deviation < 7168 && !peaked && ltpFlag == 0) {
        s.updateCnt = add(s.updateCnt, 1);
        update = s.updateCnt >= 50;
        s.forcedUpdateFlag = update;
    }
    s.hysterCnt = s.updateCnt == s.lastUpdateCnt ? add(s.hysterCnt, 1) : I16(0);
    s.lastUpdateCnt = s.updateCnt;
    if (s.hysterCnt > 6) s.updateCnt = 0;
    for (int ch = 0; update && ch < 16; ch++) {
        const I32 e = state == 1 ? lShl(s.chEnrg[ch], 5) : s.chEnrg[ch];
        s.chNoise[ch] = std::max(32, Add_32s(mpy32x16(s.chNoise[ch], 29491), mpy32x16(e, 3277)));
    }
    return speech;
}

inline I16 vad2(const I16* src, VspGSMAMRVad2State& s, I32 ltpFlag) {
    const I16 first = halfFrame(src, s, ltpFlag), second = halfFrame(src + 80, s, ltpFlag);
    return I16(first | second);
}

}  // namespace vsp::plain
