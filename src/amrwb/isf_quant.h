// What the quantisers and the decoders of the ISFs share (3GPP TS 26.190 5.2.5 and 26.192).
#pragma once

#include "amrwb/isf_tables.h"
#include "amrwb/modes.h"
#include "arithmetic/standard_ops.h"
#include "core/level.h"

namespace vsp::VSP_LEVEL {

constexpr int kIsfOrder = 16, kIsfKnown = kIsfOrder - 1;  // the last one is not in the order of the others
constexpr Vsp16s kIsfPrediction = 10923;                  // from the frame before, Q15

// A codebook and the elements of the vector to which its entries belong.
struct IsfSplit {
    const Vsp16s* entries;  // by element
    int size, first, elements;
};

struct IsfSplits {
    IsfSplit split[7];
    int count;
};

template <int kElements, int kSize>
VSP_INLINE constexpr IsfSplit isfSplit(const Vsp16s (&codebook)[kElements][kSize], int first) {
    return {codebook[0], kSize, first, kElements};
}

// Of a bit rate: the two stages, or of comfort noise one.
VSP_INLINE IsfSplits isfSplits(Vsp32s mode) {
    if (mode == kModeDtx)
        return {{isfSplit(dico1_isf_noise, 0), isfSplit(dico2_isf_noise, 2), isfSplit(dico3_isf_noise, 5),
                 isfSplit(dico4_isf_noise, 8), isfSplit(dico5_isf_noise, 12)},
                5};
    if (mode == kMode660)
        return {{isfSplit(dico1_isf, 0), isfSplit(dico2_isf, 9), isfSplit(dico21_isf_36b, 0), isfSplit(dico22_isf_36b, 5),
                 isfSplit(dico23_isf_36b, 9)},
                5};
    return {{isfSplit(dico1_isf, 0), isfSplit(dico2_isf, 9), isfSplit(dico21_isf, 0), isfSplit(dico22_isf, 3),
             isfSplit(dico23_isf, 6), isfSplit(dico24_isf, 9), isfSplit(dico25_isf, 12)},
            7};
}

// The vector of indices.
VSP_INLINE void sumIsfSplits(const IsfSplits& splits, const Vsp16s* index, Vsp16s* sum) {
    for (int i = 0; i < kIsfOrder; i++) sum[i] = 0;
    for (int s = 0; s < splits.count; s++) {
        const IsfSplit& split = splits.split[s];
        for (int e = 0; e < split.elements; e++) {
            Vsp16s& element = sum[split.first + e];
            element = Add_16s(element, split.entries[e * split.size + index[s]]);
        }
    }
}

// The frequencies of an error of the prediction, which becomes the one before.
VSP_INLINE void predictIsf(const Vsp16s* error, Vsp16s* past, Vsp16s* isf) {
    for (int i = 0; i < kIsfOrder; i++) {
        isf[i] = Add_16s(Add_16s(error[i], mean_isf[i]), Mul_16s(kIsfPrediction, past[i]));
        past[i] = error[i];
    }
}

// Keeps the frequencies at a distance (`Reorder_isf`).
VSP_INLINE void reorderIsf(Vsp16s* isf) {
    constexpr Vsp16s kGap = 128;
    Vsp16s least = kGap;
    for (int i = 0; i < kIsfKnown; i++) {
        if (isf[i] < least) isf[i] = least;
        least = Add_16s(isf[i], kGap);
    }
}

}  // namespace vsp::VSP_LEVEL
