// The search of the algebraic codebook pulse by pulse. Arguments are taken as valid, and no sum as saturating.
#include "amrwb/scalar_amrwb.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "arithmetic/standard_ops.h"

namespace {

using namespace vsp;

constexpr int kLength = 64, kTracks = 4;
using Samples = std::array<int, kLength>;

struct Settings {
    int passes, begun;
    double weight;
    std::vector<int> candidates;
};

Settings settings(int rate) {
    switch (rate) {
        case 9: return {4, 0, 0.25, {4, 8}};
        case 13: return {4, 2, 0.125, {4, 8, 8}};
        case 16: return {4, 4, 0.125, {4, 6, 8, 8}};
        default: return {rate == 21 ? 1 : 2, 4, 0.0625, {2, 2, 3, 4, 5, 6, 7, 8, 8, 8}};
    }
}

int product(const Samples& a, int from, const Samples& b, int to) {
    int sum = 0;
    for (int n = std::max(from, to); n < kLength; n++) sum += a[std::size_t(n - from)] * b[std::size_t(n - to)];
    return sum;
}

VspStatus search(const Vsp16s* target, const Vsp16s* residual, const Vsp16s* impulse, Vsp32s rate, Vsp16s* code, Vsp16s* y,
                 Vsp16s*) {
    const Settings s = settings(rate);
    Samples h, x, d, mean, sign;
    std::copy_n(impulse, kLength, h.begin());
    std::copy_n(target, kLength, x.begin());
    double energyOfResidual = 1, energyOfTarget = 1;
    for (int i = 0; i < kLength; i++) {
        d[std::size_t(i)] = product(x, 0, h, i) >> 12;
        energyOfResidual += residual[i] * residual[i];
        energyOfTarget += double(d[std::size_t(i)]) * d[std::size_t(i)];
    }
    for (std::size_t i = 0; i < kLength; i++) {
        const double b = 32768 * (residual[i] / std::sqrt(energyOfResidual) + s.weight * d[i] / std::sqrt(energyOfTarget));
        sign[i] = b < 0 ? -1 : 1;
        mean[i] = int(b * sign[i]);
        d[i] *= sign[i];
    }
    int correlations[kLength][kLength];
    for (int p = 0; p < kLength; p++)
        for (int q = p; q < kLength; q++)
            if (q == p || (q - p) % 2 != 0)
                correlations[p][q] = correlations[q][p] =
                    (product(h, p, h, q) >> 15) * sign[std::size_t(p)] * sign[std::size_t(q)];
    std::array<std::vector<int>, kTracks> ranked;
    for (int t = 0; t < kTracks; t++) {
        for (int p = t; p < kLength; p += kTracks) ranked[std::size_t(t)].push_back(p);
        std::stable_sort(ranked[std::size_t(t)].begin(), ranked[std::size_t(t)].end(),
                         [&](int p, int q) { return mean[std::size_t(p)] > mean[std::size_t(q)]; });
    }

    int best = -1, bestEnergy = 1;
    for (int pass = 0; pass < s.passes; pass++) {
        std::vector<int> pulses;
        Samples filtered{};
        int sum = 0, energy = 0;
        const auto put = [&](int p) {
            pulses.push_back(p);
            sum += d[std::size_t(p)];
            for (int n = p; n < kLength; n++) filtered[std::size_t(n)] += sign[std::size_t(p)] * h[std::size_t(n - p)];
        };
        for (int i = 0; i < s.begun; i++) put(ranked[std::size_t((pass + i) % kTracks)][0]);
        energy = product(filtered, 0, filtered, 0) >> 18;
        for (std::size_t pair = 0; pair < s.candidates.size(); pair++) {
            const int row = s.begun + 2 * int(pair);
            const int first = (pass + row / kTracks + row % kTracks) % kTracks, second = (first + 1) % kTracks;
            Samples more;
            for (const int t : {first, second})
                for (int p = t; p < kLength; p += kTracks)
                    more[std::size_t(p)] = (product(filtered, 0, h, p) >> 14) * sign[std::size_t(p)] + correlations[p][p];
            int found = -1, foundEnergy = 1, a = first, b = second;
            for (int p = first; p < kLength; p += kTracks) {
                const auto& order = ranked[std::size_t(first)];
                if (std::find(order.begin(), order.begin() + s.candidates[pair], p) == order.begin() + s.candidates[pair])
                    continue;
                for (int q = second; q < kLength; q += kTracks) {
                    const int total = sum + d[std::size_t(p)] + d[std::size_t(q)], square = (total * total) >> 15;
                    const int e =
                        energy + ((more[std::size_t(p)] + more[std::size_t(q)] + 2 * correlations[p][q] + 4) >> 3);
                    if (square * foundEnergy <= found * e) continue;
                    found = square, foundEnergy = e, a = p, b = q;
                }
            }
            energy = foundEnergy;
            put(a);
            put(b);
        }
        const int square = (sum * sum) >> 15;
        if (square * bestEnergy <= best * energy) continue;
        best = square, bestEnergy = energy;
        std::fill_n(code, kLength, Vsp16s(0));
        for (const int p : pulses) code[p] = Vsp16s(code[p] + 512 * sign[std::size_t(p)]);
        for (std::size_t n = 0; n < kLength; n++) y[n] = Vsp16s((filtered[n] + 4) >> 3);
    }
    return vspStsNoErr;
}

}  // namespace

void bench::addScalarAmrwb(vsp::Api& api) { api.vspsAlgebraicCodebookSearch_AMRWB_16s = search; }
