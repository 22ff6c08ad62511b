// The level control: any settings and signals one after the other on one state.
#include "compare_levels.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vsp::fuzz;
    using vsp::Api;
    Input in(data, size);
    Bytes memory(124);
    const State state(memory);
    VSPSC_COMPARE(in, vspsALCInit_G169_16s, state);
    while (!in.empty()) switch (in.take<std::uint8_t>() % 8) {
            case 0: VSPSC_COMPARE(in, vspsALCInit_G169_16s, state); break;
            case 1: VSPSC_COMPARE(in, vspsALCSetLevel_G169_16s, state, value, value); break;
            case 2: VSPSC_COMPARE(in, vspsALCSetGain_G169_16s, state, value); break;
            default: VSPSC_COMPARE(in, vspsALC_G169_16s, array, array, length, state); break;
        }
    return 0;
}
