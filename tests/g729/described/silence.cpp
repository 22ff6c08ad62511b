// Voice activity and music detectors, discontinuous transmission, comfort noise.
#include "support/described.h"

namespace vsp::test {

static void initVad(const Api& api, int, void* s) { api.vspsVADInit_G729B_16s(s); }
static void initVad32f(const Api& api, int, void* s) { api.vspsVADInit_G729B_32f(s); }
static void initMusic(const Api& api, int, void* s) { api.vspsMusicDetectInit_G729E_16s(s); }

static const Described functions(
    "g729", {
                VSPSC_FUNCTION(vspsVADGetSize_G729B_16s, size(88)).notRecorded(),
                VSPSC_FUNCTION(vspsVADInit_G729B_16s, state(88)).notRecorded(),
                VSPSC_FUNCTION(vspsVAD_G729B_16s, in(13), value(), value(), in(10), in(240), out(1), state(88, initVad))
                    .stream("vspsVAD_G729B_16s", -1, {item(1), item(2), item(3), item(4), item(5).at(119), result(6)})
                    .stream("vspsVADUpdate_G729B_16s", 1, {item(2), item(3), item(4), item(5), item(6).at(119), result(7)}),
                VSPSC_FUNCTION(vspsVADUpdate_G729B_16s, range(0, 1), state(88, initVad))
                    .stream("vspsVADUpdate_G729B_16s", 0, {item(2)}),
                VSPSC_FUNCTION(vspsVADGetSize_G729B_32f, size(172)).notRecorded(),
                VSPSC_FUNCTION(vspsVADInit_G729B_32f, state(172)).notRecorded(),
                VSPSC_FUNCTION(vspsVAD_G729B_32f, in(13), value(), in(10), in(240), out(1), state(172, initVad32f))
                    .stream("vspsVAD_G729B_32f", -1, {item(1), item(2), item(3), item(4).at(119), result(5)}),
                VSPSC_FUNCTION(vspsMusicDetectGetStateSize_G729E_16s, size(40)).notRecorded(),
                VSPSC_FUNCTION(vspsMusicDetectInit_G729E_16s, state(40)).notRecorded(),
                VSPSC_FUNCTION(vspsMusicDetect_G729E_16s, range(0, 2), value(), value(), in(10), in(5), in(5), range(0, 1),
                               range(0, 1), io(1).holding(vspStsRangeErr, 0, 1), state(40, initMusic))
                    .stream("vspsMusicDetect_G729E_16s")
                    .stream("vspsMusicDetect_G729E_16s+g"),
            });

}  // namespace vsp::test
