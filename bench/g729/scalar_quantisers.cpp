// The quantiser of the line spectral pairs as the standard describes it: one entry after the other, one saturating
// operation after the other.
#include "arithmetic/standard_ops.h"
#include "g729/lsp_tables.h"
#include "g729/scalar_g729.h"

namespace {

using namespace vsp;

struct Choice {
    int entry1, low, high;
    Vsp32s distance;
};

void weigh(const Vsp16s* lsf, Vsp16s* w) {
    Vsp16s largest = 0;
    for (int i = 0; i < 10; i++) {
        const Vsp16s distance = i == 0   ? Sub_16s(lsf[1], 9221)
                                : i == 9 ? Sub_16s(15485, lsf[8])
                                         : Sub_16s(Sub_16s(lsf[i + 1], lsf[i - 1]), 8192);
        const Vsp16s square = high_32s(shl_32s(Mul2_16s32s(distance, distance), 2));
        w[i] = distance > 0 ? Vsp16s(2048) : Add_16s(high_32s(shl_32s(Mul2_16s32s(square, 20480), 2)), 2048);
        if (i == 4 || i == 5) w[i] = high_32s(shl_32s(Mul2_16s32s(w[i], 19661), 1));
        largest = w[i] > largest ? w[i] : largest;
    }
    for (int i = 0; i < 10; i++) w[i] = shl_16s(w[i], norm_16s(largest));
}

void spread(Vsp16s* x, int first, int last, int gap) {
    for (int j = first; j <= last; j++) {
        const Vsp16s half = shr_16s(Add_16s(Sub_16s(x[j - 1], x[j]), Vsp16s(gap)), 1);
        if (half > 0) {
            x[j - 1] = Sub_16s(x[j - 1], half);
            x[j] = Add_16s(x[j], half);
        }
    }
}

Choice choose(const LspPredictor<Vsp16s>& p, const Vsp16s* lsf, const Vsp16s* w, const Vsp16s* previous) {
    Vsp16s target[10], coded[10];
    for (int j = 0; j < 10; j++) {
        Vsp32s sum = lsf[j] * 0x10000;
        for (int k = 0; k < 4; k++) sum = msu_32s(sum, previous[10 * k + j], p.fg[k][j]);
        target[j] = high_32s(shl_32s(Mul2_16s32s(high_32s(sum), p.sumInverse[j]), 3));
    }
    Choice c{};
    Vsp32s best = kMax32;
    for (int i = 0; i < 128; i++) {
        Vsp32s sum = 0;
        for (int j = 0; j < 10; j++) {
            const Vsp16s d = Sub_16s(target[j], lspcb1[i][j]);
            sum = mac_32s(sum, d, d);
        }
        if (sum < best) {
            best = sum;
            c.entry1 = i;
        }
    }
    for (int half = 0; half < 2; half++) {
        int& entry = half == 0 ? c.low : c.high;
        best = kMax32;
        for (int i = 0; i < 32; i++) {
            Vsp32s sum = 0;
            for (int j = 5 * half; j < 5 * half + 5; j++) {
                const Vsp16s d = Sub_16s(Sub_16s(target[j], lspcb1[c.entry1][j]), lspcb2[i][j]);
                sum = mac_32s(sum, Mul_16s(w[j], d), d);
            }
            if (sum < best) {
                best = sum;
                entry = i;
            }
        }
        for (int j = 5 * half; j < 5 * half + 5; j++) coded[j] = Add_16s(lspcb1[c.entry1][j], lspcb2[entry][j]);
        spread(coded, half == 0 ? 1 : 5, half == 0 ? 4 : 9, 10);
    }
    spread(coded, 1, 9, 5);
    for (int j = 0; j < 10; j++) {
        const Vsp16s d = Mul_16s(Sub_16s(coded[j], target[j]), p.sum[j]);
        c.distance = mac_32s(c.distance, high_32s(shl_32s(Mul2_16s32s(w[j], d), 4)), d);
    }
    return c;
}

VspStatus lspQuant(const Vsp16s* lsp, Vsp16s* previous, Vsp16s* quantised, Vsp16s* index) {
    Vsp16s lsf[10], w[10], coded[10];
    kApi_y8.vspsLSPToLSF_G729_16s(lsp, lsf);
    weigh(lsf, w);
    const Choice choices[2] = {choose(lspPredictors[0], lsf, w, previous), choose(lspPredictors[1], lsf, w, previous)};
    const int mode = choices[1].distance < choices[0].distance;
    const Choice& c = choices[mode];
    for (int j = 0; j < 10; j++) coded[j] = Add_16s(lspcb1[c.entry1][j], lspcb2[j < 5 ? c.low : c.high][j]);
    spread(coded, 1, 9, 10);
    spread(coded, 1, 9, 5);
    for (int j = 0; j < 10; j++) {
        Vsp32s sum = Mul2_16s32s(coded[j], lspPredictors[mode].sum[j]);
        for (int k = 0; k < 4; k++) sum = mac_32s(sum, previous[10 * k + j], lspPredictors[mode].fg[k][j]);
        lsf[j] = high_32s(sum);
    }
    for (int i = 39; i >= 0; i--) previous[i] = i >= 10 ? previous[i - 10] : coded[i];
    for (int j = 0; j < 9; j++)
        if (lsf[j + 1] < lsf[j]) {
            const Vsp16s larger = lsf[j];
            lsf[j] = lsf[j + 1];
            lsf[j + 1] = larger;
        }
    if (lsf[0] < 40) lsf[0] = 40;
    for (int j = 0; j < 9; j++)
        if (lsf[j + 1] - lsf[j] < 321) lsf[j + 1] = Add_16s(lsf[j], 321);
    if (lsf[9] > 25681) lsf[9] = 25681;
    kApi_y8.vspsLSFToLSP_G729_16s(lsf, quantised);
    index[0] = Vsp16s(mode << 7 | c.entry1);
    index[1] = Vsp16s(c.low << 5 | c.high);
    return vspStsNoErr;
}

}  // namespace

void bench::addScalarG729Quantisers(vsp::Api& api) { api.vspsLSPQuant_G729_16s = lspQuant; }
