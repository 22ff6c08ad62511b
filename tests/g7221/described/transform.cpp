// The transforms: any samples, coefficients, memories and shifts.
#include "support/described.h"

namespace vsp::test {

static const Argument kSamples = oneOf({320, 640}, vspStsSizeErr);

static const Described functions("g7221",
                                 {
                                     VSPSC_FUNCTION(vspsDCTFwd_G722_16s, in(argument(2)), out(argument(2)), kSamples)
                                         .recorded({item(0), result(2), item(1)}, 3),
                                     VSPSC_FUNCTION(vspsDCTInv_G722_16s, in(argument(2)), out(argument(2)), kSamples)
                                         .recorded({item(0), result(2), item(1)}, 3),
                                     VSPSC_FUNCTION(vspsMLTAnalysis_G722_16s, in(argument(1)), kSamples, io(argument(1)),
                                                    out(argument(1)), out(1))
                                         .recorded({item(0), item(1), item(2).to(3), result(4), result(5)}, 6),
                                     VSPSC_FUNCTION(vspsMLTSynthesis_G722_16s, in(argument(2)), value(), kSamples,
                                                    io([](const Values& v) { return v[2] / 2; }), out(argument(2)))
                                         .recorded({item(0), item(1), item(2), item(3).to(4), result(5)}, 6),
                                 });

}  // namespace vsp::test
