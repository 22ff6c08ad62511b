// The phase dispersion and the post-filters.
#include "support/described.h"

namespace vsp::test {

static const Argument lag = range(18, 145), frameType = range(0, 2);

template <class State>
static Argument filterState(int bytes, VspStatus (*Api::*init)(State*)) {
    return state(bytes, [=](const Api& api, int, void* s) { (api.*init)(static_cast<State*>(s)); });
}

static void initialiseOutputFilter(const Api& api, int, void* state) {
    const Vsp16s coefficients[] = {7699, -15398, 7699, 8192, 15836, -7667};
    api.vspsHighPassFilterInit_G729(coefficients, state);
}

static const Described functions(
    "g729",
    {
        VSPSC_FUNCTION(vspsPostFilterGetStateSize_G729_16s, size(328)).notRecorded(),
        VSPSC_FUNCTION(vspsPostFilterInit_G729_16s, state(328)).notRecorded(),
        VSPSC_FUNCTION(vspsPostFilter_G729_16s, in(40).after(10), in(11), lag, frameType, out(40), out(1),
                       filterState(328, &Api::vspsPostFilterInit_G729_16s))
            .stream("vspsPostFilter_G729_16s", -1,
                    {item(1), item(2), item(3), item(4), result(5), result(6), unrecorded()}),
        VSPSC_FUNCTION(vspsPostFilterGetStateSize_G729A_16s, size(312)).notRecorded(),
        VSPSC_FUNCTION(vspsPostFilterInit_G729A_16s, state(312)).notRecorded(),
        VSPSC_FUNCTION(vspsPostFilter_G729A_16s, in(40).after(10), in(11), lag, frameType, out(40),
                       filterState(312, &Api::vspsPostFilterInit_G729A_16s))
            .stream("vspsPostFilter_G729A_16s", -1, {item(1), item(2), item(3), item(4), result(5), unrecorded()}),
        VSPSC_FUNCTION(vspsSynthesisPostFilter_G729A_16s, in(40), in(22), in(2).holding(vspStsRangeErr, 18, 145), frameType,
                       io(80).after(10).unchangedOnWarning(), out(80).unchangedOnWarning(),
                       filterState(312, &Api::vspsPostFilterInit_G729A_16s), state(24, initialiseOutputFilter))
            .notRecorded(),
        VSPSC_FUNCTION(vspsPostFilterGetStateSize_G729E_16s, size(368)).notRecorded(),
        VSPSC_FUNCTION(vspsPostFilterInit_G729E_16s, state(368)).notRecorded(),
        VSPSC_FUNCTION(vspsPostFilter_G729E_16s, in(40).after(argument(2)), in(argument(2) + 1), oneOf({10, 30}), lag,
                       frameType, in(3), oneOf({20, 32}), out(40), out(1),
                       filterState(368, &Api::vspsPostFilterInit_G729E_16s))
            .stream("vspsPostFilter_G729E_16s")
            .stream("vspsPostFilter_G729E_16s+g"),
        // Of two NaNs, which any bytes may be, either may come out: these begin with an initialised state.
        VSPSC_FUNCTION(vspsPostFilterGetStateSize_G729_32f, size(652)).notRecorded(),
        VSPSC_FUNCTION(vspsPostFilterInit_G729_32f, state(652)).notRecorded(),
        VSPSC_FUNCTION(vspsPostFilter_G729_32f, in(40).after(10), in(11), lag, frameType, out(40), out(1),
                       filterState(652, &Api::vspsPostFilterInit_G729_32f).alwaysInitialised())
            .stream("vspsPostFilter_G729_32f"),
        VSPSC_FUNCTION(vspsPostFilterGetStateSize_G729A_32f, size(620)).notRecorded(),
        VSPSC_FUNCTION(vspsPostFilterInit_G729A_32f, state(620)).notRecorded(),
        VSPSC_FUNCTION(vspsPostFilter_G729A_32f, in(40).after(10), in(11), lag, frameType, out(40),
                       filterState(620, &Api::vspsPostFilterInit_G729A_32f).alwaysInitialised())
            .stream("vspsPostFilter_G729A_32f"),
        VSPSC_FUNCTION(vspsPhaseDispersionGetStateSize_G729D_16s, size(20)).notRecorded(),
        VSPSC_FUNCTION(vspsPhaseDispersionInit_G729D_16s, state(20)).notRecorded(),
        VSPSC_FUNCTION(vspsPhaseDispersionUpdate_G729D_16s, in(2), filterState(20, &Api::vspsPhaseDispersionInit_G729D_16s))
            .stream("vspsPhaseDispersion_G729D_16s-stream", 0, {item(2), unrecorded()}),
        VSPSC_FUNCTION(vspsPhaseDispersion_G729D_16s, in(40), in(2), in(40), out(40).mayBe(0),
                       filterState(20, &Api::vspsPhaseDispersionInit_G729D_16s))
            .stream("vspsPhaseDispersion_G729D_16s-stream", 1, {item(2), item(3), item(4), result(5), unrecorded()})
            .stream("vspsPhaseDispersion_G729D_16s+g"),
    });

}  // namespace vsp::test
