// The echo path models of ITU-T G.168 (2015) Annex D, D.2 to D.9: impulse responses of telephone hybrids at 8 kHz.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

struct G168Path {
    std::string_view name;  // d2 to d9
    double scale;           // h[n] = taps[n] * scale * 10^(-ERL/20)
    std::span<const std::int32_t> taps;
};

std::span<const G168Path> g168Paths();
