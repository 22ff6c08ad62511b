// Interpolation filters of past excitations: one FIR filter per fraction, its taps in the order of the samples.
#pragma once

#include "vspsc/types.h"

namespace vsp {

constexpr int kSideTaps = 10, kAdaptiveTaps = 2 * kSideTaps;

// While no sample is larger no partial sum of doubled products with the taps of a filter can leave 32 bits.
constexpr int kMaxExactSample = 17400;

// Makes the filters from a reference table of Steps values per sample.
template <class T, int Steps>
struct FractionFilters {
    T taps[Steps][kAdaptiveTaps];

    template <int N>
    static consteval FractionFilters from(const Vsp16s (&table)[N], T one) {
        static_assert(N == kSideTaps * Steps + 1);
        FractionFilters filters{};
        for (int f = 0; f < Steps; f++)
            for (int i = 0; i < kSideTaps; i++) {
                filters.taps[f][kSideTaps - 1 - i] = T(table[f + Steps * i] * one);
                filters.taps[f][kSideTaps + i] = T(table[Steps - f + Steps * i] * one);
            }
        return filters;
    }

    consteval bool keepsSamplesExact() const {
        for (const auto& filter : taps) {
            Vsp64s sum = 0;
            for (const T tap : filter) sum += tap < 0 ? -tap : tap;
            if (sum * kMaxExactSample >= 1 << 30) return false;
        }
        return true;
    }
};

}  // namespace vsp
