#include "level/level_control.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "console/progress.h"
#include "vspsc.h"

namespace {

constexpr std::size_t kBlock = 160;  // samples, a 20 ms packet

void check(VspStatus status) {
    if (status != vspStsNoErr) throw std::logic_error("level control: status " + std::to_string(status));
}

// The state object of the library.
class LevelControl {
  public:
    explicit LevelControl(const LevelSettings& s) {
        Vsp32s size = 0;
        check(vspsALCGetStateSize_G169_16s(&size));
        memory_.resize((static_cast<std::size_t>(size) + sizeof(Vsp64f) - 1) / sizeof(Vsp64f));
        check(vspsALCInit_G169_16s(state()));
        check(vspsALCSetLevel_G169_16s(state(), static_cast<Vsp32f>(s.target), static_cast<Vsp32f>(s.limit)));
        check(vspsALCSetGain_G169_16s(state(), static_cast<Vsp32f>(s.maxGain)));
    }

    void process(const Vsp16s* in, Vsp16s* out) { check(vspsALC_G169_16s(in, out, kBlock, state())); }

  private:
    VspALCState_G169_16s* state() { return reinterpret_cast<VspALCState_G169_16s*>(memory_.data()); }

    std::vector<Vsp64f> memory_;
};

// Zeros fill up the last block; what they become is dropped.
void run(LevelControl& control, const Samples& in, Samples& out, Progress& progress) {
    std::size_t i = 0;
    for (; i + kBlock <= in.size(); i += kBlock) {
        control.process(in.data() + i, out.data() + i);
        progress.advance(kBlock);
    }
    std::array<Vsp16s, kBlock> tail{};
    std::copy(in.begin() + static_cast<std::ptrdiff_t>(i), in.end(), tail.begin());
    if (i < in.size()) control.process(tail.data(), tail.data());
    std::copy_n(tail.begin(), in.size() - i, out.begin() + static_cast<std::ptrdiff_t>(i));
}

}  // namespace

Samples controlLevel(const Samples& in, const LevelSettings& settings) {
    LevelControl control(settings);
    Samples out(in.size());
    Progress progress("controlling the level", in.size() * (settings.twoPass ? 2 : 1));
    if (settings.twoPass) run(control, in, out, progress);
    run(control, in, out, progress);
    return out;
}
