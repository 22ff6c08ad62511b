// The detectors: any frames one after the other on records of any content.
#include "compare_levels.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vsp::fuzz;
    using vsp::Api;
    Input in(data, size);
    Bytes record1(sizeof(VspGSMAMRVad1State)), record2(sizeof(VspGSMAMRVad2State));
    const State state1(record1), state2(record2);
    const Array frame1(200), frame2(160), words(128);
    while (!in.empty()) switch (in.take<std::uint8_t>() % 8) {
            case 0: in.fill(record1.data(), record1.size()); break;
            case 1: in.fill(record2.data(), record2.size()); break;
            case 2: VSPSC_COMPARE(in, vspsFFTFwd_RToPerm_GSMAMR_16s_I, words); break;
            case 3:
            case 4: VSPSC_COMPARE(in, vspsVAD1_GSMAMR_16s, frame1, state1, one, value, value); break;
            default: VSPSC_COMPARE(in, vspsVAD2_GSMAMR_16s, frame2, state2, one, value); break;
        }
    return 0;
}
