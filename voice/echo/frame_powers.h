// How a frame of the near end compares with what the estimated echo leaves of it, in bands.
#pragma once

#include "echo/samples.h"

namespace vspv {

struct FramePowers {
    static constexpr float kQuieter = 0.5f, kLouder = 2;

    float estimate, left;  // over all bands
    int quieter, louder;   // bands that are clearly so in what is left

    template <class Arithmetic, class Complex = typename Arithmetic::Complex>
    static FramePowers of(const Complex* near, const Complex* estimate, const Complex* left, int bands) {
        constexpr float kUnit = Arithmetic::kBand;
        Four sums[2][4] = {};
        FourFlags flags[2] = {};
        const auto add = [&](std::size_t part, Four before, Four echo, Four after) {
            sums[0][part] += echo;
            sums[1][part] += after;
            flags[0] -= after < kQuieter * before;
            flags[1] -= after > kLouder * before;
        };
        int k = 0;
        for (; k + 16 <= bands; k += 16)
            for (int i = 0; i < 16; i += 4) {
                const int n = k + i;
                add(static_cast<std::size_t>(i / 4), powersOf(near + n, kUnit), powersOf(estimate + n, kUnit),
                    powersOf(left + n, kUnit));
            }
        for (int i = 0; k + i < bands; i++) {
            const auto alone = [&](const Complex* x) {
                Four power{};
                power[i % 4] = powerOf(inFloat(x[k + i], kUnit));
                return power;
            };
            add(static_cast<std::size_t>(i / 4), alone(near), alone(estimate), alone(left));
        }
        const auto count = [](FourFlags x) { return x[0] + x[1] + x[2] + x[3]; };
        return {sumOf(sums[0]), sumOf(sums[1]), count(flags[0]), count(flags[1])};
    }
};

}  // namespace vspv
