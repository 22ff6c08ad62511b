// Categories, that is step sizes, of the regions for the bits of a frame. All regions take part in each step of vectors.
#include "arithmetic/basic_ops.h"
#include "core/checks.h"
#include "g7221/exports.h"
#include "g7221/vector_code_tables.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

namespace {

using V = S16_128;

// Bits that a region is expected to take; a corrupt frame can have categories outside of the table.
VSP_INLINE int expectedBits(int category) { return expected_bits_table[clip(category, 0, kCategories - 1)]; }

// The regions in vectors, the last ones empty.
template <int n>
struct Regions {
    V part[n];
};

// clip((offset - index) >> 1, 0, 7)
VSP_INLINE V categoryAt(V index, int offset) {
    return min(max(shr(subSat(V::splat(Vsp16s(offset)), index), 1), V::splat(0)), V::splat(kCategories - 1));
}

template <int n>
VSP_INLINE int expectedBitsAt(const Regions<n>& index, int offset) {
    const __m128i table = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(expected_bits_table));
    V bits = V::splat(0);
    for (int i = 0; i < n; i++) {
        const __m128i places = _mm_or_si128(categoryAt(index.part[i], offset).v, _mm_set1_epi16(-0x8000));
        bits = add(bits, V{_mm_shuffle_epi8(table, places)});  // of which the upper octet is 0
    }
    return sum(dot2(bits, V::splat(1)));
}

// The largest offset with which the frame takes hardly more bits than there are.
template <int n>
VSP_INLINE int bestOffset(const Regions<n>& index, int available) {
    int offset = -32;
    for (int step = 32; step > 0; step /= 2)
        if (expectedBitsAt(index, offset + step) >= available - 32) offset += step;
    return offset;
}

// The order in which the categories change in one direction. A region is worth its urgency, which grows by 2 whenever it
// has been chosen, as often as it has steps left. Urgency and region are one number, the smallest of which comes first.
constexpr int kLeastUrgency = -400, kUrgencyLimit = 99, kMostUrgency = 500, kPlaces = 32;

template <int n>
class Order {
  public:
    Order(const Regions<n>& urgency, const Regions<n>& steps, const Regions<n>& places) {
        for (int i = 0; i < n; i++) {
            const V clipped = min(max(urgency.part[i], V::splat(kLeastUrgency)), V::splat(kMostUrgency));
            key_.part[i] = add(shl(sub(clipped, V::splat(kLeastUrgency)), 5), places.part[i]);
            end_.part[i] = add(key_.part[i], shl(steps.part[i], 6));
        }
    }

    // The place of the first one, or -1 if none is left.
    int next() {
        __m128i least = _mm_set1_epi16(-1);
        for (int i = 0; i < n; i++) {
            const __m128i left = _mm_cmpgt_epi16(end_.part[i].v, key_.part[i].v);
            least = _mm_min_epu16(least, _mm_or_si128(_mm_andnot_si128(left, _mm_set1_epi16(-1)), key_.part[i].v));
        }
        const int first = _mm_cvtsi128_si32(_mm_minpos_epu16(least)) & 0xFFFF;
        if (first >= (kUrgencyLimit - kLeastUrgency) * kPlaces) return -1;
        const V chosen = V::splat(Vsp16s(first)), later = V::splat(2 * kPlaces);
        for (int i = 0; i < n; i++) {
            const __m128i same = _mm_cmpeq_epi16(key_.part[i].v, chosen.v);
            key_.part[i] = add(key_.part[i], V{_mm_and_si128(same, later.v)});
        }
        return first % kPlaces;
    }

  private:
    Regions<n> key_, end_;
};

// A corrupt frame may have no region left to choose; it goes on with the last one.
VSP_INLINE int orLast(int place, int& last) { return place < 0 ? last : last = place; }

template <int regions>
void categorize(const Vsp16s* pIndex, int bits, int control, Vsp16s* category, Vsp16s* balance) {
    constexpr int n = (regions + 7) / 8, padded = 8 * n, steps = controls(regions) - 1, frame = regions / 7 * 160;
    const int available = bits > frame ? ((bits - frame) * 5 >> 3) + frame : bits;
    alignas(16) Vsp16s indices[padded];
    for (int r = 0; r < padded; r++) indices[r] = r < regions ? pIndex[r] : kMin16;
    Regions<n> index;
    for (int i = 0; i < n; i++) index.part[i] = V::load(indices + 8 * i);
    const int offset = bestOffset(index, available);

    Regions<n> finerUrgency, coarserUrgency, finerSteps, coarserSteps, places, placesBackwards;
    alignas(16) Vsp16s finer[padded];
    int finerBits = 0;
    for (int i = 0; i < n; i++) {
        const V place = add(V{_mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7)}, V::splat(Vsp16s(8 * i)));
        const V c = categoryAt(index.part[i], offset), real{_mm_cmpgt_epi16(V::splat(regions).v, place.v)};
        const V urgency = subSat(subSat(V::splat(Vsp16s(offset)), index.part[i]), add(c, c));
        finerUrgency.part[i] = urgency;
        coarserUrgency.part[i] = subSat(V::splat(0), urgency);
        finerSteps.part[i] = V{_mm_and_si128(c.v, real.v)};
        coarserSteps.part[i] = V{_mm_and_si128(sub(V::splat(kCategories - 1), c).v, real.v)};
        places.part[i] = place;
        placesBackwards.part[i] = sub(V::splat(kPlaces - 1), place);
        c.store(finer + 8 * i);
    }
    for (int r = 0; r < regions; r++) finerBits += expectedBits(finer[r]);
    int coarser[padded], coarserBits = finerBits;
    for (int r = 0; r < regions; r++) coarser[r] = finer[r];

    Order<n> toFiner(finerUrgency, finerSteps, places), toCoarser(coarserUrgency, coarserSteps, placesBackwards);
    Vsp16s list[2 * steps];
    int first = steps, end = steps, lastFiner = 0, lastCoarser = kPlaces - 1;
    for (int i = 0; i < steps; i++) {
        if (finerBits + coarserBits <= 2 * available) {
            const int r = orLast(toFiner.next(), lastFiner);
            finerBits -= expectedBits(finer[r]--);
            finerBits += expectedBits(finer[r]);
            list[--first] = Vsp16s(r);
        } else {
            const int r = kPlaces - 1 - orLast(toCoarser.next(), lastCoarser);
            coarserBits -= expectedBits(coarser[r]++);
            coarserBits += expectedBits(coarser[r]);
            list[end++] = Vsp16s(r);
        }
    }
    for (int i = 0; i < steps; i++) balance[i] = list[first + i];
    for (int i = 0; i < control; i++) finer[balance[i]]++;
    for (int r = 0; r < regions; r++) category[r] = finer[r];
}

}  // namespace

VspStatus vspsCategorize_G722_16s(const Vsp16s* pIndex, Vsp32s bits, Vsp32s control, Vsp32s regions, Vsp16s* pCategory,
                                  Vsp16s* pBalance) {
    if (anyNull(pIndex, pCategory, pBalance)) return vspStsNullPtrErr;
    if (!hasRegions(regions)) return vspStsSizeErr;
    if (!isControl(control, regions)) return vspStsSizeErr;
    const int limited = clip(bits, -0x4000, 0x4000);  // more than any categories take
    if (regions == kRegions)
        categorize<kRegions>(pIndex, limited, control, pCategory, pBalance);
    else
        categorize<kMaxRegions>(pIndex, limited, control, pCategory, pBalance);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
