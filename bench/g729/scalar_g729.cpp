// The pitch search and adaptive codebook as the standard's routines read: one saturating operation after the other.
// Arguments are taken as valid.
#include "g729/scalar_g729.h"
#include "common/tables.h"

#include <initializer_list>

#include "arithmetic/basic_ops.h"
#include "g729/tables.h"

namespace {

using namespace vsp;

constexpr Vsp16s inter_3l[31] = {29443, 25207, 14701, 3143, -4402, -5850, -2783, 1211, 3130, 2259, 0,
                                 -1652, -1666, -464,  756,  1099,  550,   -245,  -634, -451, 0,    308,
                                 296,   78,    -120,  -165, -79,   34,    91,    70,   0};

Vsp32s L_mac(Vsp32s sum, Vsp16s a, Vsp16s b) { return Add_32s(sum, Mul2_32s(a * b)); }
Vsp32s L_shl3(Vsp32s a) { return Cnvrt_64s32s(8LL * a); }
Vsp16s round16(Vsp32s a) { return Vsp16s(Add_32s(a, 0x8000) >> 16); }

Vsp32s Mpy_32(Vsp32s a, Vsp32s b) {
    const Vsp32s ah = a >> 16, al = (a >> 1) & 0x7FFF, bh = b >> 16, bl = (b >> 1) & 0x7FFF;
    return 2 * (ah * bh + ((ah * bl) >> 15) + ((al * bh) >> 15));
}

Vsp32s Inv_sqrt(Vsp32s x) {
    if (x <= 0) return 0x3FFFFFFF;
    const int e = 32 - Norm_32s_Pos_I(&x);
    if (e % 2 == 0) x >>= 1;
    const int k = (x >> 25) - 16;
    return (tabsqr[k] - ((x >> 10) & 0x7FFF) * tabsqr_d[k]) >> (e >> 1);
}

Vsp32s dot(const Vsp16s* a, const Vsp16s* b, int n, int step = 1) {
    Vsp32s sum = 0;
    for (int i = 0; i < n; i += step) sum = L_mac(sum, a[i], b[i]);
    return sum;
}

VspStatus lagMax(const Vsp16s* s, Vsp32s len, Vsp32s lagMin, Vsp32s lagMax, Vsp32s* max, Vsp32s* lag) {
    *max = kMin32;
    for (int k = lagMax; k >= lagMin; k--) {
        const Vsp32s c = dot(s, s - k, len);
        if (c >= *max) {
            *max = c;
            *lag = k;
        }
    }
    return vspStsNoErr;
}

// The copy that the open-loop searches work on.
const Vsp16s* scaled(const Vsp16s* wsp, int step, Vsp16s* copy) {
    const Vsp32s energy = dot(wsp - 143, wsp - 143, 223, step);
    for (int i = 0; i < 223; i++) {
        const Vsp16s s = wsp[i - 143];
        copy[i] = energy == kMax32 ? Vsp16s(s >> 3) : energy >= 1 << 20 ? s : ShiftL_16s(s, 3);
    }
    return copy + 143;
}

VspStatus openLoop(const Vsp16s* wsp, Vsp16s* result) {  // Pitch_ol
    Vsp16s copy[223];
    const Vsp16s* s = scaled(wsp, 1, copy);
    const int bounds[3][2] = {{80, 143}, {40, 79}, {20, 39}};
    Vsp16s best = 0;
    for (int i = 0; i < 3; i++) {
        Vsp32s max, lag = 0;
        lagMax(s, 80, bounds[i][0], bounds[i][1], &max, &lag);
        const Vsp16s norm = Vsp16s(Mpy_32(max, Inv_sqrt(dot(s - lag, s - lag, 80))));
        if (i == 0 || ((best * 27853) >> 15) < norm) {
            best = norm;
            *result = Vsp16s(lag);
        }
    }
    return vspStsNoErr;
}

VspStatus openLoopA(const Vsp16s* wsp, Vsp16s* result) {  // Pitch_ol_fast
    Vsp16s copy[223];
    const Vsp16s* s = scaled(wsp, 2, copy);
    const int bounds[3][3] = {{20, 39, 1}, {40, 79, 1}, {80, 142, 2}};
    Vsp32s lag[3], max[3];
    for (int i = 0; i < 3; i++) {
        max[i] = kMin32;
        for (int k = bounds[i][0]; k <= bounds[i][1]; k += bounds[i][2]) {
            const Vsp32s c = dot(s, s - k, 80, 2);
            if (c > max[i]) {
                max[i] = c;
                lag[i] = k;
            }
        }
    }
    const int centre = lag[2];
    for (const int k : {centre + 1, centre - 1}) {
        const Vsp32s c = dot(s, s - k, 80, 2);
        if (c > max[2]) {
            max[2] = c;
            lag[2] = k;
        }
    }
    int norm[3];
    for (int i = 0; i < 3; i++) norm[i] = Vsp16s(Mpy_32(max[i], Inv_sqrt(Add_32s(1, dot(s - lag[i], s - lag[i], 80, 2)))));
    const auto multiple = [&](int a, int b) {
        const int twice = 2 * lag[a] - lag[b], thrice = 3 * lag[a] - lag[b];
        return (twice < 5 && twice > -5) || (thrice < 7 && thrice > -7);
    };
    if (multiple(1, 2)) norm[1] += norm[2] >> 2;
    if (multiple(0, 1)) norm[0] += (norm[1] * 6554) >> 15;
    int winner = 0;
    for (int i = 1; i < 3; i++)
        if (norm[winner] < norm[i]) winner = i;
    *result = Vsp16s(lag[winner]);
    return vspStsNoErr;
}

void convolve(const Vsp16s* x, const Vsp16s* h, Vsp16s* y, int len) {
    for (int n = 0; n < len; n++) {
        Vsp32s sum = 0;
        for (int i = 0; i <= n; i++) sum = L_mac(sum, x[i], h[n - i]);
        y[n] = Vsp16s(L_shl3(sum) >> 16);
    }
}

VspStatus convPartial(const Vsp16s* x, const Vsp16s* h, Vsp16s* y, Vsp32s len, Vsp32s) {
    convolve(x, h, y, len);
    return vspStsNoErr;
}

void normCorr(const Vsp16s* u, const Vsp16s* x, const Vsp16s* h, int t_min, int t_max, Vsp16s* corr) {  // Norm_Corr
    Vsp16s f[40];
    convolve(u - t_min, h, f, 40);
    const bool large = dot(f, f, 40) > 1 << 26;
    if (large)
        for (Vsp16s& v : f) v >>= 2;
    for (int k = t_min; k <= t_max; k++) {
        *corr++ = sat_16s(Mpy_32(dot(x, f, 40), Inv_sqrt(dot(f, f, 40))));
        if (k == t_max) break;
        const Vsp16s e = u[-(k + 1)];
        for (int j = 39; j > 0; j--) {
            const Vsp32s p = Mul2_32s(e * h[j]);
            f[j] = sat_16s((large ? Mul2_32s(p) >> 16 : L_shl3(p) >> 16) + f[j - 1]);
        }
        f[0] = Vsp16s(large ? e >> 2 : e);
    }
}

Vsp32s interpol3(const Vsp16s* c, int fraction) {  // Interpol_3
    if (fraction < 0) {
        fraction += 3;
        c--;
    }
    Vsp32s sum = 16384;
    for (int i = 0; i < 4; i++) sum += c[-i] * inter_3[fraction + 3 * i] + c[1 + i] * inter_3[3 - fraction + 3 * i];
    return sum >> 15;
}

void predLt3(Vsp16s* out, int lag, int fraction) {  // Pred_lt_3
    const Vsp16s* x0 = out - lag;
    fraction = -fraction;
    if (fraction < 0) {
        fraction += 3;
        x0--;
    }
    for (int n = 0; n < 40; n++) {
        Vsp32s sum = 0;
        for (int i = 0; i < 10; i++) {
            sum = L_mac(sum, x0[n - i], inter_3l[fraction + 3 * i]);
            sum = L_mac(sum, x0[n + 1 + i], inter_3l[3 - fraction + 3 * i]);
        }
        out[n] = round16(sum);
    }
}

void closedLoop(Vsp16s lag, const Vsp16s* x, const Vsp16s* h, const Vsp16s* u, int subframe, bool annexD, Vsp16s* delay) {
    const int span = subframe == 0 ? 6 : 9;
    int t_min = lag - (subframe == 0 ? 3 : 5);
    if (t_min < 20) t_min = 20;
    if (t_min + span > 143) t_min = 143 - span;
    Vsp16s corr[18] = {};
    normCorr(u, x, h, t_min - 4, t_min + span + 4, corr);
    int best = 0;
    for (int i = 1; i <= span; i++)
        if (corr[4 + i] >= corr[4 + best]) best = i;
    int first = -2, last = 2;
    if (subframe == 0 ? t_min + best > 84 : annexD && (best < span - 6 || best > span - 3))
        first = last = 0;
    else if (annexD && subframe == 1 && best == span - 6)
        first = 0;
    else if (annexD && subframe == 1 && best == span - 3)
        last = 0;
    int fraction = first;
    Vsp32s max = interpol3(corr + 4 + best, first);
    for (int f = first + 1; f <= last; f++) {
        const Vsp32s value = interpol3(corr + 4 + best, f);
        if (value > max) {
            max = value;
            fraction = f;
        }
    }
    delay[0] = Vsp16s(t_min + best + (fraction == 2) - (fraction == -2));
    delay[1] = Vsp16s(fraction == 2 ? -1 : fraction == -2 ? 1 : fraction);
}

VspStatus search(Vsp16s lag, const Vsp16s* x, const Vsp16s* h, Vsp16s* e, Vsp16s* delay, Vsp16s* vector, Vsp16s subframe) {
    closedLoop(lag, x, h, e + 154, subframe, false, delay);
    predLt3(e + 154, delay[0], delay[1]);
    for (int n = 0; n < 40; n++) vector[n] = e[154 + n];
    return vspStsNoErr;
}

VspStatus searchD(Vsp16s lag, const Vsp16s* x, const Vsp16s* h, const Vsp16s* e, Vsp16s subframe, Vsp16s* delay) {
    closedLoop(lag, x, h, e + 154, subframe, true, delay);
    return vspStsNoErr;
}

VspStatus decodeVector(const Vsp16s* delay, Vsp16s* e) {
    predLt3(e + 154, delay[0], delay[1]);
    return vspStsNoErr;
}

VspStatus gain(const Vsp16s* x, const Vsp16s* h, const Vsp16s* v, Vsp16s* y, Vsp16s* g) {
    // Convolve, G_pitch; a correlation that leaves 32 bits and comes back is not told from one that fits.
    convolve(v, h, y, 40);
    Vsp16s quarter[40];
    for (int n = 0; n < 40; n++) quarter[n] = Vsp16s(y[n] >> 2);
    int expYY = 0, expXY = 0;
    Vsp32s yy = Add_32s(dot(y, y, 40), 1), xy = dot(x, y, 40);
    if (yy == kMax32) {
        yy = Add_32s(dot(quarter, quarter, 40), 1);
        expYY = -4;
    }
    if (xy == kMax32 || xy == kMin32) {
        xy = dot(x, quarter, 40);
        expXY = -2;
    }
    *g = 0;
    if (xy <= 0) return vspStsNoErr;
    expYY += Norm_32s_Pos_I(&yy);
    expXY += Norm_32s_Pos_I(&xy);
    const Vsp32s quotient = ((round16(xy) >> 1) << 15) / round16(yy);
    const int right = expXY - expYY;
    const Vsp16s value = right >= 0 ? Vsp16s(right > 15 ? 0 : quotient >> right) : ShiftL_16s(sat_16s(quotient), -right);
    *g = value < 19661 ? value : Vsp16s(19661);
    return vspStsNoErr;
}

}  // namespace

void bench::addScalarG729(vsp::Api& api) {
    api.vspsAutoCorrLagMax_Inv_16s = lagMax;
    api.vspsConvPartial_16s_Sfs = convPartial;
    api.vspsOpenLoopPitchSearch_G729_16s = openLoop;
    api.vspsOpenLoopPitchSearch_G729A_16s = openLoopA;
    api.vspsAdaptiveCodebookSearch_G729_16s = search;
    api.vspsAdaptiveCodebookSearch_G729D_16s = searchD;
    api.vspsDecodeAdaptiveVector_G729_16s_I = decodeVector;
    api.vspsAdaptiveCodebookGain_G729_16s = gain;
}
