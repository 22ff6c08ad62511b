#include "g729/comfort_noise.h"

#include "arithmetic/split_32.h"
#include "arithmetic/standard_ops.h"
#include "common/exports.h"
#include "common/inv_sqrt.h"
#include "common/random.h"
#include "g729/adaptive_vector.h"
#include "g729/constants.h"
#include "g729/exports.h"

namespace vsp::VSP_LEVEL {

NoiseLevel ownNoiseLevel(const Vsp16s* energies, const Vsp16s* shifts, int count) {
    int shift = 0;
    Vsp32s sum = 0;
    if (count == 0) {
        sum = shl_32s(energies[0], shifts[0]);
    } else {
        shift = shifts[0];
        for (int i = 1; i < count; i++) shift = shifts[i] < shift ? shifts[i] : shift;
        shift += 16 - marg[count];
        for (int i = 0; i < count; i++) sum = Add_32s(sum, shl_32s(energies[i], shift - shifts[i]));
    }
    Vsp16s exponent, fraction;
    ownLog2(mulSplit_32s16s(sum, fact[count]), &exponent, &fraction);
    const Vsp16s octaves = sat_16s(shl_32s(Sub_16s(exponent, sat_16s(shift)), 10) + mulRound_16s(fraction, 1024));  // Q10
    if (octaves <= -2721) return {0, -12};
    if (octaves > 22111) return {kSidGains - 1, 66};
    if (octaves <= 4762) {  // in steps of 4 dB
        const Vsp16s index = Mul_16s(Add_16s(octaves, 3401), 24);
        return index < 1 ? NoiseLevel{1, -4} : NoiseLevel{index, Vsp16s(4 * index - 8)};
    }
    const Vsp16s index = Vsp16s((Mul_16s(Sub_16s(octaves, 340), 193) >> 2) - 1);  // of 2 dB
    return index < 6 ? NoiseLevel{6, 16} : NoiseLevel{index, Vsp16s(2 * index + 4)};
}

Vsp16s ownSmoothedNoiseGain(Vsp16s gain, Vsp16s sidGain) {
    return Add_16s(mulRound_16s(gain, 28672), mulRound_16s(sidGain, 4096));
}

void ownNoiseFilters(Vsp16s* lspOld, const Vsp16s* lspNoise, Vsp16s* lpc) {
    Vsp16s between[kLspOrder];
    vspsInterpolate_G729_16s(lspNoise, lspOld, between, kLspOrder);
    vspsLSPToLPC_G729_16s(between, lpc);
    vspsLSPToLPC_G729_16s(lspNoise, lpc + kLspOrder + 1);
    for (int i = 0; i < kLspOrder; i++) lspOld[i] = lspNoise[i];
}

namespace {

constexpr int kPulses = 4;
constexpr Vsp16s kLongestPulse = 5000;

// Three draws of the generator.
struct Parameters {
    int lag, fraction;
    int place[kPulses];
    bool positive[kPulses];
    Vsp16s gainPitch;  // Q14
};

Parameters drawParameters(Vsp16s* seed) {
    Parameters p{};
    int bits = ownRandom(seed);
    p.fraction = (bits & 3) - 1;
    if (p.fraction == 2) p.fraction = 0;
    p.lag = (bits >> 2 & 63) + 40;
    p.place[0] = 5 * (bits >> 8 & 7);
    p.positive[0] = (bits >> 11 & 1) != 0;
    p.place[1] = 5 * (bits >> 12 & 7) + 1;
    p.positive[1] = (bits >> 15 & 1) != 0;
    bits = ownRandom(seed);
    p.place[2] = 5 * (bits & 7) + 2;
    p.positive[2] = (bits >> 3 & 1) != 0;
    p.place[3] = 5 * (bits >> 5 & 7) + 3 + (bits >> 4 & 1);
    p.positive[3] = (bits >> 8 & 1) != 0;
    p.gainPitch = Vsp16s(ownRandom(seed) & 0x1FFF);
    return p;
}

// White noise whose power is about two and a half times the gain's square.
void drawGaussian(Vsp16s gain, Vsp16s* seed, Vsp16s* noise) {
    vspsRandomNoiseExcitation_G729B_16s(seed, noise, kL_subfr);
    const Vsp32s inverse = ownInvSqrt(dotSaturating(noise, noise, kL_subfr) >> 1);
    const Vsp32s factor = mulSplit_32s16s(inverse, Add_16s(gain, mulRound_16s(gain, 19043)));
    const int shift = norm_32s(factor);
    const Vsp16s mantissa = high_32s(shl_32s(factor, shift));
    for (int i = 0; i < kL_subfr; i++) noise[i] = shrRound_16s(mulRound_16s(noise[i], mantissa), shift - 14);
}

// The sum of the samples at the places of the pulses with their signs, each shifted right before.
Vsp16s sumAtPulses(const Parameters& p, const Vsp16s* x, int shift) {
    Vsp16s sum = 0;
    for (int i = 0; i < kPulses; i++) {
        const Vsp16s sample = Vsp16s(x[p.place[i]] >> shift);
        sum = p.positive[i] ? Add_16s(sum, sample) : Sub_16s(sum, sample);
    }
    return sum;
}

// The largest value whose doubled square is not above the limit, of 14 bits below the highest.
Vsp16s root(Vsp32s limit) {
    Vsp16s x = 0;
    for (int bit = 0x4000; bit > 1; bit >>= 1) {
        const Vsp16s candidate = Add_16s(x, Vsp16s(bit));
        if (Mul2_16s32s(candidate, candidate) <= limit) x = candidate;
    }
    return x;
}

// Gain of the pulses that brings the energy of a subframe to what the gain asks for; e loses its adaptive part where that
// has too much energy already.
Vsp16s pulseGain(Vsp16s gain, Parameters& p, Vsp16s* e, const Vsp16s* noise) {
    Vsp16s largest = 0;
    for (int i = 0; i < kL_subfr; i++) {
        const Vsp16s magnitude = Abs_16s(e[i]);
        largest = magnitude > largest ? magnitude : largest;
    }
    int shift = largest == 0 || norm_16s(largest) > 3 ? 0 : 3 - norm_16s(largest);
    Vsp16s scaled[kL_subfr];
    for (int i = 0; i < kL_subfr; i++) scaled[i] = Vsp16s(e[i] >> shift);
    const Vsp32s energy = dotSaturating(scaled, scaled, kL_subfr);
    const Vsp32s wanted = Mul2_16s32s(gain, Vsp16s(Mul2_16s32s(gain, kL_subfr) >> 6));
    Vsp16s inner = Vsp16s(sumAtPulses(p, scaled, 0) >> 1);
    Vsp32s rest = mac_32s(Sub_32s(wanted >> (1 + 2 * shift), energy), inner, inner);
    shift++;
    if (rest < 0) {
        int bits = 0;
        for (int i = 0; i < kL_subfr; i++) e[i] = noise[i];
        for (const int place : p.place) bits |= Abs_16s(noise[place]);
        shift = (bits & 0x4000) == 0 ? 1 : 2;
        inner = sumAtPulses(p, noise, shift);
        rest = mac_32s(mulSplit_32s16s(wanted, 24576) >> (2 * shift - 1), inner, inner);
        p.gainPitch = 0;
    }
    const Vsp16s magnitude = root(rest);
    const Vsp16s above = Sub_16s(magnitude, inner), below = Negate_16s(Add_16s(magnitude, inner));
    const Vsp16s smaller = Abs_16s(below) < Abs_16s(above) ? below : above;
    const Vsp16s pulse = shrRound_16s(smaller, 2 - shift);
    return pulse > kLongestPulse ? kLongestPulse : pulse < -kLongestPulse ? Vsp16s(-kLongestPulse) : pulse;
}

}  // namespace

void ownNoiseExcitation(Vsp16s gain, Vsp16s* excitation, Vsp16s* seed, Vsp32s* errors, Vsp16s* gains) {
    for (int subframe = 0; subframe < 2; subframe++) {
        Vsp16s* const e = excitation + subframe * kL_subfr;
        Parameters p{};
        Vsp16s pulse = 0;
        if (gain == 0) {
            p.lag = kL_subfr + 1;
            for (int i = 0; i < kL_subfr; i++) e[i] = 0;
        } else {
            p = drawParameters(seed);
            Vsp16s noise[kL_subfr];
            drawGaussian(gain, seed, noise);
            ownPred_lt_3(e, p.lag, p.fraction);
            for (int i = 0; i < kL_subfr; i++) e[i] = Add_16s(mulRound_16s(e[i], Vsp16s(2 * p.gainPitch)), noise[i]);
            pulse = pulseGain(gain, p, e, noise);
            for (int i = 0; i < kPulses; i++) {
                Vsp16s& sample = e[p.place[i]];
                sample = p.positive[i] ? Add_16s(sample, pulse) : Sub_16s(sample, pulse);
            }
        }
        if (errors != nullptr) vspsTamingUpdate_G729_16s(p.gainPitch, Vsp16s(p.lag), errors);
        if (gains != nullptr) {
            gains[2 * subframe] = p.gainPitch;
            gains[2 * subframe + 1] = Abs_16s(pulse);
        }
    }
}

}  // namespace vsp::VSP_LEVEL
