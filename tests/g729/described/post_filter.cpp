// The post-filters.
#include "support/described.h"

namespace vsp::test {

static const Argument lag = range(18, 145), frameType = range(0, 2);

template <class State>
static Argument filterState(int bytes, VspStatus (*Api::*init)(State*)) {
    return state(bytes, [=](const Api& api, int, void* s) { (api.*init)(static_cast<State*>(s)); });
}

static const Described functions("g729",
                                 {
                                     VSPSC_FUNCTION(vspsPostFilterGetStateSize_G729_16s, size(328)).notRecorded(),
                                     VSPSC_FUNCTION(vspsPostFilterInit_G729_16s, state(328)).notRecorded(),
                                     VSPSC_FUNCTION(vspsPostFilter_G729_16s, in(40).after(10), in(11), lag, frameType,
                                                    out(40), out(1), filterState(328, &Api::vspsPostFilterInit_G729_16s))
                                         .stream("vspsPostFilter_G729_16s", -1,
                                                 {item(1), item(2), item(3), item(4), result(5), result(6), unrecorded()}),
                                     VSPSC_FUNCTION(vspsPostFilterGetStateSize_G729A_16s, size(312)).notRecorded(),
                                     VSPSC_FUNCTION(vspsPostFilterInit_G729A_16s, state(312)).notRecorded(),
                                     VSPSC_FUNCTION(vspsPostFilter_G729A_16s, in(40).after(10), in(11), lag, frameType,
                                                    out(40), filterState(312, &Api::vspsPostFilterInit_G729A_16s))
                                         .stream("vspsPostFilter_G729A_16s", -1,
                                                 {item(1), item(2), item(3), item(4), result(5), unrecorded()}),
                                 });

}  // namespace vsp::test
