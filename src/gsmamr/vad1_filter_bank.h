// Option 1: the filter bank of nine bands. A tree of all-pass sections turns every sixteen samples into sixteen band
// samples.
//
// A section needs its own previous memory at every step, so that the first stage, whose two sections run 80 times a frame,
// decides how long the filter bank takes. The sections of a stage run side by side, and so do the stages, each with another
// group of samples. Only the memories are computed one after the other; the results follow from them for a group at once.
#pragma once

#include "common/band_levels.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

constexpr int kVad1Bands = 9, kVad1Frame = 160;
constexpr int kVad1Group = 16;                        // samples
constexpr int kVad1Groups = kVad1Frame / kVad1Group;  // the level of the last two counts for the next frame as well

// Sixteen samples on their way through the tree.
struct Vad1Group {
    S16_128 low, high;
};

// The memories of the sections of each stage, in the elements in which their inputs come.
struct Vad1Memories {
    S16_128 first;   // elements 0, 1
    S16_128 second;  // 0..3
    S16_128 third;   // 4, 6, 7
    S16_128 fourth;  // 0, 4
};

VSP_INLINE Vad1Memories loadMemories(const VspGSMAMRVad1State& s) {
    const auto& m5 = s.filterMem5;
    const auto& m3 = s.filterMem3;
    return {{_mm_setr_epi16(m5[0][0], m5[0][1], 0, 0, 0, 0, 0, 0)},
            {_mm_setr_epi16(m5[1][0], m5[2][0], m5[1][1], m5[2][1], 0, 0, 0, 0)},
            {_mm_setr_epi16(0, 0, 0, 0, m3[0], 0, m3[1], m3[4])},
            {_mm_setr_epi16(m3[2], 0, 0, 0, m3[3], 0, 0, 0)}};
}

template <int element>
VSP_INLINE Vsp16s elementOf(S16_128 a) {
    return Vsp16s(_mm_extract_epi16(a.v, element));
}

VSP_INLINE void storeMemories(const Vad1Memories& m, VspGSMAMRVad1State& s) {
    s.filterMem5[0][0] = elementOf<0>(m.first);
    s.filterMem5[0][1] = elementOf<1>(m.first);
    s.filterMem5[1][0] = elementOf<0>(m.second);
    s.filterMem5[2][0] = elementOf<1>(m.second);
    s.filterMem5[1][1] = elementOf<2>(m.second);
    s.filterMem5[2][1] = elementOf<3>(m.second);
    s.filterMem3[0] = elementOf<4>(m.third);
    s.filterMem3[1] = elementOf<6>(m.third);
    s.filterMem3[4] = elementOf<7>(m.third);
    s.filterMem3[2] = elementOf<0>(m.fourth);
    s.filterMem3[3] = elementOf<4>(m.fourth);
}

// The coefficients c of all-pass sections: with t = x - mult(c, m) the result is m + mult(c, t), and t is the next m.
struct AllPass {
    S16_128 factor;  // 2c, or 2c - 65536 where 2c does not fit
    S16_128 whole;   // -1 where it does not
};

// c * a >> 15
VSP_INLINE S16_128 mult(AllPass c, S16_128 a) { return add(mulHi(a, c.factor), S16_128{c.whole.v & a.v}); }

// The 5th-order pair: each section in `width` elements in turn.
template <int width>
VSP_INLINE AllPass order5() {
    constexpr Vsp16s kFirst = 2 * 21955 - 65536, kSecond = 2 * 6390;
    if constexpr (width == 1)
        return {{_mm_setr_epi16(kFirst, kSecond, kFirst, kSecond, kFirst, kSecond, kFirst, kSecond)},
                {_mm_setr_epi16(-1, 0, -1, 0, -1, 0, -1, 0)}};
    else
        return {{_mm_setr_epi16(kFirst, kFirst, kSecond, kSecond, kFirst, kFirst, kSecond, kSecond)},
                {_mm_setr_epi16(-1, -1, 0, 0, -1, -1, 0, 0)}};
}

// a + b, and a - b in the places that are the higher ones of the pairs that a section combines.
template <int higherPlaces>
VSP_INLINE S16_128 sumsAndDifferences(S16_128 a, S16_128 b) {
    return {_mm_blend_epi16(addSat(a, b).v, subSat(a, b).v, higherPlaces)};
}

// The memories after four steps of the first stage.
VSP_INLINE S16_128 firstStageSteps(S16_128 x, S16_128& m) {
    const AllPass c = order5<1>();
    __m128i t[4];
    for (int i = 0; i < 4; i++) {
        // Inputs have 14 bits, so that nothing saturates and the order is free: everything but the product comes first.
        m = sub(sub(x, S16_128{c.whole.v & m.v}), mulHi(m, c.factor));
        t[i] = m.v;
        x = {_mm_srli_si128(x.v, 4)};
    }
    return {_mm_unpacklo_epi64(_mm_unpacklo_epi32(t[0], t[1]), _mm_unpacklo_epi32(t[2], t[3]))};
}

VSP_INLINE Vad1Group ownFirstFilterStage_GSMAMR_M7(Vad1Group x, S16_128& memory) {
    const S16_128 before = memory;
    const S16_128 t0 = firstStageSteps(shr(x.low, 2), memory), t1 = firstStageSteps(shr(x.high, 2), memory);
    const S16_128 m0 = {_mm_blend_epi16(_mm_slli_si128(t0.v, 4), before.v, 0x03)};
    const S16_128 m1 = {_mm_alignr_epi8(t1.v, t0.v, 12)};
    const auto results = [](S16_128 m, S16_128 t) {
        const S16_128 y = addSat(m, mult(order5<1>(), t));
        return sumsAndDifferences<0xAA>(swapInPairs(y), y);
    };
    return {results(m0, t0), results(m1, t1)};
}

VSP_INLINE Vad1Group secondFilterStage(Vad1Group x, S16_128& memory) {
    const AllPass c = order5<2>();
    const auto step = [c, &memory](__m128i fours) { return (memory = subSat({fours}, mult(c, memory))).v; };
    const S16_128 before = memory;
    __m128i t[4];
    t[0] = step(x.low.v);
    t[1] = step(_mm_srli_si128(x.low.v, 8));
    t[2] = step(x.high.v);
    t[3] = step(_mm_srli_si128(x.high.v, 8));
    const auto results = [c](__m128i m, __m128i t0, __m128i t1) {
        const S16_128 y = addSat({_mm_unpacklo_epi64(m, t0)}, mult(c, {_mm_unpacklo_epi64(t0, t1)}));
        return shr(sumsAndDifferences<0xCC>({_mm_shuffle_epi32(y.v, _MM_SHUFFLE(2, 3, 0, 1))}, y), 1);
    };
    return {results(before.v, t[0], t[1]), results(t[1], t[2], t[3])};
}

// The 3rd-order sections on the elements of x.
VSP_INLINE S16_128 order3(S16_128 x, S16_128& memory) {
    const S16_128 factor = S16_128::splat(2 * 13363), before = memory;
    memory = subSat(x, mulHi(memory, factor));
    return addSat(before, mulHi(memory, factor));
}

VSP_INLINE Vad1Group thirdFilterStage(Vad1Group x, S16_128& memory) {
    const auto stage = [&memory](S16_128 w) {
        const S16_128 y = order3(w, memory);
        const S16_128 both =
            shr(sumsAndDifferences<0xF0>({_mm_unpacklo_epi64(w.v, w.v)}, {_mm_unpackhi_epi64(y.v, y.v)}), 1);
        return S16_128{_mm_blend_epi16(both.v, w.v, 0x22)};  // elements 1 and 5 are done
    };
    const S16_128 low = stage(x.low);
    return {low, stage(x.high)};
}

VSP_INLINE Vad1Group fourthFilterStage(Vad1Group x, S16_128& memory) {
    const S16_128 y = order3(x.high, memory);
    return {{_mm_blend_epi16(x.low.v, shr(addSat(x.low, y), 1).v, 0x11)},
            {_mm_blend_epi16(x.high.v, shr(subSat(x.low, y), 1).v, 0x11)}};
}

// Sums of the magnitudes at the sixteen places of a group.
struct Vad1Sums {
    S32_128 places[4];
};

VSP_INLINE void addMagnitudes(Vad1Sums& sums, Vad1Group x) {
    const S16_128 zero = S16_128::splat(0);
    const S16_128 low = max(x.low, subSat(zero, x.low)), high = max(x.high, subSat(zero, x.high));
    sums.places[0] = add(sums.places[0], zipLo(low, zero));
    sums.places[1] = add(sums.places[1], zipHi(low, zero));
    sums.places[2] = add(sums.places[2], zipLo(high, zero));
    sums.places[3] = add(sums.places[3], zipHi(high, zero));
}

// The band levels from the sums over the frame without its end and over its end.
VSP_INLINE void ownCalculateLevels_GSMAMR_M7(const Vad1Sums& frame, const Vad1Sums& end, Vsp16s subLevel[kVad1Bands],
                                             Vsp16s level[kVad1Bands]) {
    static constexpr BandPlaces kBands[kVad1Bands] = {{0, 16, 16}, {8, 16, 16}, {12, 16, 16}, {4, 16, 16}, {6, 8, 16},
                                                      {2, 8, 16},  {3, 8, 16},  {7, 8, 16},   {1, 4, 15}};
    Vsp32s frameSums[kVad1Group], endSums[kVad1Group];
    for (int i = 0; i < 4; i++) {
        frame.places[i].store(frameSums + 4 * i);
        end.places[i].store(endSums + 4 * i);
    }
    ownBandLevels(kBands, frameSums, endSums, subLevel, level);
}

VSP_INLINE void ownVadFilterBank_GSMAMR_16s(const Vsp16s* frame, VspGSMAMRVad1State& s, Vsp16s level[kVad1Bands]) {
    const S32_128 zero = S32_128::splat(0);
    Vad1Sums inFrame = {{zero, zero, zero, zero}}, atEnd = inFrame;
    Vad1Memories memories = loadMemories(s);
    const auto firstStage = [&](int group) {
        const Vsp16s* x = frame + group * kVad1Group;
        return ownFirstFilterStage_GSMAMR_M7({S16_128::load(x), S16_128::load(x + 8)}, memories.first);
    };
    const auto lastStages = [&](Vad1Group x, Vad1Sums& sums) {
        addMagnitudes(sums, fourthFilterStage(thirdFilterStage(x, memories.third), memories.fourth));
    };
    // While one group is in the first stage, the one before it is in the second and the one before that in the last ones.
    Vad1Group second = secondFilterStage(firstStage(0), memories.second), first = firstStage(1);
    for (int group = 2; group < kVad1Groups; group++) {
        lastStages(second, inFrame);
        second = secondFilterStage(first, memories.second);
        first = firstStage(group);
    }
    lastStages(second, atEnd);
    lastStages(secondFilterStage(first, memories.second), atEnd);
    storeMemories(memories, s);
    ownCalculateLevels_GSMAMR_M7(inFrame, atEnd, s.subLevel, level);
}

}  // namespace vsp::VSP_LEVEL
