// The parameters of a frame as octets: the bits of 3GPP TS 26.101 and TS 26.201 in the order in which RFC 4867 sends them.
#pragma once

#include "vspsc/types.h"

namespace vspv::rfc4867 {

constexpr Vsp32s kMaxBits = 477, kMaxWidth = 16;

struct ModeLayout {
    Vsp32s bits, parameters, firstSubframe;  // of a frame; parameters up to the first subframe's last
    const Vsp8u* widths;                     // bits of each parameter
    const Vsp16s* order;                     // bit k that is sent is this one
    const Vsp16s* places;                    // bit k of the parameters is sent as this one
    const Vsp16s* homing;                    // parameters of the decoder homing frame
};

inline Vsp32s bytesOf(const ModeLayout& layout) { return (layout.bits + 7) / 8; }

void pack(const ModeLayout& layout, const Vsp16s* parameters, Vsp8u* bytes);
void unpack(const ModeLayout& layout, const Vsp8u* bytes, Vsp16s* parameters);

// A silence descriptor has five octets with either codec: parameters of 35 bits, whether it is an update, the mode in
// force.
constexpr Vsp32s kSilenceBytes = 5, kUpdateBit = 35;

void packSilence(const Vsp8u* widths, Vsp32s number, const Vsp16s* parameters, bool update, Vsp8u* bytes);
void unpackSilence(const Vsp8u* widths, Vsp32s number, const Vsp8u* bytes, Vsp16s* parameters);

// Each bit of a frame is sent once.
template <Vsp32s kBits, Vsp32s kParameters>
constexpr bool isPermutation(const Vsp8u (&widths)[kParameters], const Vsp16s (&order)[kBits]) {
    Vsp32s sum = 0;
    bool sent[kBits] = {};
    for (const Vsp8u width : widths) {
        if (width < 1 || width > kMaxWidth) return false;
        sum += width;
    }
    for (const Vsp16s bit : order) {
        if (bit < 0 || bit >= kBits || sent[bit]) return false;
        sent[bit] = true;
    }
    return sum == kBits && kBits <= kMaxBits;
}

template <const auto& kOrder>
struct Places {
    Vsp16s of[sizeof kOrder / sizeof kOrder[0]] = {};

    constexpr Places() {
        Vsp16s k = 0;
        for (const Vsp16s bit : kOrder) of[bit] = k++;
    }
};
template <const auto& kOrder>
constexpr Places<kOrder> kPlaces;

template <const auto& kWidths, const auto& kOrder, const auto& kHoming>
constexpr ModeLayout layout(Vsp32s firstSubframe) {
    static_assert(isPermutation(kWidths, kOrder) && sizeof kHoming / sizeof kHoming[0] == sizeof kWidths);
    return {sizeof kOrder / sizeof kOrder[0], sizeof kWidths, firstSubframe, kWidths, kOrder, kPlaces<kOrder>.of, kHoming};
}

}  // namespace vspv::rfc4867
