// The search of the multipulse code against its definition (G.723.1 2.15), for impulse responses near full scale too, where
// sums saturate.
#include "arithmetic/standard_ops.h"
#include "g723/gain_tables.h"
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"

namespace vsp::test {

namespace {

using Signal = std::vector<Vsp16s>;

constexpr int kLen = 60;

Signal repeated(const Signal& x, int lag) {
    Signal y = x;
    for (int shift = lag; shift < kLen; shift += lag)
        for (int n = shift; n < kLen; n++) y[std::size_t(n)] = Add_16s(y[std::size_t(n)], x[std::size_t(n - shift)]);
    return y;
}

struct Code {
    Signal pulses;
    Vsp16s gain = 0, grid = 0, train = 0;
};

struct Search {
    const Signal& target;
    int count;
    Code best{};
    Vsp32s most = -0x40000000;

    // `Find_Best`
    void with(const Signal& h, Vsp16s train) {
        Vsp32s correlation[kLen], cross[kLen];
        for (int k = 0; k < kLen; k++) {
            correlation[k] = cross[k] = 0;
            for (int n = k; n < kLen; n++) {
                correlation[k] =
                    mac_32s(correlation[k], Vsp16s(h[std::size_t(n)] >> 1), Vsp16s(h[std::size_t(n - k)] >> 1));
                cross[k] = mac_32s(cross[k], target[std::size_t(n)], h[std::size_t(n - k)]);
            }
        }
        const int norm = norm_32s(correlation[0]);
        for (int k = 0; k < kLen; k++) {
            correlation[k] = round_32s(shl_32s(correlation[k], norm));
            cross[k] = shl_32s(cross[k], norm - 4);
        }
        for (int grid = 0; grid < 2; grid++) {
            int first = grid;
            for (int n = grid; n < kLen; n += 2)
                if (Abs_32s(cross[n]) >= Abs_32s(cross[first])) first = n;
            int gain = 22;
            Vsp32s least = 0x40000000;
            for (int i = 22; i >= 2; i--) {
                const Vsp32s away =
                    Abs_32s(Sub_32s(Mul2_16s32s(g723::codeGains[i], Vsp16s(correlation[0])), Abs_32s(cross[first])));
                if (away < least) {
                    least = away;
                    gain = i;
                }
            }
            for (int i = gain - 2; i <= gain + 1; i++) {
                const Code code{pulsesFrom(first, g723::codeGains[i], correlation, cross), Vsp16s(i), Vsp16s(grid), train};
                const Vsp32s score = scoreOf(code.pulses, h);
                if (score <= most) continue;
                most = score;
                best = code;
            }
        }
    }

  private:
    Signal pulsesFrom(int place, Vsp16s amplitude, const Vsp32s* correlation, const Vsp32s* cross) const {
        std::vector<Vsp32s> rest(cross, cross + kLen);
        Signal pulses(kLen);
        for (int k = 0;; k++) {
            const Vsp16s pulse = Vsp16s(rest[std::size_t(place)] >= 0 ? amplitude : -amplitude);
            pulses[std::size_t(place)] = pulse;
            if (k == count - 1) return pulses;
            const int last = place;
            Vsp32s largest = -1;
            for (int n = last % 2; n < kLen; n += 2) {
                if (pulses[std::size_t(n)] != 0) continue;
                Vsp32s& r = rest[std::size_t(n)];
                r = msu_32s(r, pulse, Vsp16s(correlation[std::abs(n - last)]));
                if (Abs_32s(r) <= largest) continue;
                largest = Abs_32s(r);
                place = n;
            }
        }
    }

    Vsp32s scoreOf(const Signal& pulses, const Signal& h) const {
        Vsp32s score = 0;
        for (std::size_t n = 0; n < kLen; n++) {
            Vsp32s sum = 0;
            for (std::size_t j = 0; j <= n; j++) sum = mac_32s(sum, pulses[j], h[n - j]);
            const Vsp16s y = high_32s(shl_32s(sum, 2));
            score = Sub_32s(mac_32s(score, target[n], y), Mul2_16s32s(y, y) >> 1);
        }
        return score;
    }
};

int choose(int n, int k) { return k == 0 ? 1 : n < k ? 0 : choose(n - 1, k - 1) + choose(n - 1, k); }

}  // namespace

class MultipulseSearch : public LevelTest {};
VSPSC_EVERY_LEVEL(MultipulseSearch);

TEST_P(MultipulseSearch, IsTheDefinition) {
    int found = 0;
    for (unsigned seed = 1; seed <= 400; seed++) {
        SCOPED_TRACE(seed);
        Signal target = samples(kLen, seed), h = samples(kLen, seed + 1000);
        for (std::size_t n = 0; n < kLen; n++) {
            if (seed % 2 == 0) h[n] = Vsp16s(n == 0 ? (seed % 4 == 0 ? 32767 : -32768) : h[n] >> (1 + n % 12 + seed % 3));
            if (seed % 3 == 0) target[n] = Vsp16s(target[n] < 0 ? -32768 : 32767);
            if (seed % 3 == 1) target[n] = Vsp16s(target[n] >> seed % 8);
        }
        const Vsp32s subframe = Vsp32s(seed % 4);
        const Vsp16s lag = Vsp16s(18 + seed * 7 % 128);
        Search search{target, subframe % 2 == 0 ? 6 : 5};
        search.with(h, 0);
        if (lag < 58) search.with(repeated(h, lag), 1);
        if (search.best.pulses.empty()) continue;
        const Code& best = search.best;
        Vsp32s position = 0;
        int signs = 0, j = 6 - search.count;
        for (int i = 0; i < 30 && j < 6; i++) {
            const Vsp16s pulse = best.pulses[std::size_t(best.grid + 2 * i)];
            if (pulse == 0) {
                position += choose(29 - i, 5 - j);
            } else {
                signs = 2 * signs + (pulse < 0 ? 1 : 0);
                j++;
            }
        }

        Guarded<Vsp16s> code(kLen), index(4);
        Guarded<Vsp32s> where(1);
        ASSERT_EQ(vspStsNoErr, api.vspsFixedCodebookSearch_MLQ_G723_16s(target.data(), h.data(), lag, subframe, code.data(),
                                                                        where.data(), index.data()));
        ASSERT_EQ((Signal{best.gain, best.grid, best.train, Vsp16s(signs)}), index.values());
        ASSERT_EQ(position, where[0]);
        ASSERT_EQ(best.train != 0 ? repeated(best.pulses, lag) : best.pulses, code.values());
        found++;
    }
    EXPECT_GT(found, 300);
}

}  // namespace vsp::test
