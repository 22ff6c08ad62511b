// What a decoder's excitation can grow to after a transmission error, and the limit that this sets to the adaptive-codebook
// gain (G.729 3.7.3 and its reference's taming procedure).
#include "arithmetic/split_32.h"
#include "arithmetic/standard_ops.h"
#include "core/checks.h"
#include "g729/constants.h"
#include "g729/exports.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kZones = 4;                 // of a subframe's length each, the newest first
constexpr int kLastSample = 152;          // of the oldest zone
constexpr Vsp32s kThreshold = 983040000;  // 60000 in Q14

int zoneOf(int sample) { return sample / kL_subfr; }

// The error of a zone after one more subframe.
Vsp32s passedOn(Vsp32s error, Vsp16s gain) { return Add_32s(0x4000, Mul2_32s(mulSplit_32s16s(error, gain))); }

}  // namespace

VspStatus vspsTamingTest_G729_16s(const Vsp16s* pDelay, const Vsp32s* pExcErr, Vsp16s* pFlag) {
    if (anyNull(pDelay, pExcErr, pFlag)) return vspStsNullPtrErr;
    const int lag = pDelay[0], fraction = pDelay[1];
    if (lag < kPitMin - 2 || lag > kPitMax + 2 || fraction < -1 || fraction > 1) return vspStsCodeRangeErr;
    const int whole = lag + (fraction > 0);
    const int newest = whole - kL_subfr - 10, oldest = whole + 8;  // that the interpolation reads
    const int last = zoneOf(oldest < kLastSample ? oldest : kLastSample);
    Vsp16s flag = 0;
    for (int zone = zoneOf(newest > 0 ? newest : 0); zone <= last; zone++)
        if (pExcErr[zone] > kThreshold) flag = 1;
    *pFlag = flag;
    return vspStsNoErr;
}

VspStatus vspsTamingUpdate_G729_16s(Vsp16s gainPitch, Vsp16s lag, Vsp32s* pExcErr) {
    if (anyNull(pExcErr)) return vspStsNullPtrErr;
    if (lag < kPitMin - 2 || lag > kPitMax + 2) return vspStsCodeRangeErr;
    Vsp32s worst = -1;
    const auto take = [&worst](Vsp32s error) { worst = error > worst ? error : worst; };
    if (lag < kL_subfr) {  // the second half of the subframe repeats the first
        const Vsp32s once = passedOn(pExcErr[0], gainPitch);
        take(once);
        take(passedOn(once, gainPitch));
    } else {
        for (int zone = zoneOf(lag - kL_subfr); zone <= zoneOf(lag - 1); zone++) take(passedOn(pExcErr[zone], gainPitch));
    }
    for (int zone = kZones - 1; zone > 0; zone--) pExcErr[zone] = pExcErr[zone - 1];
    pExcErr[0] = worst;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
