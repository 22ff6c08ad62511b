// The coefficients of a region in the codes of a category.
#pragma once

#include "arithmetic/basic_ops.h"
#include "g7221/region_power_tables.h"
#include "g7221/vector_code_tables.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

// What the encoder makes of a region; the code of a category is looked up for each vector.
struct CodedRegion {
    Vsp16s symbols[10];     // as VectorCodes numbers them
    Vsp32u used, positive;  // bit i of coefficient i: not zero, positive
};

// Levels of up to 24 coefficients, of which the last four are 0: (|c| * s + dead zone) >> 15, s of 17 bits.
VSP_INLINE void quantize(const Vsp16s* coef, int category, int index, Vsp16s (&levels)[24], CodedRegion& coded) {
    const Vsp32s scale = (step_size_inverse_table[category] * standard_deviation_inverse_table[index] + 4096) >> 13;
    const S32_128 s = S32_128::splat(scale);
    const S32_128 deadZone = S32_128::splat(4 * int_dead_zone[category] + int_dead_zone_low_bits[category]);
    const S16_128 most = S16_128::splat(Vsp16s(kVectorShapes[category].levels - 1)), zero = S16_128::splat(0);
    const auto levelsOf = [&](S32_128 magnitudes) { return shrU(add(mulLo(magnitudes, s), deadZone), 15); };
    __m128i used[3], positive[3];
    for (int i = 0; i < 3; i++) {
        const S16_128 x =
            i < 2 ? S16_128::load(coef + 8 * i) : S16_128{_mm_loadl_epi64(reinterpret_cast<const __m128i*>(coef + 16))};
        const S16_128 magnitudes = max(x, subSat(zero, x));
        // A level may be up to 92665, 32767 at most behind the pack.
        const S16_128 k = min(packSat(levelsOf(zipLo(magnitudes, zero)), levelsOf(zipHi(magnitudes, zero))), most);
        k.store(levels + 8 * i);
        used[i] = _mm_cmpgt_epi16(k.v, zero.v);
        positive[i] = _mm_cmpgt_epi16(x.v, zero.v);
    }
    const auto bits = [](const __m128i(&x)[3]) {
        return Vsp32u(_mm_movemask_epi8(_mm_packs_epi16(x[0], x[1]))) |
               Vsp32u(_mm_movemask_epi8(_mm_packs_epi16(x[2], _mm_setzero_si128()))) << 16;
    };
    coded.used = bits(used) & 0xFFFFF;
    coded.positive = bits(positive);
}

// Calls op with the dimension of a category's vectors as a constant.
template <class Op>
VSP_INLINE void withDimension(int category, Op op) {
    switch (kVectorShapes[category].dimension) {
        case 2: return op.template operator()<2>();
        case 4: return op.template operator()<4>();
        default: return op.template operator()<5>();
    }
}

// Quantises the coefficients, and counts the bits that they take.
VSP_INLINE int codeRegion(const Vsp16s* coef, int category, int index, CodedRegion& coded) {
    Vsp16s levels[24];
    quantize(coef, category, index, levels, coded);
    const VectorShape& shape = kVectorShapes[category];
    int bits = 0;
    withDimension(category, [&]<int dimension>() {
        for (int v = 0; v < kRegion / dimension; v++) {
            int symbol = 0;
            for (int i = 0; i < dimension; i++) symbol = symbol * shape.levels + levels[v * dimension + i];
            symbol += shape.firstSymbol;
            coded.symbols[v] = Vsp16s(symbol);
            bits += vectorCodes.written[symbol].bits;
        }
    });
    return bits;
}

// The bits in words from the top; those that the words have no room for are dropped, and the rest of the words is 0.
VSP_INLINE void writeRegion(const CodedRegion& coded, int category, Vsp32u* words, int count) {
    Vsp64u pending = 0;
    int pendingBits = 0, written = 0;
    withDimension(category, [&]<int dimension>() {
        constexpr Vsp32u mask = (1 << dimension) - 1;
        for (int v = 0; v < kRegion / dimension; v++) {
            const VectorCodes::Written& code = vectorCodes.written[coded.symbols[v]];
            const Vsp32u used = coded.used >> (v * dimension) & mask, positive = coded.positive >> (v * dimension) & mask;
            pending = (pending << code.length | code.code) << (code.bits - code.length) | signsOfUsed.of[used][positive];
            pendingBits += code.bits;
            if (pendingBits < 32) continue;
            pendingBits -= 32;
            if (written < count) words[written++] = Vsp32u(pending >> pendingBits);
        }
    });
    if (written < count) words[written++] = Vsp32u(pending << (32 - pendingBits));
    while (written < count) words[written++] = 0;
}

}  // namespace vsp::VSP_LEVEL
