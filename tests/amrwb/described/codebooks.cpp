// The adaptive and the algebraic codebook, and their gains.
#include "support/described.h"

namespace vsp::test {

namespace {

constexpr int kSubframe = 64;

const std::vector<Vsp64s> kRates{5, 9, 13, 15, 16, 18, 19, 20, 21};

Argument mode() { return oneOf(kRates); }
Argument modeOrSid() { return oneOf({5, 9, 13, 15, 16, 18, 19, 20, 21, 25}); }
Argument yesOrNo() { return range(0, 1); }
Argument exponent() { return range(-15, 15); }
Argument lagMin() { return range(34, 216); }

constexpr Limits kLag{34, 231}, kFraction{0, 3};
Argument delay() { return in(2).holding(vspStsRangeErr, {kLag, kFraction}); }

// In a relative subframe (argument 2) within the range from argument 1 on.
Argument delayOfRange() {
    return in(2).holding(vspStsRangeErr, [](const Values& v, int i) {
        return i == 1 ? kFraction : v[2] == 1 ? Limits{v[1], v[1] + 15} : kLag;
    });
}

// Bits of the indices of the algebraic codebook, by bit rate.
std::vector<int> pulseBits(Vsp64s rate) {
    switch (rate) {
        case 5:
        case 25: return {12};
        case 9:
        case 26: return {5, 5, 5, 5};
        case 27: return {9, 9, 5, 5};
        case 13:
        case 28: return {9, 9, 9, 9};
        case 15:
        case 29: return {13, 13, 9, 9};
        case 16:
        case 30: return {13, 13, 13, 13};
        case 18:
        case 31: return {2, 2, 2, 2, 14, 14, 14, 14};
        case 19:
        case 32: return {10, 10, 2, 2, 10, 10, 14, 14};
        case 20:
        case 21:
        case 22: return std::vector<int>(8, 11);
        default: return {};
    }
}

Argument codebookMode() { return oneOf({5, 9, 13, 15, 16, 18, 19, 20, 21, 22, 25, 26, 27, 28, 29, 30, 31, 32}); }

// By the rate at a place of the argument list.
Count indices(int rate) {
    return Count([=](const Values& v) { return Vsp64s(pulseBits(v[std::size_t(rate)]).size()); });
}

}  // namespace

static const Described codebooks(
    "amrwb",
    {
        VSPSC_FUNCTION(vspsImpulseResponse_AMRWB_16s, in(17), in(17), out(kSubframe)),
        VSPSC_FUNCTION(vspsAdaptiveCodebookSearch_AMRWB_16s, in(kSubframe), in(kSubframe), in(kSubframe).after(235),
                       lagMin(), yesOrNo(), mode(), out(2)),
        VSPSC_FUNCTION(vspsDelayEncode_AMRWB_16s, delayOfRange(), lagMin(), yesOrNo(), mode(), out(1)),
        VSPSC_FUNCTION(vspsDecodeAdaptiveVector_AMRWB_16s_I, delay(), io(kSubframe + 1).after(248)),
        VSPSC_FUNCTION(vspsAdaptiveCodebookGain_AMRWB_16s, in(kSubframe), in(kSubframe), mode(), yesOrNo(),
                       io(kSubframe + 1).after(1), out(kSubframe), out(kSubframe), out(4), out(1), out(1)),
        VSPSC_FUNCTION(vspsAdaptiveCodebookContribution_AMRWB_16s, value(), in(kSubframe), in(kSubframe),
                       out(kSubframe).mayBe({1, 2})),
        VSPSC_FUNCTION(vspsPitchGainClip_AMRWB_16s, mode(), in(2), out(1)),
        VSPSC_FUNCTION(vspsPitchGainClipISF_AMRWB_16s, in(16), modeOrSid(), io(2)),
        VSPSC_FUNCTION(vspsPitchGainClipGain_AMRWB_16s, value(), mode(), io(2)),
        VSPSC_FUNCTION(vspsPitchSharpen_AMRWB_16s_I, range(1, 32767), value(), io(len), length()),
        VSPSC_FUNCTION(
            vspsAlgebraicCodebookDecode_AMRWB_16s,
            in(indices(1))
                .holding(vspStsRangeErr,
                         [](const Values& v, int i) {
                             const auto bits = pulseBits(v[1]);
                             return std::size_t(i) < bits.size() ? Limits{0, (1 << bits[std::size_t(i)]) - 1} : Limits{};
                         }),
            codebookMode(), out(kSubframe)),
        VSPSC_FUNCTION(vspsAlgebraicCodebookSearch_AMRWB_16s, in(kSubframe), in(kSubframe), in(kSubframe), codebookMode(),
                       out(kSubframe), out(kSubframe), out(indices(3))),
        VSPSC_FUNCTION(vspsAlgebraicCodebookRandom_AMRWB_16s, io(1), out(kSubframe)),
        VSPSC_FUNCTION(vspsGainQuant_AMRWB_16s, in(kSubframe), in(kSubframe), in(kSubframe), in(kSubframe), in(4),
                       exponent(), mode(), yesOrNo(), io(4), io(1), out(1), out(1)),
        VSPSC_FUNCTION(vspsVoicingFactor_AMRWB_16s, in(kSubframe), exponent(), value(), in(kSubframe), value(), out(1)),
        VSPSC_FUNCTION(vspsExcitation_AMRWB_16s_I, in(kSubframe), value(), value(), io(kSubframe)),
        VSPSC_FUNCTION(vspsWeightedErrorUpdate_AMRWB_16s, in(kSubframe), in(kSubframe), in(kSubframe), value(), value(),
                       exponent(), out(1)),
    });

}  // namespace vsp::test
