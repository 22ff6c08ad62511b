// Filters of the whole band, and the tone detectors.
#include "support/described.h"

namespace vsp::test {

static const std::initializer_list<VspStatus> kOrder = {vspStsNullPtrErr, vspStsBadArgErr};
static const Argument kCount = limited(vspStsBadArgErr, 1, 0x7FFFFFFF).upTo(150), kRate = oneOf({8000, 16000});
static const Argument kState_16s = state(72, [](const Api& api, int, void* s) {
                                       api.vspsToneDetectInit_EC_16s(static_cast<VspToneDetectState_EC_16s*>(s), 8000);
                                   }).withAddresses();
static const Argument kState_32f = state(80, [](const Api& api, int, void* s) {
                                       api.vspsToneDetectInit_EC_32f(static_cast<VspToneDetectState_EC_32f*>(s), 8000);
                                   }).withAddresses();

static const std::vector<Place> kFir = {item(1), item(2), result(4), item(0)[0], item(3), item(0)[1]};
static const std::vector<Place> kNlms = {item(1),    item(2),       item(3),    result(6),
                                         item(0)[0], item(4).to(7), item(0)[1], item(5).to(8)};

static const Described functions(
    "ec",
    {
        VSPSC_FUNCTION(vspsFIR_EC_32f, in(argument(3)).after(argument(5) + -1), in(argument(3)), out(argument(3)).mayBe(1),
                       kCount, in(argument(5)), kCount)
            .checks(kOrder)
            .recorded("fir_32f", kFir),
        VSPSC_FUNCTION(vspsFIR_EC_16s, in(argument(3)).after(argument(5) + -1), in(argument(3)), out(argument(3)).mayBe(1),
                       kCount, in(argument(5)), kCount)
            .checks(kOrder)
            .recorded("fir_16s", kFir),
        VSPSC_FUNCTION(vspsNLMS_EC_32f, in(argument(4)).after(argument(6)), in(argument(4)), in(argument(4)),
                       out(argument(4)).mayBe(1), kCount, io(argument(6)), kCount, io(1))
            .checks(kOrder)
            .recorded("nlms_32f", kNlms),
        VSPSC_FUNCTION(vspsNLMS_EC_16s, in(argument(4)).after(argument(6)), in(argument(4)), in(argument(4)),
                       out(argument(4)).mayBe(1), kCount, io(argument(6)), kCount, io(1))
            .checks(kOrder)
            .recorded("nlms_16s", kNlms),
        VSPSC_FUNCTION(vspsToneDetectGetStateSize_EC_16s, kRate, size(72)).notRecorded(),
        VSPSC_FUNCTION(vspsToneDetectGetStateSize_EC_32f, kRate, size(80)).notRecorded(),
        VSPSC_FUNCTION(vspsToneDetectInit_EC_16s, kState_16s, kRate).notRecorded(),
        VSPSC_FUNCTION(vspsToneDetectInit_EC_32f, kState_32f, kRate).notRecorded(),
        VSPSC_FUNCTION(vspsToneDetect_EC_16s, in(argument(1)), kCount, out(1), kState_16s).checks(kOrder).notRecorded(),
        VSPSC_FUNCTION(vspsToneDetect_EC_32f, in(argument(1)), kCount, out(1), kState_32f).checks(kOrder).notRecorded(),
    });

}  // namespace vsp::test
