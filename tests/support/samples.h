// Test material: fixed seeds, so that a failure repeats.
#pragma once

#include <cstdint>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "vspsc/types.h"

namespace vsp::test {

inline constexpr Vsp32s kLowest = std::numeric_limits<Vsp32s>::min();

// n values: mostly random ones of every magnitude, every fifth an extreme one.
template <class T = Vsp16s>
std::vector<T> samples(std::size_t n, unsigned seed = 1) {
    std::mt19937 random(seed);
    std::vector<T> values(n);
    for (T& value : values) {
        const bool extreme = random() % 5 == 0;
        if constexpr (std::is_floating_point_v<T>) {
            static constexpr T kExtremes[] = {T(-32768), T(-1), T(0), T(32767), T(0.5)};
            const T magnitude = T(1) / T(1u << random() % 16);
            value = extreme ? kExtremes[random() % 5] : magnitude * (T(random() % 65536) - T(32768));
        } else {
            static constexpr T kExtremes[] = {std::numeric_limits<T>::min(), T(-1), T(0), T(1),
                                              std::numeric_limits<T>::max()};
            const int shift = int(random() % std::numeric_limits<T>::digits);
            value = extreme ? kExtremes[random() % 5] : T(T(std::uint32_t(random())) >> shift);
        }
    }
    return values;
}

}  // namespace vsp::test
