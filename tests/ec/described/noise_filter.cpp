// The noise filter, with short transforms so that the states to compare are small.
#include "support/described.h"

namespace vsp::test {

static const Argument kRate = oneOf({8000, 16000, 22050, 32000}, vspStsBadArgErr), kOrder = limited(vspStsBadArgErr, 5, 12);
// Up to half a transform, whose order is the next argument.
static Argument frameLen(std::size_t order) {
    return limited(vspStsBadArgErr, [order](const Values& v) {
        return Limits{1, v[order] < 1 || v[order] > 31 ? 1 : 1LL << (v[order] - 1)};
    });
}
static const int kBytes = 13183, kLeastBytes = 4959, kLine = 64;
static const Argument kState = state(kBytes, [](const Api& api, int, void* s) {
                                   auto* const filter = static_cast<VspFilterNoiseState_EC_32f*>(s);
                                   api.vspsFilterNoiseInit_EC_32f(filter, 8000, 40, 7);
                                   api.vspsFilterNoiseSetMode_EC_32f(filter, vspFilterNoiseAuto);
                               }).withAddresses(kLine);

static const Described functions("ec",
                                 {
                                     VSPSC_FUNCTION(vspsFilterNoiseGetStateSize_EC_32f, kRate, frameLen(2), kOrder, out(1))
                                         .checks({vspStsNullPtrErr, vspStsBadArgErr})
                                         .notRecorded(),
                                     VSPSC_FUNCTION(vspsFilterNoiseInit_EC_32f, state(kLeastBytes).withAddresses(kLine),
                                                    kRate, frameLen(3), kOrder.upTo(5))
                                         .checks({vspStsNullPtrErr, vspStsBadArgErr})
                                         .notRecorded(),
                                     VSPSC_FUNCTION(vspsFilterNoiseSetMode_EC_32f, kState, limited(vspStsBadArgErr, 0, 4))
                                         .checks({vspStsNullPtrErr, vspStsBadArgErr})
                                         .notRecorded(),
                                     VSPSC_FUNCTION(vspsFilterNoise_EC_32f_I, io(40), kState, out(1)).notRecorded(),
                                 });

}  // namespace vsp::test
