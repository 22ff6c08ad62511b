// Line spectral frequencies, and the LP filters of the subframes from them (G.723.1 2.4 and 2.6). 32767 stands for 4000 Hz,
// so that a step of the cosine's table is 128.
#include "core/checks.h"
#include "g723/exports.h"
#include "g723/lp_tables.h"
#include "g723/operators.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kOrder = 10, kHalf = kOrder / 2, kPeriod = 512, kSteps = 128;

// The sum and the difference polynomial up to their middle coefficient, scaled together.
struct Polynomials {
    Vsp16s p[2][kHalf + 1];

    [[gnu::always_inline]] explicit Polynomials(const Vsp16s* lpc) {
        Vsp32s sum[2][kHalf + 1] = {{0x02000000}, {0x02000000}};
        for (int i = 0; i < kHalf; i++) {
            const Vsp32s early = 4096 * mulRound_16s(lpc[i], g723::rootBroadening[i]);
            const Vsp32s late = 4096 * mulRound_16s(lpc[kOrder - 1 - i], g723::rootBroadening[kOrder - 1 - i]);
            sum[0][i + 1] = Sub_32s(Sub_32s(Sub_32s(0, sum[0][i]), early), late);
            sum[1][i + 1] = Add_32s(Sub_32s(sum[1][i], early), late);
        }
        Vsp32s largest = 0;
        for (auto& s : sum) {
            s[kHalf] >>= 1;
            for (const Vsp32s x : s) largest = Abs_32s(x) > largest ? Abs_32s(x) : largest;
        }
        const int norm = norm_32s(largest);
        for (int k = 0; k < 2; k++)
            for (int i = 0; i <= kHalf; i++) p[k][i] = round_32s(shl_32s(sum[k][i], norm));
    }

    [[gnu::always_inline]] Vsp32s at(int polynomial, int step) const {
        Vsp32s sum = 0;
        for (int j = 0; j <= kHalf; j++) sum = mac_32s(sum, p[polynomial][kHalf - j], g723::cosine[step * j % kPeriod]);
        return sum;
    }
};

// The product of 1 - 2 * f * z^-1 + z^-2 over every second cosine, up to the middle coefficient. Coefficients are halved as
// further factors come in.
void rootProduct(const Vsp16s* f, Vsp32s* p) {
    p[0] = 0x10000000;
    p[1] = mac_32s(Mul2_16s32s(f[0], 0x2000), f[2], 0x2000);
    p[2] = Add_32s(Mul2_16s32s(f[0], f[2]) >> 1, 0x20000000);
    for (int i = 2; i < kHalf; i++) {
        const Vsp16s x = f[2 * i];
        p[i + 1] = Add_32s(g723::mul_32s16s_Q15(p[i], x), p[i - 1]);
        for (int j = i; j >= 2; j--) p[j] = Add_32s(Add_32s(g723::mul_32s16s_Q15(p[j - 1], x), p[j] >> 1), p[j - 2] >> 1);
        p[0] >>= 1;
        p[1] = Add_32s((x * 65536) >> i, p[1]) >> 1;
    }
}

}  // namespace

// `AtoLsp`
VspStatus vspsLPCToLSF_G723_16s(const Vsp16s* pLPC, const Vsp16s* pPrevLSF, Vsp16s* pLSF) {
    if (anyNull(pLPC, pPrevLSF, pLSF)) return vspStsNullPtrErr;
    const Polynomials polynomials(pLPC);
    Vsp16s roots[kOrder];
    int found = 0, polynomial = 0;
    Vsp32s before = polynomials.at(polynomial, 0);
    for (int i = 1; i < kPeriod / 2 && found < kOrder; i++) {
        Vsp32s value = polynomials.at(polynomial, i);
        if ((value ^ before) < 0) {
            const Vsp32s magnitude = Abs_32s(before), sum = Add_32s(Abs_32s(value), magnitude);
            const int norm = norm_32s(sum);
            const Vsp16s fraction = g723::divLong(shl_32s(magnitude, norm) >> 8, high_32s(shl_32s(sum, norm)));
            roots[found++] = Add_16s(fraction, Vsp16s((i - 1) * kSteps));
            polynomial ^= 1;
            value = polynomials.at(polynomial, i);
        }
        before = value;
    }
    for (int i = 0; i < kOrder; i++) pLSF[i] = found == kOrder ? roots[i] : pPrevLSF[i];
    return vspStsNoErr;
}

// `Lsp_Int`
VspStatus vspsLSFInterpolate_G723_16s(const Vsp16s* pPrevLSF, const Vsp16s* pLSF, Vsp16s* pDst) {
    if (anyNull(pPrevLSF, pLSF, pDst)) return vspStsNullPtrErr;
    for (int k = 0; k < 4; k++) {
        const Vsp16s weight = Vsp16s(-8192 * (k + 1));
        for (int i = 0; i < kOrder; i++)
            pDst[k * kOrder + i] = round_32s(msu_32s(mac_32s(pPrevLSF[i] * 65536, weight, pPrevLSF[i]), weight, pLSF[i]));
    }
    return vspStsNoErr;
}

// `LsptoA`
VspStatus vspsLSFToLPC_G723_16s(const Vsp16s* pLSF, Vsp16s* pLPC) {
    if (anyNull(pLSF, pLPC)) return vspStsNullPtrErr;
    Vsp16s f[kOrder];  // cosines, negative
    for (int i = 0; i < kOrder; i++) {
        const int step = pLSF[i] >> 7;
        const Vsp16s from = g723::cosine[step & (kPeriod - 1)], to = g723::cosine[(step + 1) & (kPeriod - 1)];
        const Vsp16s fraction = Vsp16s((pLSF[i] & (kSteps - 1)) * 256 + 128);
        f[i] = Negate_16s(round_32s(Mul2_32s(mac_32s(from * 65536, Sub_16s(to, from), fraction))));
    }
    Vsp32s p[kHalf + 1], q[kHalf + 1];
    rootProduct(f, p);
    rootProduct(f + 1, q);
    for (int i = 0; i < kHalf; i++) {
        const Vsp32s sum = Add_32s(p[i], p[i + 1]);
        const auto coefficient = [](Vsp32s a) { return Negate_16s(round_32s(shl_32s(a, 3))); };
        pLPC[i] = coefficient(Add_32s(Sub_32s(sum, q[i]), q[i + 1]));
        pLPC[kOrder - 1 - i] = coefficient(Sub_32s(Add_32s(sum, q[i]), q[i + 1]));
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
