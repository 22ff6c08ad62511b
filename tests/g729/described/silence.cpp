// Voice activity and music detectors, discontinuous transmission, comfort noise.
#include "support/described.h"

namespace vsp::test {

static void initVad(const Api& api, int, void* s) { api.vspsVADInit_G729B_16s(s); }
static void initVad32f(const Api& api, int, void* s) { api.vspsVADInit_G729B_32f(s); }
static void initMusic(const Api& api, int, void* s) { api.vspsMusicDetectInit_G729E_16s(s); }

static void initDtx(const Api& api, int, void* s) { api.vspsDTXInit_G729B_16s(s); }
static void initCng(const Api& api, int, void* s) { api.vspsCNGInit_G729B_16s(s); }

// The indices of a silence descriptor, where there is one.
static Limits descriptor(const Values& values, int element) {
    static constexpr int kLast[4] = {1, 31, 15, 31};
    return values[0] == 2 ? Limits{0, kLast[element]} : Limits{};
}

static const Described functions(
    "g729",
    {
        VSPSC_FUNCTION(vspsVADGetSize_G729B_16s, size(88)).notRecorded(),
        VSPSC_FUNCTION(vspsVADInit_G729B_16s, state(88)).notRecorded(),
        VSPSC_FUNCTION(vspsVAD_G729B_16s, in(13), value(), value(), in(10), in(240), out(1), state(88, initVad))
            .stream("vspsVAD_G729B_16s", -1, {item(1), item(2), item(3), item(4), item(5).at(119), result(6), unrecorded()})
            .stream("vspsVADUpdate_G729B_16s", 1,
                    {item(2), item(3), item(4), item(5), item(6).at(119), result(7), unrecorded()}),
        VSPSC_FUNCTION(vspsVADUpdate_G729B_16s, range(0, 1), state(88, initVad))
            .stream("vspsVADUpdate_G729B_16s", 0, {item(2), unrecorded()}),
        VSPSC_FUNCTION(vspsVADGetSize_G729B_32f, size(172)).notRecorded(),
        VSPSC_FUNCTION(vspsVADInit_G729B_32f, state(172)).notRecorded(),
        VSPSC_FUNCTION(vspsVAD_G729B_32f, in(13), value(), in(10), in(240), out(1), state(172, initVad32f))
            .stream("vspsVAD_G729B_32f", -1, {item(1), item(2), item(3), item(4).at(119), result(5), unrecorded()}),
        VSPSC_FUNCTION(vspsMusicDetectGetStateSize_G729E_16s, size(40)).notRecorded(),
        VSPSC_FUNCTION(vspsMusicDetectInit_G729E_16s, state(40)).notRecorded(),
        VSPSC_FUNCTION(vspsMusicDetect_G729E_16s, range(0, 2), value(), value(), in(10), in(5), in(5), range(0, 1),
                       range(0, 1), io(1).holding(vspStsRangeErr, 0, 1), state(40, initMusic))
            .stream("vspsMusicDetect_G729E_16s")
            .stream("vspsMusicDetect_G729E_16s+g"),
        VSPSC_FUNCTION(vspsDTXGetStateSize_G729B_16s, size(208)).notRecorded(),
        VSPSC_FUNCTION(vspsDTXInit_G729B_16s, state(208)).notRecorded(),
        // Recorded with the high words of the autocorrelation alone: g729/silence.cpp runs the streams.
        VSPSC_FUNCTION(vspsDTXUpdate_G729B_16s, in(11), value(), range(0, 1), state(208, initDtx)).notRecorded(),
        VSPSC_FUNCTION(vspsDTXEncode_G729B_16s, range(0, 1), io(80).after(154), io(10), io(40), io(1), io(13), io(4),
                       out(22), out(1), io(4), state(208, initDtx))
            .notRecorded(),
        VSPSC_FUNCTION(vspsDTXEncode_G729A_16s, range(0, 1), io(80).after(154), io(10), io(40), io(1), io(13), io(4),
                       out(22), out(1), io(4), state(208, initDtx))
            .notRecorded(),
        VSPSC_FUNCTION(vspsCNGGetStateSize_G729B_16s, size(24)).notRecorded(),
        VSPSC_FUNCTION(vspsCNGInit_G729B_16s, state(24)).notRecorded(),
        VSPSC_FUNCTION(vspsCNGDecode_G729B_16s, oneOf({0, 2}), in(4).holding(vspStsCodeRangeErr, descriptor), range(0, 2),
                       value(), value(), io(80).after(154), io(10), io(40), io(1), out(22), state(24, initCng))
            .stream("vspsCNGDecode_G729B_16s", -1,
                    {item(1), item(2), item(3), item(4), item(5), item(6).to(10).resultAt(154), item(7).to(11),
                     item(8).to(12), item(9).to(13), result(14), unrecorded()}),
        VSPSC_FUNCTION(vspsCNGDecode_G729D_16s, oneOf({0, 2}), in(4).holding(vspStsCodeRangeErr, descriptor), range(0, 2),
                       value(), value(), io(80).after(154), io(10), io(40), io(1), out(22), out(4), state(24, initCng))
            .stream("vspsCNGDecode_G729D_16s"),
        VSPSC_FUNCTION(vspsCNGEnergy_G729B_16s, in(80), out(1), out(1))
            .recorded("vspsCNGEnergy_G729B_16s", {item(0), result(1), result(2)}),
    });

}  // namespace vsp::test
