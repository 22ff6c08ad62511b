// Step-size controllers. Their states know the number of taps and bands; described is one configuration of each.
#include "support/described.h"

namespace vsp::test {

namespace {

constexpr int kTaps = 6, kGroups = 2, kBands = 21, kFrame = 24, kRate = 8000, kFullbandTaps = 50;

const std::initializer_list<VspStatus> kOrder = {vspStsNullPtrErr, vspStsBadArgErr};

Argument bad(Vsp64s low, Vsp64s high) { return limited(vspStsBadArgErr, low, high); }
const Argument kRates = oneOf({8000, 16000}, vspStsBadArgErr);
Argument frameOf(std::size_t rate) {
    return limited(vspStsBadArgErr, [=](const Values& v) { return Limits{1, v[rate]}; }).anyway();
}

template <class State, class Init>
Argument stateOf(int bytes, Init init) {
    return state(bytes, [init](const Api& api, int, void* s) { init(api, static_cast<State*>(s)); }).alwaysInitialised();
}
constexpr int kSize = 116 + 4 * (2 * kGroups + 6 * kBands + 3 * kGroups * kBands);
const Argument kFloat = stateOf<VspSubbandControllerState_EC_32f>(
    kSize, [](const Api& api, auto* s) { api.vspsSubbandControllerInit_EC_32f(s, kTaps, kBands, kFrame, kRate); });
const Argument kFixed = stateOf<VspSubbandControllerState_EC_16s>(
    kSize, [](const Api& api, auto* s) { api.vspsSubbandControllerInit_EC_16s(s, kTaps, kBands, kFrame, kRate, -6, 27); });
const Argument kFixedDT = stateOf<VspSubbandControllerDTState_EC_16s>(kSize, [](const Api& api, auto* s) {
    api.vspsSubbandControllerDTInit_EC_16s(s, kTaps, kBands, kFrame, kRate, -6, 27);
});
const Argument kFullband_32f = stateOf<VspFullbandControllerState_EC_32f>(
    72, [](const Api& api, auto* s) { api.vspsFullbandControllerInit_EC_32f(s, kFullbandTaps, 40, kRate); });
const Argument kFullband_16s = stateOf<VspFullbandControllerState_EC_16s>(
    96, [](const Api& api, auto* s) { api.vspsFullbandControllerInit_EC_16s(s, kFullbandTaps, 40, kRate); });

const Argument kTapRows = rows(kTaps, in(kBands)), kBandsIn = in(kBands), kSteps = rows(kGroups, io(kBands));
const Argument kCount = bad(1, 0x7FFFFFFF).upTo(150);

}  // namespace

static const Described functions(
    "ec",
    {
        VSPSC_FUNCTION(vspsSubbandControllerGetSize_EC_32f, bad(1, 255), bad(1, 4097), frameOf(3), kRates, out(1))
            .checks(kOrder)
            .notRecorded(),
        VSPSC_FUNCTION(vspsSubbandControllerGetSize_EC_16s, bad(1, 255), bad(1, 4097), frameOf(3), kRates, out(1))
            .checks(kOrder)
            .notRecorded(),
        VSPSC_FUNCTION(vspsSubbandControllerDTGetSize_EC_16s, bad(1, 255), bad(1, 4097), frameOf(3), kRates, out(1))
            .checks(kOrder)
            .notRecorded(),
        VSPSC_FUNCTION(vspsSubbandControllerInit_EC_32f, kFloat, bad(1, 255).upTo(kTaps), bad(1, 4097).upTo(kBands),
                       frameOf(4), kRates)
            .checks(kOrder)
            .notRecorded(),
        VSPSC_FUNCTION(vspsSubbandControllerInit_EC_16s, kFixed, bad(1, 255).upTo(kTaps), bad(1, 4097).upTo(kBands),
                       frameOf(4), kRates, bad(-31, 31), bad(0, 31))
            .checks(kOrder)
            .notRecorded(),
        VSPSC_FUNCTION(vspsSubbandControllerDTInit_EC_16s, kFixedDT, bad(1, 255).upTo(kTaps), bad(1, 4097).upTo(kBands),
                       frameOf(4), kRates, bad(-31, 31), bad(0, 31))
            .checks(kOrder)
            .notRecorded(),
        VSPSC_FUNCTION(vspsSubbandControllerReset_EC_32f, kFloat, value()).notRecorded(),
        VSPSC_FUNCTION(vspsSubbandControllerReset_EC_16s, kFixed, value()).notRecorded(),
        VSPSC_FUNCTION(vspsSubbandControllerDTReset_EC_16s, kFixedDT, value()).notRecorded(),
        VSPSC_FUNCTION(vspsSubbandControllerUpdate_EC_32f, kTapRows, kBandsIn, kBandsIn, kTapRows, value(), kSteps,
                       out(kGroups), out(kBands), out(1), out(1), kFloat)
            .notRecorded(),
        VSPSC_FUNCTION(vspsSubbandControllerUpdate_EC_16s, kTapRows, kBandsIn, kBandsIn, kTapRows, kSteps, out(kGroups),
                       out(kBands), out(1), kFixed)
            .notRecorded(),
        VSPSC_FUNCTION(vspsSubbandControllerDTUpdate_EC_16s, kTapRows, kBandsIn, kBandsIn, kTapRows, value(), kSteps,
                       out(kGroups), out(kBands), out(1), out(1), kFixedDT)
            .notRecorded(),
        VSPSC_FUNCTION(vspsFullbandControllerGetSize_EC_32f, size(72)).notRecorded(),
        VSPSC_FUNCTION(vspsFullbandControllerGetSize_EC_16s, size(96)).notRecorded(),
        VSPSC_FUNCTION(vspsFullbandControllerInit_EC_32f, kFullband_32f, kCount.upTo(kFullbandTaps), frameOf(3), kRates)
            .checks(kOrder)
            .notRecorded(),
        VSPSC_FUNCTION(vspsFullbandControllerInit_EC_16s, kFullband_16s, kCount.upTo(kFullbandTaps), frameOf(3), kRates)
            .checks(kOrder)
            .notRecorded(),
        VSPSC_FUNCTION(vspsFullbandControllerReset_EC_32f, kFullband_32f, value()).notRecorded(),
        VSPSC_FUNCTION(vspsFullbandControllerReset_EC_16s, kFullband_16s, value()).notRecorded(),
        VSPSC_FUNCTION(vspsFullbandControllerUpdate_EC_32f, in(argument(3)).after(kFullbandTaps), in(argument(3)),
                       in(argument(3)), kCount, in(kFullbandTaps), value(), out(argument(3)), out(1), out(1), kFullband_32f)
            .checks(kOrder)
            .notRecorded(),
        VSPSC_FUNCTION(vspsFullbandControllerUpdate_EC_16s, in(argument(3)).after(kFullbandTaps), in(argument(3)),
                       in(argument(3)), kCount, in(kFullbandTaps), value(), out(argument(3)), out(1), out(1), kFullband_16s)
            .checks(kOrder)
            .notRecorded(),
    });

}  // namespace vsp::test
