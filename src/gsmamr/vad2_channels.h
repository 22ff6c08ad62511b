// Option 2: the energies of the sixteen channels of a half-frame.
#pragma once

#include <utility>

#include "common/sum_of_positive.h"
#include "gsmamr/decibels.h"
#include "gsmamr/exports.h"
#include "gsmamr/tables.h"
#include "vector/magnitude.h"

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

// a and b at p, in one store where vectors are that wide: the transform loads them so.
VSP_INLINE void storeHalves(S16_128 a, S16_128 b, Vsp16s* p) {
#if defined(__AVX2__)
    S16_256{_mm256_set_m128i(b.v, a.v)}.store(p);
#else
    a.store(p);
    b.store(p + 8);
#endif
}

// Normalises the half-frame to two bits of headroom and pre-emphasises it, with zeros on both sides; returns the shift.
VSP_INLINE int normalisedAndEmphasised(const Vsp16s src[kVad2Half], VspGSMAMRVad2State& s, Vsp16s x[kVad2Fft]) {
    constexpr int kHeadroom = 2, kSilence = 14;
    const Vsp16u largest = maxMagnitude(src, kVad2Half);
    const int shift = largest == 0 ? kSilence : Exp_16s_Pos(largest < kMax16 ? largest : Vsp16u(kMax16)) - kHeadroom;
    const int left = shift > 0 ? shift : 0, right = left - shift;
    const auto normalised = [left, right](auto a) { return shr(shl(a, left), right); };
    // x + (-26214 * previous >> 15), where twice the factor is 13108 - 65536.
    const auto emphasised = [](auto a, auto previous) {
        return addSat(a, sub(mulHi(previous, decltype(previous)::splat(13108)), previous));
    };
    const S16_128 memory = S16_128::splat(rescaled(s.preEmphMem, shift - s.lastNormShift));
    s.preEmphMem = Vsp16s(src[kVad2Half - 1] << left >> right);
    s.lastNormShift = Vsp16s(shift);

    using V = Sliding16;
    const S16_128 zero = S16_128::splat(0), first = normalised(S16_128::load(src));
    const auto next = [=]<class T>(T, int i) {
        return emphasised(normalised(T::load(src + i)), normalised(T::load(src + i - 1)));
    };
    storeHalves(zero, zero, x);
    storeHalves(zero, emphasised(first, S16_128{_mm_alignr_epi8(first.v, memory.v, 14)}), x + 16);
    for (int i = 8; i < kVad2Half - 8; i += V::width) next(V(), i).store(x + kVad2Margin + i);
    storeHalves(next(zero, kVad2Half - 8), zero, x + 96);
    storeHalves(zero, zero, x + 112);
    return shift;
}

// Adds up the bins of each channel. Not inlined, because a compiler that sees the vectors from which the words come takes
// them apart one by one, which is slower than to store and load them.
[[gnu::noinline]] static void addBins(const Vsp32s bins[kVad2Fft / 2], Vsp32s sums[kVad2Channels]) {
    const auto sumChannel = [bins]<int ch>() {
        Vsp32s sum = 0;
        for (int bin = Table16Ch[ch][0]; bin <= Table16Ch[ch][1]; bin++) sum += bins[bin];
        return sum;
    };
    [&]<int... ch>(std::integer_sequence<int, ch...>) { ((sums[ch] = sumChannel.template operator()<ch>()), ...); }
    (std::make_integer_sequence<int, kVad2Channels>());
}

// Twice the sums of squares over the bins of each channel. The words of a half-frame's transform are too small for
// overflows.
VSP_INLINE void channelSums(const Vsp16s x[kVad2Fft], Vsp32s sums[kVad2Channels]) {
    using V = Sliding16;
    Vsp32s squares[kVad2Fft / 2];
    for (int i = 0; i < kVad2Fft; i += V::width) {
        const V words = V::load(x + i);
        dot2(words, add(words, words)).store(squares + i / 2);
    }
    addBins(squares, sums);
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
    const Vsp32s lowest = tableMinChanEnrg[scaling];
    for (int ch = 0; ch < kVad2Channels; ch++) {
        const Vsp16s weight = Vsp16s(Mul_16s_Sfs(TableDFTch[ch], newWeight, 15));
        const Vsp32s e = mul_32s16s(s.chEnrg[ch], oldWeight) + mul_32s16s(energies[ch], weight);
        energies[ch] = e > lowest ? e : lowest;
    }
    Vsp32s peak = 0;
    for (int ch = 0; ch < kVad2Channels; ch++) {
        s.chEnrg[ch] = energies[ch];
        if (ch >= 2 && energies[ch] > peak) peak = energies[ch];
    }
    half.totalEnergy = sumOfPositive<kVad2Channels>(energies);
    half.peaked = mul_32s16s(half.totalEnergy, kPeakShare) < peak;
}

}  // namespace vsp::VSP_LEVEL
