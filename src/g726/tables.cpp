#include "g726/tables.h"

namespace vsp {

namespace {

struct Level {
    int decision;  // smallest normalised log-magnitude of the difference signal that this level codes
    Vsp16s logMagnitude, scale, speed;
};

template <int kLevels>
consteval G726Quantiser quantiserOf(const Level (&levels)[kLevels]) {
    G726Quantiser q{};
    for (int i = 0; i < kLevels; i++) {
        q.levels[i] = {levels[i].logMagnitude, levels[i].scale, levels[i].speed, 0};
        for (int log = levels[i].decision; log < -kG726LowestLog; log++) q.magnitude[log - kG726LowestLog] = Vsp8u(i);
    }
    return q;
}

// Each level is decoded to a value between its decision and the next, and louder ones move the scale factor further.
template <int kLevels>
consteval bool ascends(const Level (&levels)[kLevels]) {
    for (int i = 0; i < kLevels; i++) {
        if (levels[i].decision > levels[i].logMagnitude && levels[i].logMagnitude != kG726LowestLog) return false;
        if (i == 0) continue;
        if (levels[i].decision <= levels[i - 1].logMagnitude || levels[i].decision <= levels[i - 1].decision) return false;
        if (levels[i].scale < levels[i - 1].scale || levels[i].speed < levels[i - 1].speed) return false;
    }
    return levels[0].decision == kG726LowestLog;
}

constexpr Level kLevels2[2] = {{-2048, 116, -22, 0}, {261, 365, 439, 7}};
constexpr Level kLevels3[4] = {{-2048, -2048, -4, 0}, {8, 135, 30, 1}, {218, 273, 137, 2}, {331, 373, 582, 7}};
constexpr Level kLevels4[8] = {
    {-2048, -2048, -12, 0}, {-124, 4, 18, 0},   {80, 135, 41, 0},   {178, 213, 64, 1},
    {246, 273, 112, 1},     {300, 323, 198, 1}, {349, 373, 355, 3}, {400, 425, 1122, 7},
};
constexpr Level kLevels5[16] = {
    {-2048, -2048, 14, 0}, {-122, -66, 14, 0}, {-16, 28, 24, 0},   {68, 104, 39, 0},
    {139, 169, 40, 0},     {198, 224, 41, 1},  {250, 274, 58, 1},  {298, 318, 100, 1},
    {339, 358, 141, 1},    {378, 395, 179, 1}, {413, 429, 219, 2}, {445, 459, 280, 3},
    {475, 488, 358, 4},    {502, 514, 440, 5}, {528, 539, 529, 6}, {553, 566, 696, 6},
};
static_assert(ascends(kLevels2) && ascends(kLevels3) && ascends(kLevels4) && ascends(kLevels5));

}  // namespace

constexpr G726Quantiser g726Quantisers[4] = {
    quantiserOf(kLevels2),
    quantiserOf(kLevels3),
    quantiserOf(kLevels4),
    quantiserOf(kLevels5),
};

}  // namespace vsp
