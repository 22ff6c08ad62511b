// Decoding of prefix codes: the first bits by a table, the rest of long codes along a tree.
#pragma once

#include "core/inline.h"
#include "vspsc/types.h"

namespace vsp {

constexpr int kLongestCode = 16;

// A tree has two children a node; a positive one is a node, the others are negated symbols.
template <int nodes, int quickBits>
struct PrefixDecoder {
    struct Entry {
        Vsp16s child;  // as in the tree
        Vsp8u bits;    // of the code, or quickBits and more follow
    };
    Vsp16s tree[nodes][2];
    Entry quick[1 << quickBits];
    static constexpr int firstBits = quickBits;
};

struct DecodedSymbol {
    int symbol, bits;
};

// The code at the top of 32 bits.
template <int nodes, int quickBits>
VSP_INLINE constexpr DecodedSymbol decodeSymbol(const PrefixDecoder<nodes, quickBits>& code, Vsp32u top) {
    const auto entry = code.quick[top >> (32 - quickBits)];
    int child = entry.child, bits = entry.bits;
    for (; child > 0; bits++) child = code.tree[child][(top >> (31 - bits)) & 1];
    return {-child, bits};
}

template <int nodes, int quickBits, int n>
constexpr PrefixDecoder<nodes, quickBits> prefixDecoder(const Vsp16s (&tree)[n]) {
    static_assert(n <= 2 * nodes);
    PrefixDecoder<nodes, quickBits> code = {};
    for (int i = 0; i < n; i++) code.tree[i / 2][i % 2] = tree[i];
    for (int first = 0; first < 1 << quickBits; first++) {
        int child = tree[(first >> (quickBits - 1)) & 1], bits = 1;
        for (; child > 0 && bits < quickBits; bits++) child = tree[2 * child + ((first >> (quickBits - 1 - bits)) & 1)];
        code.quick[first] = {Vsp16s(child), Vsp8u(bits)};
    }
    return code;
}

// Whether the codes of the encoder are what the decoder reads, for every symbol that the tree has.
template <int nodes, int quickBits, class Codes, class Lengths>
constexpr bool readsWhatIsWritten(const PrefixDecoder<nodes, quickBits>& code, const Codes& codes, const Lengths& lengths) {
    for (const auto& children : code.tree)
        for (const Vsp16s child : children) {
            if (child > 0) continue;
            const auto found = decodeSymbol(code, Vsp32u(codes[-child]) << (32 - lengths[-child]));
            if (found.symbol != -child || found.bits != lengths[-child]) return false;
        }
    return true;
}

}  // namespace vsp
