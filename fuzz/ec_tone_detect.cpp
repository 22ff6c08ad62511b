// The tone detectors: any signals in calls of any length, one after the other on one state each.
#include "compare_levels.h"

namespace {

using namespace vsp::fuzz;

struct Rate : Kind {
    template <class P>
    Drawn<P> draw(Call& call) const {
        return {call.in.take<std::uint8_t>() % 2 == 0 ? 8000 : 16000};
    }
};
constexpr Rate rate;

// Floats of any size but no NaN: of two in one operation the processor keeps the one that the compiler has put first.
struct Numbers : Kind {
    template <class P>
    Drawn<P> draw(Call& call) const {
        const Drawn<P> drawn = array.draw<P>(call);
        if (drawn.block < 0) return drawn;
        Bytes& block = call.blocks[std::size_t(drawn.block)];
        for (std::size_t i = 0; i + 4 <= block.size(); i += 4) {
            std::uint32_t bits = 0;
            std::memcpy(&bits, &block[i], sizeof bits);
            if ((bits & 0x7F800000) == 0x7F800000) bits &= ~0x00800000u;
            std::memcpy(&block[i], &bits, sizeof bits);
        }
        return drawn;
    }
};
constexpr Numbers numbers;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using vsp::Api;
    Input in(data, size);
    Bytes memory_16s(72), memory_32f(80);
    const State state_16s(memory_16s), state_32f(memory_32f);
    VSPSC_COMPARE(in, vspsToneDetectInit_EC_16s, state_16s, rate);
    VSPSC_COMPARE(in, vspsToneDetectInit_EC_32f, state_32f, rate);
    while (!in.empty()) switch (in.take<std::uint8_t>() % 8) {
            case 0: VSPSC_COMPARE(in, vspsToneDetectInit_EC_16s, state_16s, rate); break;
            case 1: VSPSC_COMPARE(in, vspsToneDetectInit_EC_32f, state_32f, rate); break;
            case 2:
            case 3:
            case 4: VSPSC_COMPARE(in, vspsToneDetect_EC_16s, array, length, one, state_16s); break;
            default: VSPSC_COMPARE(in, vspsToneDetect_EC_32f, numbers, length, one, state_32f); break;
        }
    return 0;
}
