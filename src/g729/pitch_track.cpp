// The pitch that erased frames at 11.8 kbit/s take (G.729 Annex E).
#include "arithmetic/standard_ops.h"
#include "core/checks.h"
#include "g729/constants.h"
#include "g729/exports.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr Vsp16s kNear = 5;
constexpr Vsp16s kMaxStationarity = 7;

enum { previous, stationarity, stationaryLag, stationaryFraction };

// The smallest distance of the larger lag from up to four times the smaller one.
Vsp16s distanceOfMultiple(Vsp16s smaller, Vsp16s larger) {
    Vsp16s multiple = smaller, smallest = Abs_16s(Sub_16s(multiple, larger));
    for (int i = 2; i <= 4; i++) {
        multiple = Add_16s(multiple, smaller);
        const Vsp16s distance = Abs_16s(Sub_16s(multiple, larger));
        smallest = distance < smallest ? distance : smallest;
    }
    return smallest;
}

}  // namespace

VspStatus vspsPitchTrack_G729E_16s(Vsp16s* pDelay, Vsp16s* pMem) {
    if (anyNull(pDelay, pMem)) return vspStsNullPtrErr;
    if (pDelay[0] < kPitMin - 2 || pDelay[0] > kPitMax + 2 || pDelay[1] < -1 || pDelay[1] > 1) return vspStsCodeRangeErr;
    const auto store = [&] {
        pMem[stationaryLag] = pDelay[0];
        pMem[stationaryFraction] = pDelay[1];
    };
    const Vsp16s distance = Sub_16s(pDelay[0], pMem[previous]);
    const bool shorter = distance < 0;
    if (Abs_16s(distance) < kNear) {
        pMem[stationarity] = Add_16s(pMem[stationarity], 1);
        if (pMem[stationarity] > kMaxStationarity) pMem[stationarity] = kMaxStationarity;
        store();
    } else if (distanceOfMultiple(shorter ? pDelay[0] : pMem[previous], shorter ? pMem[previous] : pDelay[0]) < kNear) {
        if (pMem[stationarity] > 0) {
            pDelay[0] = pMem[stationaryLag];
            pDelay[1] = pMem[stationaryFraction];
        }
        pMem[stationarity] = pMem[stationarity] > 0 ? Vsp16s(pMem[stationarity] - 1) : Vsp16s(0);
    } else {
        pMem[stationarity] = 0;
        store();
    }
    pMem[previous] = pDelay[0];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
