#include "level/level_control.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <string>

namespace {

constexpr std::size_t kPacket = 160;  // samples, 20 ms

void check(VspStatus status) {
    if (status != vspStsNoErr) throw std::logic_error("level control: status " + std::to_string(status));
}

}  // namespace

double LevelSettings::highestSample() const { return std::min(32767.0, std::floor(32768 / std::pow(10, limit / 20))); }

LevelControl::LevelControl(const LevelSettings& s) {
    Vsp32s size = 0;
    check(vspsALCGetStateSize_G169_16s(&size));
    memory_.resize((static_cast<std::size_t>(size) + sizeof(double) - 1) / sizeof(double));
    check(vspsALCInit_G169_16s(state()));
    check(vspsALCSetLevel_G169_16s(state(), static_cast<Vsp32f>(s.target), static_cast<Vsp32f>(s.limit)));
    check(vspsALCSetGain_G169_16s(state(), static_cast<Vsp32f>(s.maxGain)));
}

// Zeros fill up the last packet; what they become is dropped.
void LevelControl::process(std::span<const std::int16_t> in, std::span<std::int16_t> out) {
    std::size_t i = 0;
    for (; i + kPacket <= in.size(); i += kPacket) check(vspsALC_G169_16s(in.data() + i, out.data() + i, kPacket, state()));
    if (i == in.size()) return;
    std::array<Vsp16s, kPacket> tail{};
    std::copy(in.begin() + std::ptrdiff_t(i), in.end(), tail.begin());
    check(vspsALC_G169_16s(tail.data(), tail.data(), kPacket, state()));
    std::copy_n(tail.begin(), in.size() - i, out.begin() + std::ptrdiff_t(i));
}

VspALCState_G169_16s* LevelControl::state() { return reinterpret_cast<VspALCState_G169_16s*>(memory_.data()); }
