// Backward gain adaptation in the logarithmic domain (G.728 blocks 46 to 48 and 93 to 96).
#include "core/checks.h"
#include "g728/block_float.h"
#include "g728/exports.h"
#include "g728/tables.h"

namespace vsp::VSP_LEVEL {

using namespace g728;

// Logarithmic gains are dB above 32 dB, Q9.
static constexpr int kLeastGain = -16384, kMostGain = 14336;

static bool isGain(Vsp32s gain) { return gain >= kLeastGain && gain <= kMostGain; }

VspStatus vspsGainPredict_G728_16s(const Vsp16s* pCoeff, const Vsp16s* pMem, Vsp32s maxGain, Vsp16s* pGainDB,
                                   Vsp16s* pGain) {
    constexpr int kOrder = 10;
    constexpr Vsp16s kPowers[] = {1874, 7866, 22702};  // of the series of 2^x, with 323 before and 16384 behind
    if (anyNull(pCoeff, pMem, pGainDB, pGain)) return vspStsNullPtrErr;
    if (!isGain(maxGain)) return vspStsRangeErr;
    Vsp64s sum = 0;
    for (int i = 0; i < kOrder; i++) sum -= pCoeff[i] * pMem[kOrder - 1 - i];
    int gain = Cnvrt_64s32s(sum) >> 14;
    gain = gain > kMostGain ? kMostGain : gain < kLeastGain ? kLeastGain : gain;
    gain = gain < maxGain ? gain : maxGain;

    // 10^(gain / 20) as a power of two: the logarithm in Q15.
    const int x = gain + 16384;
    const int y = 10 * x + int(roundHigh(2 * 20649 * x)), exponent = y >> 15, fraction = y & 0x7FFF;
    Vsp64s v = 323;
    for (const Vsp16s power : kPowers) v = roundHigh(2 * v * fraction + power * 0x10000);
    v = roundHigh(v * fraction + 16384 * 0x10000);
    *pGainDB = Vsp16s(gain);
    pGain[0] = Vsp16s(v);
    pGain[1] = Vsp16s(14 - exponent);
    return vspStsNoErr;
}

VspStatus vspsGainUpdate_G728_16s(Vsp32s gainDB, Vsp32s index, Vsp16s* pLogGain) {
    if (anyNull(pLogGain)) return vspStsNullPtrErr;
    if (!isGain(gainDB) || index < 0 || index > 1023) return vspStsRangeErr;
    const int sum = ((gainDB << 7) + (kGainDB[index & 7] << 5) + (kShapeDB[index >> 3] << 5)) >> 7;
    *pLogGain = Vsp16s(sum > kLeastGain ? sum : kLeastGain);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
