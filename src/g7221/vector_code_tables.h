// Constant tables of the vectors of coefficients. Category 7 codes nothing.
#pragma once

#include "g7221/layout.h"
#include "g7221/prefix_code.h"

namespace vsp {

constexpr int kCategories = 8, kCodedCategories = 7;

// The vectors that a region of a category has, and how many values an element can have (`max_bin` + 1).
struct VectorShape {
    int dimension, vectors, levels, symbols, firstSymbol;
};
constexpr VectorShape kVectorShapes[kCodedCategories] = {
    {2, 10, 14, 196, 0}, {2, 10, 10, 100, 196}, {2, 10, 7, 49, 296}, {4, 5, 5, 625, 345},
    {4, 5, 4, 256, 970}, {5, 4, 3, 243, 1226},  {5, 4, 2, 32, 1469},
};
constexpr int kAllSymbols = 1501;

constexpr Vsp8u expected_bits_table[kCategories] = {52, 47, 43, 37, 29, 22, 16, 0};
constexpr Vsp16s step_size_inverse_table[kCategories] = {23167, 16384, 11585, 8192, 5793, 4096, 2896, 2896};
constexpr Vsp16s int_dead_zone[kCategories] = {2457, 2703, 2949, 3195, 3440, 3686, 4096, 4096};
constexpr Vsp16s int_dead_zone_low_bits[kCategories] = {2, 1, 0, 0, 3, 2, 0, 0};

extern const Vsp16s mlt_quant_centroid[kCategories][16];

// The symbols of all categories, one category after the other.
struct VectorCodes {
    struct Written {
        Vsp16u code;
        Vsp8u length, bits;  // bits: of the code and of the signs of what is not zero
    };
    struct Digits {
        Vsp8u digit[7], signs;
    };
    Written written[kAllSymbols];
    Digits digits[kAllSymbols];
};
extern const VectorCodes vectorCodes;

constexpr int kVectorNodes = 519;
using VectorDecoder = PrefixDecoder<kVectorNodes, 8>;
extern const VectorDecoder vectorDecoders[kCodedCategories];

// Of up to five signs, the first one in the lowest bit, those where a bit says that there is one; the first one on top.
struct CompressedSigns {
    Vsp8u of[32][32];
};
extern const CompressedSigns signsOfUsed;

}  // namespace vsp
