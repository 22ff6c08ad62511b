// The fixed-codebook searches of G.729 (3.8) and Annex A by their definitions, candidate by candidate.
#include "arithmetic/standard_ops.h"
#include "g729/scalar_g729.h"

namespace {

using namespace vsp;

struct Problem {
    Vsp16s h[40], d[40], sign[40];  // the sharpened response, magnitudes and signs of the target filtered backwards
    Vsp16s rr[40][40];

    Problem(const Vsp16s* x, const Vsp16s* impulse, int lag, Vsp16s sharp, bool annexA) {
        for (int i = 0; i < 40; i++) h[i] = impulse[i];
        for (int i = lag; i < 40; i++) h[i] = Add_16s(h[i], Mul_16s(h[i - lag], shl_16s(sharp, 1)));
        backward(x);
        correlate();
        for (int p = 0; p < 40; p++)
            for (int q = 0; q < 40; q++)
                if (p != q) {
                    const Vsp16s ofQ = sign[p] > 0 || !annexA ? sign[q] : sign[q] > 0 ? kMin16 : kMax16;
                    rr[p][q] = Mul_16s(rr[p][q], annexA ? ofQ : Mul_16s(sign[p], sign[q]));
                }
    }

    void backward(const Vsp16s* x) {
        Vsp32s sums[40], largest = 0;
        for (int i = 0; i < 40; i++) {
            sums[i] = dotSaturating(x + i, h, 40 - i);
            largest = Abs_32s(sums[i]) > largest ? Abs_32s(sums[i]) : largest;
        }
        const int norm = norm_32s(largest) < 16 ? norm_32s(largest) : 16;
        for (int i = 0; i < 40; i++) {
            const Vsp16s value = Vsp16s(sums[i] >> (18 - norm));
            sign[i] = value >= 0 ? kMax16 : kMin16;
            d[i] = Abs_16s(value);
        }
    }

    void correlate() {
        const Vsp32s energy = dotSaturating(h, h, 40);
        Vsp16s scaled[40];
        for (int i = 0; i < 40; i++)
            scaled[i] = high_32s(energy) > 32000 ? shr_16s(h[i], 1) : shl_16s(h[i], norm_32s(energy) >> 1);
        for (int distance = 0; distance < 40; distance++) {
            Vsp32s sum = 0;
            for (int k = 0; k + distance < 40; k++) {
                sum = mac_32s(sum, scaled[k], scaled[k + distance]);
                rr[39 - k][39 - k - distance] = rr[39 - k - distance][39 - k] = high_32s(sum);
            }
        }
    }

    void store(const int (&p)[4], int lag, Vsp16s sharp, Vsp16s* code, Vsp16s* y, Vsp16s* index) const {
        int signs = 0;
        for (int i = 0; i < 40; i++) code[i] = y[i] = 0;
        for (int n = 0; n < 4; n++) {
            const bool positive = sign[p[n]] > 0;
            code[p[n]] = positive ? 8191 : -8192;
            for (int i = p[n]; i < 40; i++) y[i] = positive ? Add_16s(y[i], h[i - p[n]]) : Sub_16s(y[i], h[i - p[n]]);
            signs |= int(positive) << n;
        }
        for (int i = lag; i < 40; i++) code[i] = Add_16s(code[i], Mul_16s(code[i - lag], shl_16s(sharp, 1)));
        index[0] = Vsp16s(p[0] / 5 + p[1] / 5 * 8 + p[2] / 5 * 64 + (p[3] / 5 * 2 + p[3] % 5 - 3) * 512);
        index[1] = Vsp16s(signs);
    }
};

bool better(Vsp16s ps, Vsp16s alp, Vsp16s& square, Vsp16s& energy) {
    const Vsp16s candidate = Mul_16s(ps, ps);
    if (msu_32s(Mul2_16s32s(energy, candidate), square, alp) <= 0) return false;
    square = candidate;
    energy = alp;
    return true;
}

VspStatus search(const Vsp16s* x, const Vsp16s* h, Vsp16s lag, Vsp16s sharp, Vsp16s subframe, Vsp16s* extra, Vsp16s* code,
                 Vsp16s* y, Vsp16s* index) {
    const Problem problem(x, h, lag, sharp, false);
    const auto& d = problem.d;
    const auto& rr = problem.rr;
    Vsp16s max = 0;
    Vsp32s sum = 0;
    for (int t = 0; t < 3; t++) {
        Vsp16s largest = 0;
        for (int i = t; i < 40; i += 5) {
            largest = d[i] > largest ? d[i] : largest;
            sum = mac_32s(sum, d[i], 1);
        }
        max = Add_16s(max, largest);
    }
    const Vsp16s average = Vsp16s(sum >> 4), threshold = Add_16s(average, Mul_16s(Sub_16s(max, average), 13107));
    Vsp16s time = Add_16s(75, subframe == 0 ? Vsp16s(30) : *extra), square = 0, energy = kMax16;
    int best[4] = {0, 1, 2, 3};
    const auto all = [&] {
        for (int p0 = 0; p0 < 40; p0 += 5)
            for (int p1 = 1; p1 < 40; p1 += 5)
                for (int p2 = 2; p2 < 40; p2 += 5) {
                    const Vsp16s start = Add_16s(Add_16s(d[p0], d[p1]), d[p2]);
                    if (start <= threshold) continue;
                    const Vsp32s alp = rr[p0][p0] + rr[p1][p1] + rr[p2][p2] + 2 * (rr[p0][p1] + rr[p0][p2] + rr[p1][p2]);
                    for (int t = 3; t < 5; t++)
                        for (int p3 = t; p3 < 40; p3 += 5) {
                            const Vsp32s total = alp + rr[p3][p3] + 2 * (rr[p0][p3] + rr[p1][p3] + rr[p2][p3]);
                            if (!better(Add_16s(start, d[p3]), Vsp16s(total >> 4), square, energy)) continue;
                            best[0] = p0, best[1] = p1, best[2] = p2, best[3] = p3;
                        }
                    if (--time <= 0) return;
                }
    };
    all();
    *extra = time;
    problem.store(best, lag, sharp, code, y, index);
    return vspStsNoErr;
}

// Annex A. In a stage two pulses lie on `tracks`, the first at the two largest places or, after a pair, both anywhere.
VspStatus searchA(const Vsp16s* x, const Vsp16s* h, Vsp16s lag, Vsp16s sharp, Vsp16s* code, Vsp16s* y, Vsp16s* index) {
    const Problem problem(x, h, lag, sharp, true);
    const auto& d = problem.d;
    const auto& rr = problem.rr;
    int best[4] = {0, 1, 2, 3};
    Vsp16s bestSquare = -1, bestEnergy = 1;
    const auto stage = [&](int firstTrack, int secondTrack, int outerTrack, int innerTrack, int(&p)[4]) {
        Vsp16s square = -1, energy = 1;
        p[0] = firstTrack, p[1] = secondTrack;
        int previous = -1;
        for (int n = 0; n < 2; n++) {
            int largest = -1;
            for (int i = firstTrack; i < 40; i += 5)
                if (i != previous && (largest < 0 || d[i] > d[largest])) largest = i;
            previous = largest;
            for (int i = secondTrack; i < 40; i += 5) {
                Vsp32s alp = mac_32s(Mul2_16s32s(rr[largest][largest], 8192), rr[largest][i], 16384);
                alp = mac_32s(alp, rr[i][i], 8192);
                if (!better(Add_16s(d[largest], d[i]), round_32s(alp), square, energy)) continue;
                p[0] = largest, p[1] = i;
            }
        }
        const Vsp16s ps = Add_16s(d[p[0]], d[p[1]]);
        const Vsp32s alp = Mul2_16s32s(energy, 8192);
        square = -1, energy = 1;
        p[2] = outerTrack, p[3] = innerTrack;
        for (int i = outerTrack; i < 40; i += 5) {
            Vsp32s outer = mac_32s(mac_32s(alp, rr[p[0]][i], 4096), rr[p[1]][i], 4096);
            outer = mac_32s(outer, rr[i][i], 2048);
            for (int j = innerTrack; j < 40; j += 5) {
                Vsp32s inner = mac_32s(Mul2_16s32s(rr[p[0]][j], 8192), rr[p[1]][j], 8192);
                inner = mac_32s(inner, rr[j][j], 4096);
                const Vsp32s total = mac_32s(mac_32s(outer, rr[i][j], 4096), round_32s(inner), 16384);
                if (!better(Add_16s(Add_16s(ps, d[i]), d[j]), round_32s(total), square, energy)) continue;
                p[2] = i, p[3] = j;
            }
        }
        if (msu_32s(Mul2_16s32s(bestEnergy, square), bestSquare, energy) <= 0) return false;
        bestSquare = square;
        bestEnergy = energy;
        return true;
    };
    for (int t = 3; t < 5; t++) {
        int p[4];
        if (stage(2, t, 0, 1, p)) best[0] = p[2], best[1] = p[3], best[2] = p[0], best[3] = p[1];
        if (stage(t, 0, 1, 2, p)) best[0] = p[1], best[1] = p[2], best[2] = p[3], best[3] = p[0];
    }
    problem.store(best, lag, sharp, code, y, index);
    return vspStsNoErr;
}

}  // namespace

void bench::addScalarFixedCodebook(vsp::Api& api) {
    api.vspsFixedCodebookSearch_G729_16s = search;
    api.vspsFixedCodebookSearch_G729A_16s = searchA;
}
