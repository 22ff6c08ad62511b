// The joint quantiser of the gains (`Q_gain2`; 3GPP TS 26.190, 5.8).
#include "amrwb/exports.h"
#include "amrwb/gain_prediction.h"
#include "amrwb/gain_tables.h"
#include "amrwb/lengths.h"
#include "amrwb/modes.h"
#include "amrwb/normalised.h"
#include "core/checks.h"
#include "vector/eight_32s.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kTerms = 5, kEntries = 64;

// What the squared error has of the two gains' products: pitch squared, pitch, code squared, code, pitch and code.
struct ErrorTerms {
    Vsp16s value[kTerms], exponent[kTerms];

    void set(int i, Normalised a, int more) {
        value[i] = high_32s(a.value);
        exponent[i] = sat_16s(a.exponent + more);
    }

    // The terms with one exponent: high parts, and low ones of 12 bits.
    void align(Vsp16s (&hi)[kTerms], Vsp16s (&lo)[kTerms]) const {
        int largest = exponent[0];
        for (const Vsp16s e : exponent) largest = e > largest ? e : largest;
        for (int i = 0; i < kTerms; i++) {
            const Vsp32s aligned = shr_32s(value[i] * 65536, sat_16s(sat_16s(largest - exponent[i]) + 2));
            hi[i] = high_32s(aligned);
            lo[i] = Vsp16s(((aligned >> 1) & 0x7FFF) >> 3);
        }
    }
};

// The errors of the entries.
class Errors {
  public:
    Errors(const ErrorTerms& terms, Vsp16s predicted) : predicted_(predicted) { terms.align(hi_, lo_); }

    // Returns the place of the smallest, of equal ones the first.
    int smallest(const Vsp16s* pitch, const Vsp16s* code, int entries) const {
        Vsp32s errors[kEntries];
        int magnitudes = 0;
        for (const Vsp16s h : hi_) magnitudes += h < 0 ? -h : h;
        // No low part exceeds 12 bits, and all products of gains are fractions.
        constexpr int kMaxExact = 32700;
        if (magnitudes < kMaxExact) {
            for (int i = 0; i < kEntries; i += S16_128::width)
                formExact(S16_128::load(pitch + i), S16_128::load(code + i), errors + i);
        } else {
            for (int i = 0; i < entries; i++) errors[i] = saturating(pitch[i], code[i]);
        }
        Vsp32s least = kMax32;
        for (int i = 0; i < entries; i++) least = errors[i] < least ? errors[i] : least;
        int place = 0;
        while (errors[place] != least && place + 1 < entries) place++;
        return errors[place] == least ? place : 0;
    }

  private:
    // Four errors; products are pairs of the products of gains.
    template <class Zip>
    [[gnu::always_inline]] S32_128 errors(Zip zip, S16_128 pp, S16_128 p, S16_128 cc, S16_128 ccLow, S16_128 c,
                                          S16_128 pc) const {
        const auto pair = [](Vsp16s a, Vsp16s b) {
            return S16_128{S32_128::splat(Vsp32s(Vsp16u(a) | Vsp32u(Vsp16u(b)) << 16)).v};
        };
        const S16_128 a{zip(pp, p).v}, b{zip(cc, c).v}, d{zip(pc, ccLow).v};
        const auto doubled = [](S32_128 x) { return add(x, x); };
        const S32_128 low =
            add(add(dot2(a, pair(lo_[0], lo_[1])), dot2(b, pair(lo_[2], lo_[3]))), dot2(d, pair(lo_[4], 0)));
        const S32_128 start = shr(dot2(d, pair(0, hi_[2])), 2);
        const S32_128 high =
            add(add(dot2(a, pair(hi_[0], hi_[1])), dot2(b, pair(hi_[2], hi_[3]))), dot2(d, pair(hi_[4], 0)));
        return add(shr(add(start, doubled(low)), 12), doubled(high));
    }

    [[gnu::always_inline]] void formExact(S16_128 p, S16_128 correction, Vsp32s* to) const {
        const S16_128 c = mulRoundWrap(correction, S16_128::splat(predicted_));
        const S16_128 pp = mulRoundWrap(p, p), pc = mulRoundWrap(c, p), cc = mulShift15(c, c);
        const S16_128 ccLow{mulLo(c, c).v & S16_128::splat(kMax16).v};
        const auto lower = [](S16_128 a, S16_128 b) { return zipLo(a, b); };
        const auto upper = [](S16_128 a, S16_128 b) { return zipHi(a, b); };
        errors(lower, pp, p, cc, ccLow, c, pc).store(to);
        errors(upper, pp, p, cc, ccLow, c, pc).store(to + 4);
    }

    [[gnu::noinline]] Vsp32s saturating(Vsp16s p, Vsp16s correction) const {
        const Vsp16s c = mulRound_16s(correction, predicted_), pp = mulRound_16s(p, p), pc = mulRound_16s(c, p);
        const Vsp32s square = Mul2_16s32s(c, c);
        const Vsp16s products[kTerms] = {pp, p, high_32s(square), c, pc};
        Vsp32s sum = Mul2_16s32s(hi_[2], Vsp16s((square >> 1) & 0x7FFF)) >> 3;
        for (int i = 0; i < kTerms; i++) sum = mac_32s(sum, lo_[i], products[i]);
        sum >>= 12;
        for (int i = 0; i < kTerms; i++) sum = mac_32s(sum, hi_[i], products[i]);
        return sum;
    }

    Vsp16s predicted_, hi_[kTerms], lo_[kTerms];
};

// The energy that the predictor expects of the code, in dB, Q8.
Vsp16s predictedEnergy(const Vsp16s* code, const Vsp16s* past) {
    const Normalised codeEnergy = ownNormalisedEnergy(code, kWideSubframe);
    Vsp16s exponent = 0, fraction = 0;
    ownLog2(codeEnergy.value, &exponent, &fraction);
    const Vsp32s ofCode = timesLog(Vsp16s(exponent + codeEnergy.exponent - 55), fraction, -24660);
    return high_32s(addPredicted(shl_32s(mac_32s(ofCode, 30, 8192), 10), past));
}

}  // namespace

VspStatus vspsGainQuant_AMRWB_16s(const Vsp16s* pTarget, const Vsp16s* pY1, const Vsp16s* pY2, const Vsp16s* pCode,
                                  const Vsp16s* pCoeff, Vsp32s scale, Vsp32s mode, Vsp16s clip, Vsp16s* pPast,
                                  Vsp16s* pGainPitch, Vsp32s* pGainCode, Vsp16s* pIndex) {
    if (anyNull(pTarget, pY1, pY2, pCode, pCoeff, pPast, pGainPitch, pGainCode, pIndex)) return vspStsNullPtrErr;
    if (scale < -15 || scale > 15) return vspStsRangeErr;
    if (!isWideMode(mode)) return vspStsRangeErr;
    if (clip != 0 && clip != 1) return vspStsRangeErr;

    const PredictedGain predicted = PredictedGain::fromEnergy(predictedEnergy(pCode, pPast));
    const int codeExponent = predicted.exponent + 4;

    ErrorTerms terms;
    terms.value[0] = pCoeff[0];
    terms.exponent[0] = Sub_16s(pCoeff[1], 13);
    terms.value[1] = Negate_16s(pCoeff[2]);
    terms.exponent[1] = Sub_16s(Add_16s(pCoeff[3], 1), 14);
    terms.set(2, ownNormalisedEnergy(pY2, kWideSubframe), 2 * scale - 18 + 15 + 2 * codeExponent);
    const Normalised cross = ownNormalisedDot(pTarget, pY2, kWideSubframe);
    terms.set(3, {Sub_32s(0, cross.value), cross.exponent}, scale - 8 + codeExponent);
    terms.set(4, ownNormalisedDot(pY1, pY2, kWideSubframe), scale - 8 + 1 + codeExponent);

    const Vsp16s *pitch = qua_gain6b.pitch, *code = qua_gain6b.code;
    int start = 0, entries = clip == 1 ? 48 : kEntries;
    if (!isLowWideMode(mode)) {
        // Those around the gain before quantisation.
        const Vsp16s* const middle = qua_gain7b.pitch + 32;
        for (int i = 0; i < (clip == 1 ? 37 : 64); i++) start += *pGainPitch > middle[i];
        pitch = qua_gain7b.pitch + start;
        code = qua_gain7b.code + start;
        entries = kEntries;
    }
    const int found = Errors(terms, predicted.mantissa).smallest(pitch, code, entries);
    *pIndex = Vsp16s(start + found);
    *pGainPitch = pitch[found];
    *pGainCode = predicted.corrected(code[found]);
    pushEnergy(pPast, code[found]);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
