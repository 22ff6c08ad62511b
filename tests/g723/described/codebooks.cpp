// The codebooks of G.723.1 and the taming.
#include "support/described.h"

namespace vsp::test {

namespace {

Argument rate() { return oneOf({2, 4}); }
Argument subframe() { return range(0, 3); }
Argument pairLag() { return range(18, 145); }

// Of a subframe whose number stands at a place of the argument list.
Argument searchedLag(std::size_t number) {
    return limited(vspStsRangeErr, [=](const Values& v) { return v[number] % 2 == 0 ? Limits{19, 140} : Limits{18, 141}; });
}
Count correlations(std::size_t number) {
    return Count([=](const Values& v) { return v[number] % 2 == 0 ? 60 : 80; });
}

// The last entry of the adaptive gains.
Limits entries(Vsp64s bitRate, Vsp64s lag) { return {0, bitRate == 4 && lag < 58 ? 84 : 169}; }

const Described functions(
    "g723",
    {
        VSPSC_FUNCTION(vspsAdaptiveCodebookCorr_G723_16s, in(60), in(60), in(145), searchedLag(4), subframe(),
                       out(correlations(4))),
        VSPSC_FUNCTION(vspsTamingTest_G723_16s, in(5), searchedLag(2), subframe(), value(), out(1)),
        VSPSC_FUNCTION(vspsTamingUpdate_G723_16s, code(18, 145), code(0, 3),
                       limited(vspStsCodeRangeErr, [](const Values& v) { return entries(v[3], v[0]); }), rate(), io(5)),
        VSPSC_FUNCTION(vspsGainQuant_G723_16s, in(correlations(2)), searchedLag(2), subframe(), range(0, 255),
                       oneOf({2, 4}, vspStsBadArgErr), out(1), out(1))
            .checks({vspStsNullPtrErr, vspStsBadArgErr, vspStsRangeErr}),
        VSPSC_FUNCTION(vspsDecodeAdaptiveVector_G723_16s, in(145), code(-42, 85), code(0, 3),
                       limited(vspStsCodeRangeErr, [](const Values& v) { return entries(v[4], v[1] + 60); }), rate(),
                       out(60)),
        VSPSC_FUNCTION(vspsAdaptiveCodebookContribution_G723_16s_I, in(60), in(60), io(60)),
        VSPSC_FUNCTION(vspsFixedCodebookSearch_MLQ_G723_16s, in(60), in(60), pairLag(), subframe(), out(60), out(1),
                       out(4)),
        VSPSC_FUNCTION(vspsFixedCodebookSearch_ACELP_G723_16s, in(60), in(60), range(17, 144), code(0, 169), io(1), out(60),
                       out(1), out(4)),
        VSPSC_FUNCTION(vspsExcitation_G723_16s, in(60), in(60), out(60)),
    });

}  // namespace

}  // namespace vsp::test
