// The coder: any samples, octets and codes at changing rates, one call after the other on one state each.
#include "compare_levels.h"

namespace {

using namespace vsp::fuzz;

struct Rate : Kind {
    template <class P>
    Drawn<P> draw(Call& call) const {
        return {P(17 + call.in.take<std::uint8_t>() % 8)};
    }
};
constexpr Rate rate;

struct LawNumber : Kind {
    template <class P>
    Drawn<P> draw(Call& call) const {
        return {P(call.in.take<std::uint8_t>() % 3)};
    }
};
constexpr LawNumber law;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using vsp::Api;
    Input in(data, size);
    Bytes encoderMemory(88), decoderMemory(92);
    const State encoder(encoderMemory), decoder(decoderMemory);
    VSPSC_COMPARE(in, vspsEncodeInit_G726_16s8u, encoder, rate);
    VSPSC_COMPARE(in, vspsDecodeInit_G726_8u16s, decoder, rate);
    while (!in.empty()) switch (in.take<std::uint8_t>() % 8) {
            case 0: VSPSC_COMPARE(in, vspsEncodeInit_G726_16s8u, encoder, rate); break;
            case 1: VSPSC_COMPARE(in, vspsDecodeInit_G726_8u16s, decoder, rate); break;
            case 2: VSPSC_COMPARE(in, vspsEncodeSetRate_G726_16s8u, encoder, rate); break;
            case 3: VSPSC_COMPARE(in, vspsDecodeSetRate_G726_8u16s, decoder, rate); break;
            case 4: VSPSC_COMPARE(in, vspsEncode_G726_16s8u, array, array, length, encoder); break;
            case 5: VSPSC_COMPARE(in, vspsEncodePCM_G726_8u, array, array, length, law, encoder); break;
            case 6: VSPSC_COMPARE(in, vspsDecode_G726_8u16s, array, array, length, decoder); break;
            case 7: VSPSC_COMPARE(in, vspsDecodePCM_G726_8u, array, array, length, law, decoder); break;
        }
    return 0;
}
