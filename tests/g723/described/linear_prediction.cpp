// Linear prediction of G.723.1.
#include "support/described.h"

namespace vsp::test {

static const Described functions("g723", {
                                             VSPSC_FUNCTION(vspsHighPassFilter_G723_16s_I, io(len), length(), io(2)),
                                             VSPSC_FUNCTION(vspsAutoCorr_G723_16s, in(180), out(11), out(1)),
                                             VSPSC_FUNCTION(vspsLevinsonDurbin_G723_16s, in(11), out(10), out(1), out(1)),
                                             VSPSC_FUNCTION(vspsSineDetect_G723_16s, in(4), io(1)),
                                             VSPSC_FUNCTION(vspsLPCToLSF_G723_16s, in(10), in(10), out(10).mayBe(1)),
                                             VSPSC_FUNCTION(vspsLSFQuant_G723_16s, in(10), in(10), out(3)),
                                             VSPSC_FUNCTION(vspsLSFDecode_G723_16s, in(3).unless(2, {1}).anyway(), in(10),
                                                            oneOf({0, 1}), out(10).mayBe(1)),
                                             VSPSC_FUNCTION(vspsLSFInterpolate_G723_16s, in(10), in(10), out(40)),
                                             VSPSC_FUNCTION(vspsLSFToLPC_G723_16s, in(10), out(10)),
                                         });

}  // namespace vsp::test
