// Keeps errors of the adaptive codebook's feedback from growing in a decoder that has lost frames (`Test_Err`,
// `Update_Err`). An error is kept for zones of 30 samples of the past.
#include "core/checks.h"
#include "g723/exports.h"
#include "g723/operators.h"
#include "g723/pitch_gains.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kZone = 30, kZones = 5;

constexpr int zoneOf(int lag) { return Mul_16s(Vsp16s(lag), 1092); }
static_assert(zoneOf(147) == kZones - 1 && zoneOf(31) == 1);

constexpr Vsp32s larger(Vsp32s a, Vsp32s b) { return a > b ? a : b; }

}  // namespace

VspStatus vspsTamingTest_G723_16s(const Vsp32s* pExcErr, Vsp16s lag, Vsp32s subframe, Vsp16s sine, Vsp16s* pTaming) {
    constexpr Vsp32s kLimit = 0x40000000;
    if (anyNull(pExcErr, pTaming)) return vspStsNullPtrErr;
    if (subframe < 0 || subframe > 3) return vspStsRangeErr;
    if (!g723::isSearchedLag(lag, subframe)) return vspStsRangeErr;
    const int first = lag - 1 - 61, last = lag - 2 + g723::triedLags(subframe);
    Vsp32s largest = -1;
    for (int zone = zoneOf(first > 1 ? first : 1); zone <= zoneOf(last + 2); zone++)
        largest = larger(largest, pExcErr[zone]);
    const Vsp32s excess = largest - kLimit;
    *pTaming = excess > 0 || sine < 0 ? Vsp16s(0) : Vsp16s(-excess >> 23);
    return vspStsNoErr;
}

VspStatus vspsTamingUpdate_G723_16s(Vsp16s lag, Vsp16s offset, Vsp16s index, Vsp32s rate, Vsp32s* pExcErr) {
    if (anyNull(pExcErr)) return vspStsNullPtrErr;
    if (!g723::isRate(rate)) return vspStsRangeErr;
    if (lag < 18 || lag > 145) return vspStsCodeRangeErr;
    if (offset < 0 || offset > 3) return vspStsCodeRangeErr;
    if (index < 0 || index >= g723::codebookSize(rate, lag)) return vspStsCodeRangeErr;
    const Vsp16s gain = g723::usesShortCodebook(rate, lag) ? g723::tameGains85[index] : g723::tameGains170[index];
    const auto amplified = [gain](Vsp32s error) { return Add_32s(4, Mul4_32s(g723::mul_32s16s_Q15(error, gain))); };
    const Vsp32s* const e = pExcErr;
    const int exact = lag - 1 + offset, zone = zoneOf(exact);
    Vsp32s newest[2];
    if (exact <= kZone) {
        newest[0] = newest[1] = amplified(e[0]);
    } else if (exact == kZone * (zone + 1)) {
        newest[0] = amplified(e[zone - 1]);
        newest[1] = amplified(e[zone]);
    } else {
        newest[1] = larger(amplified(e[zone - 1]), amplified(e[zone]));
        newest[0] = zone == 1 ? newest[1] : larger(amplified(e[zone - 2]), amplified(e[zone - 1]));
    }
    for (int i = kZones - 1; i >= 2; i--) pExcErr[i] = pExcErr[i - 2];
    pExcErr[0] = newest[0];
    pExcErr[1] = newest[1];
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
