// Excitation in place of what was lost (G.728 Annex I).
#include "core/checks.h"
#include "core/state_size.h"
#include "g728/exports.h"
#include "g728/pitch.h"
#include "g728/tables.h"

namespace vsp::VSP_LEVEL {

using namespace g728;

namespace {

constexpr int kPast = 140, kRandomWords = 17, kScale = 2, kMaxDelay = kMaxPitch - kVector;

struct State {
    Vsp16s past[kPast];  // excitation, Q2, the oldest first
    Vsp32u random[kRandomWords];
    Vsp16s written, read;  // words of the generator
    Vsp16s delay;          // behind the vector that is repeated
    Vsp16s voiced;
    Vsp16s factor, factorScale;    // of the repeated samples, or the size that random ones get
    Vsp16s average, averageScale;  // size of the excitation before the loss
    Vsp16s unused[10];
};
static_assert(sizeof(State) == 384);

// A number 0 .. 32767 (17 words, each the sum of itself and the one 12 before).
int draw(State& s) {
    const auto next = [](Vsp16s i) { return i < 0 || i >= kRandomWords - 1 ? Vsp16s(0) : Vsp16s(i + 1); };
    s.written = next(s.written);
    s.read = next(s.read);
    s.random[s.written] += s.random[s.read];
    return int(s.random[s.written] >> 15 & 0x7FFF);
}

Float16 sizeOf(const Vsp16s* x, int len) {
    Vsp64s sum = 0;
    for (int i = 0; i < len; i++) sum += x[i] < 0 ? -x[i] : x[i];
    return normalised(sum);
}

void append(State& s, const Vsp16s* x, Vsp64s scale) {
    for (int i = 0; i < kPast - kVector; i++) s.past[i] = s.past[i + kVector];
    for (int n = 0; n < kVector; n++) s.past[kPast - kVector + n] = shift_16s(x[n], kScale - scale);
}

// Mean power of a vector in dB, less 32, Q9.
Vsp16s logGain(const Vsp16s* e, int scale) {
    constexpr Vsp16s kLogarithm[] = {9961, -9338, 9338, -10505, 15758};  // coefficients of its series
    Vsp64s sum = 0;
    for (int n = 0; n < kVector; n++) sum += e[n] * e[n];
    int shift = norm(sum, 32), q = shift + 2 * scale - 16;
    Vsp64s power = (shiftExact(sum, shift) >> 16) * 13107;
    shift = norm(power, 32);
    power = shiftExact(power, shift) >> 16;
    q += shift;
    if (q > 14) power = 16384, q = 14;
    const int x = Vsp16s((power - 24576) * 2);
    int series = 0;
    for (const Vsp16s c : kLogarithm) series = (Vsp16s(series + c) * x) >> 16;
    const int logarithm = (15 - q) * 1024 + ((series - 3400) >> 3);
    return Vsp16s((24660LL * logarithm - (16384LL << 14)) >> 14);
}

}  // namespace

VspStatus vspsConcealGetStateSize_G728_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsConcealInit_G728_16s(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    s = {};
    for (int i = 0; i < kRandomWords; i++) s.random[i] = kRandomStart[i];
    s.read = 12;
    return vspStsNoErr;
}

VspStatus vspsConcealSetup_G728_16s(Vsp32s pitch, Vsp32s tap, Vsp32s count, void* pState) {
    constexpr Vsp16s kVoicedFactors[] = {26214, 26214, 19661, 13107, 6554},
                     kUnvoicedFactors[] = {32767, 32767, 26214, 19661, 13107, 6554};
    constexpr int kVoicedTap = 7022, kAveraged = 40;
    if (anyNull(pState)) return vspStsNullPtrErr;
    if (!isPitch(pitch) || count < 0) return vspStsRangeErr;
    State& s = *static_cast<State*>(pState);
    if (count == 0) {
        s.voiced = tap > kVoicedTap;
        if (s.voiced) {
            s.delay = Vsp16s(pitch - kVector);
        } else {
            const Float16 average = sizeOf(s.past + kPast - kAveraged, kAveraged);
            s.average = average.mantissa;
            s.averageScale = Vsp16s(average.scale - 16 + 3 + kScale);
        }
    }
    s.factor = 0;
    s.factorScale = 15;
    if (s.voiced && count < 5) s.factor = kVoicedFactors[count];
    if (!s.voiced && count < 6) {
        const Float16 factor = normalised(s.average * kUnvoicedFactors[count]);
        s.factor = factor.mantissa;
        s.factorScale = sat16(factor.scale - 16 + s.averageScale + 15);
    }
    return vspStsNoErr;
}

VspStatus vspsConcealExcitation_G728_16s(Vsp16s* pDst, Vsp16s* pScale, Vsp16s* pGainDB, void* pState) {
    constexpr int kDrawsPerDelay = 243;
    if (anyNull(pDst, pScale, pGainDB, pState)) return vspStsNullPtrErr;
    State& s = *static_cast<State*>(pState);
    Float16 factor{s.factor, s.factorScale};
    if (!s.voiced && s.factor != 0) s.delay = Vsp16s(draw(s) / kDrawsPerDelay);
    s.delay = s.delay < 0 ? Vsp16s(0) : s.delay < kMaxDelay ? s.delay : Vsp16s(kMaxDelay);
    const Vsp16s* const repeated = s.past + kPast - kVector - s.delay;
    if (!s.voiced && s.factor != 0) {
        const Float16 size = sizeOf(repeated, kVector);
        factor = size.mantissa == 0 ? Float16{16384, 14}
                                    : divide(s.factor, s.factorScale, size.mantissa, size.scale - 16 + kScale);
    }
    Vsp16s e[kVector];
    for (int n = 0; n < kVector; n++) e[n] = shift_16s(factor.mantissa * repeated[n], -factor.scale);
    const int scale = kScale + normalise(e, kVector, 15);
    append(s, e, scale);
    for (int n = 0; n < kVector; n++) pDst[n] = e[n];
    *pScale = Vsp16s(scale);
    *pGainDB = logGain(e, scale);
    return vspStsNoErr;
}

VspStatus vspsConcealUpdate_G728_16s(const Vsp16s* pSrc, Vsp32s scale, void* pState) {
    if (anyNull(pSrc, pState)) return vspStsNullPtrErr;
    append(*static_cast<State*>(pState), pSrc, scale);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
