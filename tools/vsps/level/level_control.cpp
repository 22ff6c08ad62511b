#include "level/level_control.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr std::size_t kPacket = 160;  // samples, 20 ms

}  // namespace

double LevelSettings::highestSample() const { return std::min(32767.0, std::floor(32768 / std::pow(10, limit / 20))); }

LevelControl::LevelControl(const LevelSettings& s) {
    const VspvLevelSettings settings{static_cast<Vsp32f>(s.target), static_cast<Vsp32f>(s.limit),
                                     static_cast<Vsp32f>(s.maxGain), 8};
    checkVoice(vspvLevelControlInit(control_.get(), &settings));
}

// Zeros fill up the last packet; what they become is dropped.
void LevelControl::process(std::span<const std::int16_t> in, std::span<std::int16_t> out) {
    const std::size_t whole = in.size() / kPacket * kPacket;
    if (whole > 0) checkVoice(vspvLevelControlProcess(control_.get(), in.data(), out.data(), Vsp32s(whole)));
    if (whole == in.size()) return;
    std::array<Vsp16s, kPacket> tail{};
    std::copy(in.begin() + std::ptrdiff_t(whole), in.end(), tail.begin());
    checkVoice(vspvLevelControlProcess(control_.get(), tail.data(), tail.data(), kPacket));
    std::copy_n(tail.begin(), in.size() - whole, out.begin() + std::ptrdiff_t(whole));
}
