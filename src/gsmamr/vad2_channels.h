// Option 2: the energies of the sixteen channels of a half-frame (3GPP TS 26.094 4.3.1, 4.3.2).
#pragma once

#include <utility>

#include "core/level.h"
#include "gsmamr/fixed_point.h"
#include "gsmamr/tables.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

constexpr int kVad2Half = 80;  // samples
constexpr int kVad2Fft = 128;
constexpr int kVad2Margin = (kVad2Fft - kVad2Half) / 2;

// What the steps of a half-frame hand on.
struct Vad2Half {
    Vsp32s totalEnergy;
    bool peaked;  // a channel has more than 0.625 of the energy
    Vsp16s energyDb[kVad2Channels];
    Vsp16s channelSnr[kVad2Channels];
    Vsp32s voiceMetric;
    Vsp16s snr;    // dB, Q8
    int snrIndex;  // of the long-term ratio, in steps of 3 dB
    Vsp32s deviation;
};

VSP_INLINE int scalingOf(const VspGSMAMRVad2State& s) { return s.shiftState == 1; }

// Shifts the memory of the pre-emphasis from one normalisation to the next.
VSP_INLINE Vsp16s rescaled(Vsp16s a, int left) {
    return left >= 0 ? ShiftL_16s(a, left < 31 ? left : 31) : Vsp16s(a >> (left > -15 ? -left : 15));
}

// Normalises the half-frame to two bits of headroom and pre-emphasises it; returns the shift.
VSP_INLINE int normalisedAndEmphasised(const Vsp16s* src, VspGSMAMRVad2State& s, Vsp16s x[kVad2Fft]) {
    Vsp32s shift = 2;
    Vsp16s normalised[1 + kVad2Half];  // after the last sample of the half-frame before
    vspsAutoScale_16s(src, normalised + 1, kVad2Half, &shift);
    normalised[0] = rescaled(s.preEmphMem, shift - s.lastNormShift);
    s.preEmphMem = normalised[kVad2Half];
    s.lastNormShift = Vsp16s(shift);

    for (int i = 0; i < kVad2Margin; i++) x[i] = x[kVad2Fft - 1 - i] = 0;
    // -26214 * previous >> 15: twice the factor is 13108 - 65536.
    for (int i = 0; i < kVad2Half; i++) x[kVad2Margin + i] = sat_16s(normalised[i + 1] + ((-26214 * normalised[i]) >> 15));
    return shift;
}

// Sums of squares over the bins of each channel. The words of the half-frame's transform are too small for an overflow.
VSP_INLINE void channelSums(const Vsp16s x[kVad2Fft], Vsp32s sums[kVad2Channels]) {
    Vsp32s squares[kVad2Fft / 2];
    for (int bin = 0; bin < kVad2Fft / 2; bin++) squares[bin] = x[2 * bin] * x[2 * bin] + x[2 * bin + 1] * x[2 * bin + 1];
    const auto sumChannel = [&squares]<int ch>() {
        Vsp32s sum = 0;
        for (int bin = Table16Ch[ch][0]; bin <= Table16Ch[ch][1]; bin++) sum += squares[bin];
        return 2 * sum;
    };
    [&]<int... ch>(std::integer_sequence<int, ch...>) { ((sums[ch] = sumChannel.template operator()<ch>()), ...); }
    (std::make_integer_sequence<int, kVad2Channels>());
}

// Energies a shifted by n to the left, or to the right if n is negative; saturates.
VSP_INLINE void shiftEnergies(Vsp32s a[kVad2Channels], int n) {
    if (n >= 0) {
        const Vsp32s highest = kMax32 >> n, lowest = kMin32 >> n;
        for (int ch = 0; ch < kVad2Channels; ch++)
            a[ch] = a[ch] > highest ? kMax32 : a[ch] < lowest ? kMin32 : Vsp32s(Vsp32u(a[ch]) << n);
    } else {
        for (int ch = 0; ch < kVad2Channels; ch++) a[ch] >>= -n;
    }
}

// Sum of energies, saturated.
VSP_INLINE Vsp32s totalOf(const Vsp32s a[kVad2Channels]) {
    Vsp32s sum = 0;
    for (int ch = 0; ch < kVad2Channels; ch++) sum = Add_32s(sum, a[ch]);
    return sum;
}

VSP_INLINE void ownVad2ChEnergyEstimator_GSMAMR_16s(const Vsp16s* src, VspGSMAMRVad2State& s, Vad2Half& half) {
    constexpr Vsp16s kSmoothing = 14746, kNew = 18022, kFirstNew = 32767, kPeakShare = 20480;  // 0.45, 0.55, 1, 0.625
    alignas(64) Vsp16s x[kVad2Fft];
    const int shift = normalisedAndEmphasised(src, s, x);
    vspsFFTFwd_RToPerm_GSMAMR_16s_I(x);

    const int before = scalingOf(s);
    if (before == 1 && shift >= 3) s.shiftState = 0;
    if (before == 0 && shift <= 0) s.shiftState = 1;
    const int scaling = scalingOf(s);
    if (scaling != before) shiftEnergies(s.chEnrg, -tableStateChangeShiftR[scaling]);

    Vsp32s energies[kVad2Channels];
    channelSums(x, energies);
    const int right = 2 * shift - tableEnrgNormShift[scaling];
    if (right > 0)
        for (int ch = 0; ch < kVad2Channels; ch++)
            energies[ch] = (energies[ch] >> right) + ((energies[ch] >> (right - 1)) & 1);
    else
        shiftEnergies(energies, -right);

    const bool first = s.frameCnt == 1;
    const Vsp16s oldWeight = first ? Vsp16s(0) : kSmoothing, newWeight = first ? kFirstNew : kNew;
    Vsp32s peak = 0;
    for (int ch = 0; ch < kVad2Channels; ch++) {
        const Vsp16s weight = Vsp16s(Mul_16s_Sfs(TableDFTch[ch], newWeight, 15));
        const Vsp32s e = mul_32s16s(s.chEnrg[ch], oldWeight) + mul_32s16s(energies[ch], weight);
        s.chEnrg[ch] = e > tableMinChanEnrg[scaling] ? e : tableMinChanEnrg[scaling];
        if (ch >= 2 && s.chEnrg[ch] > peak) peak = s.chEnrg[ch];
    }
    half.totalEnergy = totalOf(s.chEnrg);
    half.peaked = mul_32s16s(half.totalEnergy, kPeakShare) < peak;
}

}  // namespace vsp::VSP_LEVEL
