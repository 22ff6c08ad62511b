// G.722: any samples and codes one after the other through both coders and filters, and the concealment with any history.
#include "compare_levels.h"

namespace {

using namespace vsp::fuzz;

// Four frames of the call's length and a count before them.
struct History : Kind {
    template <class P>
    Drawn<P> draw(Call& call) const {
        const std::size_t n = call.len < 1 ? 1 : std::size_t(call.len);
        Bytes block((4 * n + 1) * sizeof(Vsp16s));
        call.in.fill(block.data(), std::min<std::size_t>(block.size(), 8));
        if (call.in.take<std::uint8_t>() % 4 != 0) {  // mostly a count that the function leaves
            block[0] &= std::byte(7);
            block[1] = std::byte(0);
        }
        call.blocks.push_back(block);
        return {int(call.blocks.size()) - 1};
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using vsp::Api;
    Input in(data, size);
    Bytes encoderMemory(144), decoderMemory(144), analysisMemory(48), synthesisMemory(48);
    const State encoder(encoderMemory), decoder(decoderMemory), analysis(analysisMemory), synthesis(synthesisMemory);
    const Array bands(600);
    const History history;
    VSPSC_COMPARE(in, vspsSBADPCMEncodeInit_G722_16s, encoder);
    VSPSC_COMPARE(in, vspsSBADPCMDecodeInit_G722_16s, decoder);
    while (!in.empty()) switch (in.take<std::uint8_t>() % 8) {
            case 0: VSPSC_COMPARE(in, vspsConcealCodes_G722_16s_I, array, length, value, history); break;
            case 1: VSPSC_COMPARE(in, vspsQMFAnalysis_G722_16s, array, array, length, analysis); break;
            case 2: VSPSC_COMPARE(in, vspsQMFSynthesis_G722_16s, array, array, length, synthesis); break;
            case 3:
            case 4: VSPSC_COMPARE(in, vspsSBADPCMEncode_G722_16s, array, array, length, encoder); break;
            default: {
                const Given mode(in.take<std::uint8_t>() % 5);
                VSPSC_COMPARE(in, vspsSBADPCMDecode_G722_16s, array, bands, length, mode, decoder);
                break;
            }
        }
    return 0;
}
