// GSM full rate: any frames, parameters and memories.
#include "compare_levels.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vsp::fuzz;
    using vsp::Api;
    Input in(data, size);
    Bytes inputMemory(12), pastMemory(240), latticeMemory(16), outputMemory(2);
    const State input(inputMemory), past(pastMemory), lattice(latticeMemory), output(outputMemory);
    const Array frame(160), subframe(40), pulses(13), eight(8), nine(9), history(120);
    while (!in.empty()) switch (in.take<std::uint8_t>() % 16) {
            case 0: VSPSC_COMPARE(in, vspsPreprocess_GSMFR_16s, frame, frame, input); break;
            case 1: VSPSC_COMPARE(in, vspsAutoCorr_GSMFR_16s32s, frame, nine); break;
            case 2: VSPSC_COMPARE(in, vspsSchur_GSMFR_32s16s, nine, eight); break;
            case 3: VSPSC_COMPARE(in, vspsLARQuantEncode_GSMFR_16s, eight, eight); break;
            case 4: VSPSC_COMPARE(in, vspsLARQuantDecode_GSMFR_16s, eight, eight); break;
            case 5: VSPSC_COMPARE(in, vspsShortTermAnalysisFilter_GSMFR_16s_I, eight, eight, frame, lattice); break;
            case 6: VSPSC_COMPARE(in, vspsLongTermPredict_GSMFR_16s, subframe, history, subframe, one, one); break;
            case 7: VSPSC_COMPARE(in, vspsWeightingFilter_GSMFR_16s, subframe, subframe); break;
            case 8: VSPSC_COMPARE(in, vspsRPEGridSelect_GSMFR_16s, subframe, pulses, one); break;
            case 9: VSPSC_COMPARE(in, vspsRPEQuantEncode_GSMFR_16s, pulses, pulses, one); break;
            case 10: VSPSC_COMPARE(in, vspsRPEScaleDecode_GSMFR_16s, value, one, one); break;
            case 11: {
                const Given scale(in.take<std::uint8_t>() % 13 - 1);
                VSPSC_COMPARE(in, vspsRPEQuantDecode_GSMFR_16s, pulses, pulses, value, scale);
                break;
            }
            case 12: VSPSC_COMPARE(in, vspsRPEGridPosition_GSMFR_16s, pulses, subframe, value); break;
            case 13: VSPSC_COMPARE(in, vspsLongTermSynthesis_GSMFR_16s, subframe, past, subframe, value, value, one); break;
            case 14: VSPSC_COMPARE(in, vspsShortTermSynthesisFilter_GSMFR_16s, eight, eight, frame, frame, lattice); break;
            default: VSPSC_COMPARE(in, vspsPostprocess_GSMFR_16s_I, frame, output); break;
        }
    return 0;
}
