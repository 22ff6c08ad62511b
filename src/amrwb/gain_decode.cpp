// The gains in the decoder, and those for lost frames (`D_gain2`; 3GPP TS 26.190, 6.1, TS 26.191).
#include "amrwb/exports.h"
#include "amrwb/gain_prediction.h"
#include "amrwb/gain_tables.h"
#include "amrwb/lengths.h"
#include "amrwb/modes.h"
#include "amrwb/normalised.h"
#include "arithmetic/split_32.h"
#include "common/history.h"
#include "common/median.h"
#include "core/checks.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kGains = 5;
constexpr Vsp16s kUnusable = 2;
constexpr int kMostErasures = 6;

// What the application keeps.
struct GainMemory {
    Vsp16s energies[4];  // of the predictor, newest first
    Vsp16s pitch, code, goodCode;
    Vsp16s pitches[kGains], codes[kGains], goodPitches[kGains];  // newest last

    void remember() {
        pushBack<kGains>(pitches, pitch);
        pushBack<kGains>(codes, code);
    }
};
static_assert(sizeof(GainMemory) == 22 * sizeof(Vsp16s));

struct Gains {
    Vsp16s pitch;
    Vsp32s code;  // Q16
};

// By how many frames were lost lately: for a frame of which something can be used, and for another.
struct Damping {
    Vsp16s pitch[kMostErasures + 1], code[kMostErasures + 1];
};
constexpr Damping kUsableDamping = {{32767, 32113, 31457, 24576, 7537, 1638, 328},
                                    {32767, 32113, 32113, 32113, 32113, 32113, 22938}};
constexpr Damping kUnusableDamping = {{32767, 31130, 29491, 24576, 7537, 1638, 328},
                                      {32767, 16384, 8192, 8192, 8192, 4915, 3277}};

// The amplitude that brings the code to a fixed energy.
Vsp16s inverseAmplitude(const Vsp16s* code) {
    Normalised energy = ownNormalisedEnergy(code, kWideSubframe);
    energy.exponent -= 24;
    const Normalised root = ownInverseSqrt(energy);
    return high_32s(shl_32s(root.value, root.exponent - 3));
}

Gains conceal(GainMemory& m, const Damping& damping, Vsp16s erasures, bool inNoise, Vsp16s amplitude) {
    constexpr Vsp16s kMostPitch = 15565, kEnergyStep = 3072, kLeastEnergy = -14336;  // 0.95; 3 and -14 dB
    const Vsp16s pitch = medianOf<kGains>(m.pitches), code = medianOf<kGains>(m.codes);
    m.pitch = pitch < kMostPitch ? pitch : kMostPitch;
    m.code = inNoise ? code : Mul_16s(damping.code[erasures], code);
    Vsp32s sum = 0;
    for (const Vsp16s energy : m.energies) sum = mac_32s(sum, energy, 8192);
    const Vsp16s energy = Sub_16s(high_32s(sum), kEnergyStep);
    pushFront<4>(m.energies, energy > kLeastEnergy ? energy : kLeastEnergy);
    m.remember();
    return {Mul_16s(damping.pitch[erasures], m.pitch), Mul2_16s32s(m.code, amplitude)};
}

Gains decode(GainMemory& m, Vsp16s pitch, Vsp16s correction, bool afterBad, Vsp16s amplitude) {
    constexpr Vsp32s kMeanEnergy = 30 << 24, kAudible = 6553600;
    constexpr Vsp16s kMostRise = 5120;  // 1.25
    Vsp32s code = PredictedGain::fromEnergy(high_32s(addPredicted(kMeanEnergy, m.energies))).corrected(correction);
    if (afterBad) {
        const Vsp32s limit = Mul2_16s32s(m.goodCode, kMostRise);
        if (code > limit && code > kAudible) code = limit;
    }
    m.pitch = pitch;
    m.code = m.goodCode = round_32s(shl_32s(code, 3));
    m.remember();
    pushBack<kGains>(m.goodPitches, pitch);
    pushEnergy(m.energies, correction);
    return {pitch, shl_32s(mulSplit_32s16s(code, amplitude), 3)};
}

}  // namespace

VspStatus vspsGainDecode_AMRWB_16s(Vsp16s index, const Vsp16s* pCode, Vsp32s mode, Vsp16s bfi, Vsp16s prevBfi,
                                   Vsp16s erasures, Vsp16s vadHist, Vsp16s* pMem, Vsp16s* pGainPitch, Vsp32s* pGainCode) {
    constexpr Vsp16s kNoiseFrames = 2;
    if (anyNull(pCode, pMem, pGainPitch, pGainCode)) return vspStsNullPtrErr;
    if (!isWideMode(mode) || index < 0 || index >> (isLowWideMode(mode) ? 6 : 7) != 0) return vspStsRangeErr;
    if (bfi < 0 || bfi > kUnusable || (prevBfi != 0 && prevBfi != 1)) return vspStsRangeErr;
    if (erasures < 0 || erasures > kMostErasures) return vspStsRangeErr;
    GainMemory m;
    __builtin_memcpy(&m, pMem, sizeof m);
    const Vsp16s amplitude = inverseAmplitude(pCode);
    Gains gains;
    if (bfi != 0)
        gains =
            conceal(m, bfi == kUnusable ? kUnusableDamping : kUsableDamping, erasures, vadHist > kNoiseFrames, amplitude);
    else if (isLowWideMode(mode))
        gains = decode(m, qua_gain6b.pitch[index], qua_gain6b.code[index], prevBfi != 0, amplitude);
    else
        gains = decode(m, qua_gain7b.pitch[index], qua_gain7b.code[index], prevBfi != 0, amplitude);
    __builtin_memcpy(pMem, &m, sizeof m);
    *pGainPitch = gains.pitch;
    *pGainCode = gains.code;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
