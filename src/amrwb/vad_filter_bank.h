// The filter bank of the voice activity detection: a tree of all-pass sections (`filter5`, `filter3` of `wb_vad`).
#pragma once

#include "amrwb/lengths.h"
#include "vector/signs.h"

namespace vsp::VSP_LEVEL {

// Samples that the filter bank turns into as many band samples, and the group from which on they count for the next frame.
constexpr int kVadGroup = 32, kVadGroups = kWideFrame / kVadGroup, kVadEnd = 2;

struct VadFilterMemory {
    Vsp16s fifth[5][2], third[6];
};

// First-order all-pass sections, one in each element; elements without a factor give nothing of use.
class AllPasses {
  public:
    explicit AllPasses(const Vsp16s (&factors)[8], const Vsp16s (&memory)[8]) : memory_(S16_128::load(memory)) {
        const S16_128 factor = S16_128::load(factors);
        doubled_ = add(factor, factor);
        large_ = shr(doubled_, 15);
    }

    [[gnu::always_inline]] S16_128 run(S16_128 x) {
        const S16_128 t = subSat(x, times(memory_)), y = addSat(memory_, times(t));
        memory_ = t;
        return y;
    }
    void store(Vsp16s (&memory)[8]) const { memory_.store(memory); }

  private:
    // (a * factor) >> 15, where the doubled factor may have 17 bits.
    [[gnu::always_inline]] S16_128 times(S16_128 a) const { return add(mulHi(a, doubled_), S16_128{a.v & large_.v}); }

    S16_128 doubled_, large_, memory_;
};

// A section has pairs of samples, of which it makes half the sum and half the difference, in place. Samples beside each
// other are called by their places in a block of eight.
class VadFilterBank {
  public:
    explicit VadFilterBank(const VadFilterMemory& m)
        : pairs_({kFifth0, kFifth1}, {m.fifth[0][0], m.fifth[0][1]}),
          fours_({kFifth0, kFifth1, kFifth0, kFifth1}, {m.fifth[1][0], m.fifth[1][1], m.fifth[2][0], m.fifth[2][1]}),
          eights_({kFifth0, kFifth1, kFifth0, kFifth1, 0, kThird},
                  {m.fifth[3][0], m.fifth[3][1], m.fifth[4][0], m.fifth[4][1], 0, m.third[0]}),
          sixteens_({kThird, 0, 0, 0, kThird, kThird}, {m.third[1], 0, 0, 0, m.third[2], m.third[3]}),
          lower_({kThird}, {m.third[4]}),
          upper_({kThird}, {m.third[5]}) {}

    void store(VadFilterMemory& m) const {
        Vsp16s a[8];
        const auto fifth = [&](int i, int at) {
            m.fifth[i][0] = a[at];
            m.fifth[i][1] = a[at + 1];
        };
        pairs_.store(a);
        fifth(0, 0);
        fours_.store(a);
        fifth(1, 0);
        fifth(2, 2);
        eights_.store(a);
        fifth(3, 0);
        fifth(4, 2);
        m.third[0] = a[5];
        sixteens_.store(a);
        m.third[1] = a[0];
        m.third[2] = a[4];
        m.third[3] = a[5];
        lower_.store(a);
        m.third[4] = a[0];
        upper_.store(a);
        m.third[5] = a[0];
    }

    // The places of a block come in the order of kPlaceOf.
    static constexpr int kPlaceOf[8] = {0, 2, 3, 1, 4, 6, 7, 5};

    [[gnu::always_inline]] void run(const Vsp16s* src, S16_128 (&blocks)[4]) {
        for (int i = 0; i < 4; i++) blocks[i] = block(shr(S16_128::load(src + 8 * i), 1));
        constexpr int k046 = 0x31, k0 = 1;
        halve<k046>(blocks[0], blocks[1], sixteens_);
        halve<k046>(blocks[2], blocks[3], sixteens_);
        halve<k0>(blocks[0], blocks[2], lower_);
        halve<k0>(blocks[1], blocks[3], upper_);
    }

  private:
    static constexpr Vsp16s kFifth0 = 21955, kFifth1 = 6390, kThird = 13363;

    // Of pairs of elements the halves of the sums, then those of the differences.
    [[gnu::always_inline]] static S16_128 halves(S16_128 a) {
        return packSat(shr(dot2(a, S16_128::splat(1)), 1), shr(dot2(a, S16_128{S32_128::splat(-0xFFFF).v}), 1));
    }

    [[gnu::always_inline]] S16_128 block(S16_128 x) {
        const auto first64 = [](S16_128 a, S16_128 b) { return S16_128{_mm_unpacklo_epi64(a.v, b.v)}; };
        const S32_128 source{x.v};
        const S16_128 y0 = pairs_.run({splatElement<0>(source).v}), y1 = pairs_.run({splatElement<1>(source).v});
        const S16_128 y2 = pairs_.run({splatElement<2>(source).v}), y3 = pairs_.run({splatElement<3>(source).v});
        const auto both = [](S16_128 a, S16_128 b) { return S16_128{zipLo(S32_128{a.v}, S32_128{b.v}).v}; };
        x = halves(first64(both(y0, y1), both(y2, y3)));  // 0 2 4 6, 1 3 5 7
        const S16_128 of0213{_mm_shuffle_epi32(x.v, 0xD8)}, of4657{_mm_shuffle_epi32(x.v, 0x8D)};
        const S16_128 z0 = fours_.run(of0213), z1 = fours_.run(of4657);
        x = halves(first64(z0, z1));  // 0 1 4 5, 2 3 6 7

        x.v = _mm_shuffle_epi8(x.v, _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 10, 11, 14, 15, 2, 3, 6, 7));
        constexpr int kFiltered = 0x2F;  // 0 4 2 6, 7 of 3 7; 1 and 5 stay
        x = blend<kFiltered>(x, eights_.run(x));
        const S32_128 sums = dot2(x, S16_128{_mm_setr_epi16(1, 1, 1, 1, 1, 1, 2, 0)});
        const S32_128 differences = dot2(x, S16_128{_mm_setr_epi16(1, -1, 1, -1, 1, -1, 0, 2)});
        return packSat(shr(sums, 1), shr(differences, 1));
    }

    // A third-order section on the elements of kMask.
    template <int kMask>
    [[gnu::always_inline]] static void halve(S16_128& a, S16_128& b, AllPasses& filter) {
        const S16_128 y = filter.run(b), halfDifferent = shr(S16_128{a.v ^ y.v}, 1);
        const S16_128 low = add(S16_128{a.v & y.v}, halfDifferent), roundedUp = sub(S16_128{a.v | y.v}, halfDifferent);
        b = blend<kMask>(b, sub(a, roundedUp));
        a = blend<kMask>(a, low);
    }

    AllPasses pairs_, fours_, eights_, sixteens_, lower_, upper_;  // of so many samples; of blocks 0 and 2, 1 and 3
};

// Sums of the magnitudes at every place of a group, over the groups before the end and from there on.
VSP_INLINE void vadBandSums(const Vsp16s* src, VadFilterMemory& memory, Vsp32s (&sums)[2][kVadGroup]) {
    VadFilterBank bank(memory);
    const S16_128 zero = S16_128::splat(0);
    for (int part = 0; part < 2; part++) {
        S32_128 lo[4], hi[4];
        for (int i = 0; i < 4; i++) lo[i] = hi[i] = S32_128::splat(0);
        for (int group = part == 0 ? 0 : kVadEnd; group < (part == 0 ? kVadEnd : kVadGroups); group++) {
            S16_128 blocks[4];
            bank.run(src + kVadGroup * group, blocks);
            for (int i = 0; i < 4; i++) {
                const S16_128 magnitudes = max(blocks[i], subSat(zero, blocks[i]));
                lo[i] = add(lo[i], zipLo(magnitudes, zero));
                hi[i] = add(hi[i], zipHi(magnitudes, zero));
            }
        }
        for (int i = 0; i < 4; i++) {
            Vsp32s ofBlock[8];
            lo[i].store(ofBlock);
            hi[i].store(ofBlock + 4);
            for (int k = 0; k < 8; k++) sums[part][8 * i + VadFilterBank::kPlaceOf[k]] = ofBlock[k];
        }
    }
    bank.store(memory);
}

}  // namespace vsp::VSP_LEVEL
