// Tells background noise from speech in the decoder (`Bgn_scd`).
#include "arithmetic/standard_ops.h"
#include "common/history.h"
#include "common/median.h"
#include "core/checks.h"
#include "gsmamr/exports.h"
#include "vector/dot.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kFrame = 160;
constexpr int kEnergies = 60, kHangover = 60;  // words of the memory

Vsp16s largestOf(const Vsp16s* values, int n) {
    Vsp16s largest = values[0];
    for (int i = 1; i < n; i++) largest = values[i] > largest ? values[i] : largest;
    return largest;
}

Vsp16s smallestOf(const Vsp16s* values, int n) {
    Vsp16s smallest = values[0];
    for (int i = 1; i < n; i++) smallest = values[i] < smallest ? values[i] : smallest;
    return smallest;
}

bool isNoise(Vsp16s frameEnergy, const Vsp16s* energies) {
    constexpr Vsp16s kLowest = 20, kHighest = 17578, kSteady = 1953;
    const Vsp16s floor = shl_16s(smallestOf(energies, kEnergies), 4);
    const Vsp16s largest = largestOf(energies, kEnergies - 4), largestOfLast = largestOf(energies + 40, 20);
    return largest > kLowest && frameEnergy > kLowest && frameEnergy < kHighest &&
           (frameEnergy < floor || largestOfLast < kSteady);
}

bool isVoiced(const Vsp16s* pitchGain, Vsp16s hangover) {
    const int limit = hangover > 15 ? 16383 : hangover > 8 ? 15565 : 13926;
    return (hangover > 20 ? medianOf<9>(pitchGain) : medianOf<5>(pitchGain + 4)) > limit;
}

}  // namespace

VspStatus vspsBackgroundNoiseDetect_GSMAMR_16s(const Vsp16s* pPitchGain, const Vsp16s* pSrc, Vsp16s* pMem,
                                               Vsp16s* pVoicedHangover, Vsp16s* pInNoise) {
    constexpr int kMaxHangover = 30, kMaxVoicedHangover = 10;
    if (anyNull(pPitchGain, pSrc, pMem, pVoicedHangover, pInNoise)) return vspStsNullPtrErr;
    const Vsp16s frameEnergy = high_32s(Mul4_32s(Cnvrt_64s32s(2 * energy(pSrc, kFrame))));
    const int hangover = isNoise(frameEnergy, pMem) ? pMem[kHangover] + 1 : 0;
    pMem[kHangover] = Vsp16s(hangover < kMaxHangover ? hangover : kMaxHangover);
    pushBack<kEnergies>(pMem, frameEnergy);
    *pInNoise = pMem[kHangover] > 1;
    const int voicedHangover = isVoiced(pPitchGain, pMem[kHangover]) ? 0 : *pVoicedHangover + 1;
    *pVoicedHangover = Vsp16s(voicedHangover < kMaxVoicedHangover ? voicedHangover : kMaxVoicedHangover);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
