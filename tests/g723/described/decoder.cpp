// The decoder of G.723.1: fixed codes, erasures, post-filters.
#include "support/described.h"

namespace vsp::test {

static const Argument lag = range(18, 145), subframe = range(0, 3), rate = oneOf({2, 4});

static bool usesSeed(const Values& v) { return v[0] == 0 && v[2] < 3; }

static const Described functions(
    "g723", {
                VSPSC_FUNCTION(vspsFixedCodebookDecode_MLQ_G723_16s,
                               in(4).holding(vspStsCodeRangeErr, {{0, 23}, {0, 1}, {0, 1}, {0, 63}}), code(0, 0x7FFFFFFF),
                               lag, subframe, out(60)),
                VSPSC_FUNCTION(vspsFixedCodebookDecode_ACELP_G723_16s,
                               in(4).holding(vspStsCodeRangeErr, {{0, 23}, {0, 1}, {}, {0, 15}}), code(0, 4095),
                               range(17, 144), code(0, 169), out(60)),
                VSPSC_FUNCTION(vspsErasureGain_G723_16s,
                               limited(vspStsCodeRangeErr,
                                       [](const Values& v) {
                                           return v[2] == 0 ? Limits{0, 23} : Limits{};
                                       }),
                               limited(vspStsCodeRangeErr,
                                       [](const Values& v) {
                                           return v[2] == 0 ? Limits{0, 23} : Limits{};
                                       }),
                               oneOf({0, 1}), io(1)),
                VSPSC_FUNCTION(vspsErasureClassify_G723_16s, in(385), lag, out(1), out(1)),
                VSPSC_FUNCTION(vspsErasureConceal_G723_16s,
                               value().holdingOneOf(vspStsRangeErr,
                                                    [] {
                                                        std::vector<Vsp64s> delays{0};
                                                        for (Vsp64s d = 15; d <= 145; d++) delays.push_back(d);
                                                        return delays;
                                                    }()),
                               value(), range(1, 3), io(145), io(1).when(usesSeed).anyway(), out(240)),
                VSPSC_FUNCTION(vspsPitchPostFilterSearch_G723_16s, in(385), lag, subframe, rate, out(1), out(1), out(1)),
                VSPSC_FUNCTION(vspsPitchPostFilter_G723_16s, in(385),
                               limited(vspStsRangeErr,
                                       [](const Values& v) {
                                           const Vsp64s ahead = 180 - 60 * v[4];
                                           return Limits{-145, ahead < 145 ? ahead : 145};
                                       }),
                               value(), value(), subframe, out(60)),
                VSPSC_FUNCTION(vspsSynthesisFilter_G723_16s, in(10), in(len), out(len), length(), io(10)),
                VSPSC_FUNCTION(vspsFormantPostFilter_G723_16s_I, in(10), io(60), io(10), io(10), io(1), out(1)),
                VSPSC_FUNCTION(vspsGainControl_G723_16s_I, limited(vspStsBadArgErr, 0, 0x7FFFFFFF), io(60), io(1))
                    .checks({vspStsNullPtrErr, vspStsBadArgErr}),
            });

}  // namespace vsp::test
