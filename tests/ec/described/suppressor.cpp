// The residual echo suppressor. Its state knows the number of bands; described is one configuration.
#include "support/described.h"

namespace vsp::test {

namespace {

constexpr int kBands = 21, kFrame = 24, kRate = 8000, kSize = 52 + 9 * 4 * kBands;

const std::initializer_list<VspStatus> kOrder = {vspStsNullPtrErr, vspStsBadArgErr};
Argument bad(Vsp64s low, Vsp64s high) { return limited(vspStsBadArgErr, low, high); }
const Argument kRates = oneOf({8000, 16000}, vspStsBadArgErr);
Argument frameOf(std::size_t rate) {
    return limited(vspStsBadArgErr, [=](const Values& v) { return Limits{1, v[rate]}; }).anyway();
}
const Argument kFloat =
    state(kSize, [](const Api& api, int, void* s) {
        api.vspsSubbandSuppressorInit_EC_32f(static_cast<VspSubbandSuppressorState_EC_32f*>(s), kBands, kFrame, kRate);
    }).alwaysInitialised();
const Argument kFixed =
    state(kSize, [](const Api& api, int, void* s) {
        api.vspsSubbandSuppressorInit_EC_16s(static_cast<VspSubbandSuppressorState_EC_16s*>(s), kBands, kFrame, kRate, -6);
    }).alwaysInitialised();

}  // namespace

static const Described functions(
    "ec",
    {
        VSPSC_FUNCTION(vspsSubbandSuppressorGetSize_EC_32f, bad(1, 4097), frameOf(2), kRates, out(1))
            .checks(kOrder)
            .notRecorded(),
        VSPSC_FUNCTION(vspsSubbandSuppressorGetSize_EC_16s, bad(1, 4097), frameOf(2), kRates, out(1))
            .checks(kOrder)
            .notRecorded(),
        VSPSC_FUNCTION(vspsSubbandSuppressorInit_EC_32f, kFloat, bad(1, 4097).upTo(kBands), frameOf(3), kRates)
            .checks(kOrder)
            .notRecorded(),
        VSPSC_FUNCTION(vspsSubbandSuppressorInit_EC_16s, kFixed, bad(1, 4097).upTo(kBands), frameOf(3), kRates,
                       bad(-31, 31))
            .checks(kOrder)
            .notRecorded(),
        VSPSC_FUNCTION(vspsSubbandSuppressor_EC_32fc_I, in(kBands), in(kBands), value(), io(kBands), kFloat).notRecorded(),
        VSPSC_FUNCTION(vspsSubbandSuppressor_EC_32sc_I, in(kBands), in(kBands), value(), io(kBands), kFixed).notRecorded(),
    });

}  // namespace vsp::test
