// The music detector, against its definition (G.729 Annexes G and I) from states and signals close to its limits.
#include <cstring>
#include <numeric>

#include "arithmetic/scaled_log2.h"
#include "g729/reference.h"
#include "support/guarded.h"
#include "support/level_test.h"

namespace vsp::test {

namespace {

using g729::Signal;

constexpr int kPeriod = 64;

Vsp16s mix(int oldWeight, Vsp16s old, int newWeight, Vsp16s value) {
    return g729::extract_h(g729::L_mac(g729::L_mult(Vsp16s(oldWeight), old), Vsp16s(newWeight), value));
}

Vsp16s energyOf(Vsp32s value, Vsp16s exponent) {
    const Vsp32s level = g729::L_mac(scaledLog2(value, 9864), 9864, Vsp16s(exponent - 2));
    return g729::sat16(g729::extract_h(g729::L_shl(level, 11)) - 4875);
}

struct Frame {
    Vsp16s rate, exponent;
    Vsp32s r0;
    Signal reflection, lag, gain;
    Vsp16s previousMode, previousVad, vad;
};

Vsp16s residualEnergy(const Frame& f) {
    const auto error = [&f](std::size_t i) { return 32767 - ((f.reflection[i] * f.reflection[i]) >> 15); };
    int left = error(0);
    for (std::size_t i = 1; i < 4; i++) left = (left * error(i)) >> 15;
    return energyOf(Vsp32s(2LL * (f.r0 >> 16) * left + 2LL * (((f.r0 >> 1 & 0x7FFF) * left) >> 15)), f.exponent);
}

// How often something happens in a period, how often it did in others, and for how many frames it has not.
struct Counter {
    Vsp16s count, mean, run;
};

// As the library keeps it.
struct Detector {
    Vsp16s frames, reflection[10], energy, gain, reflectionRun;
    Counter music, pitch;

    Vsp16s operator()(const Frame& f) {
        frames = Vsp16s(frames < 32767 ? frames + 1 : 256);
        Vsp32s change = 0;
        for (std::size_t i = 0; i < 10; i++) {
            const Vsp16s d = g729::sat16(reflection[i] - f.reflection[i]);
            change = g729::L_mac(change, d, d);
        }
        const Vsp16s loud = energyOf(f.r0, f.exponent), quieter = residualEnergy(f);
        const int rise = quieter - energy;
        if (f.vad == 0) {
            for (std::size_t i = 0; i < 10; i++) reflection[i] = mix(29491, reflection[i], 3277, f.reflection[i]);
            energy = mix(29491, energy, 3277, quieter);
        }

        const int gains = std::accumulate(f.gain.begin(), f.gain.end(), 0),
                  lags = std::accumulate(f.lag.begin(), f.lag.end(), 0);
        gain = mix(6554, Vsp16s(gains * 13108 >> 16), 26214, gain);
        int spread = 0;
        for (const Vsp16s lag : f.lag) spread += 2 * (5 * lag - lags) * (5 * lag - lags);
        const bool periodic = gain > (f.rate == 0 ? 11960 : 10322), steady = spread * 64 < 21632 && gain > 7373;
        const bool likeNoise = f.reflection[1] >= 0 && f.reflection[1] <= 14746 && gain < 8192;
        reflectionRun = Vsp16s(likeNoise ? reflectionRun + 1 : 0);

        music.count = Vsp16s(music.count + 256 * (f.previousMode == 1 && f.vad == 1));
        finish(music, 29491, 500);
        pitch.count = Vsp16s(pitch.count + 256 * (periodic || (f.previousVad == 1 && steady)));
        finish(pitch, pitch.count > 6400 ? 32113 : pitch.count > 5120 ? 31130 : 29491, 100);
        if (f.rate < 2 || f.vad == 1) return f.vad;
        const bool changed = (change >> 16) > 12452 || rise > 819;
        const bool musical = pitch.mean > 2560 || music.mean > 280 || frames < kPeriod;
        return (changed && loud > 10240) || (musical && loud > 1433);
    }

  private:
    void finish(Counter& c, int weight, int longest) const {
        const bool ends = frames % kPeriod == 0;
        if (ends) c.mean = frames == kPeriod ? c.count : mix(weight, c.mean, 32768 - weight, c.count);
        c.run = Vsp16s(c.count == 0 ? c.run + 1 : 0);
        if (c.run > longest || reflectionRun > 150) c.mean = 0;
        if (ends) c.count = 0;
    }
};

Signal wordsOf(const Detector& d) {
    Signal words(sizeof d / sizeof(Vsp16s));
    std::memcpy(words.data(), &d, sizeof d);
    return words;
}

}  // namespace

class MusicDetector : public LevelTest {};
VSPSC_EVERY_LEVEL(MusicDetector);

TEST_P(MusicDetector, FollowsTheDefinitionFromAnyState) {
    std::mt19937 random(1);
    const auto below = [&random](int n) { return int(random() % unsigned(n)); };
    const auto near = [&below](std::initializer_list<int> limits) {
        return Vsp16s(limits.begin()[below(int(limits.size()))] + below(3) - 1);
    };
    int decisions[2] = {};
    for (int n = 0; n < 50000; n++) {
        Detector d{};
        d.frames = near({1, kPeriod - 1, 6 * kPeriod - 1, 300, 32766});
        for (Vsp16s& r : d.reflection) r = Vsp16s(below(8000) - 4000);
        d.energy = Vsp16s(below(16000) - 4000);
        d.gain = near({4000, 7373, 8192, 10322, 11960});
        d.reflectionRun = near({1, 150});
        d.music = {Vsp16s(256 * below(below(2) == 0 ? 3 : 64)), near({1, 280, 12000}), near({1, 500})};
        d.pitch = {Vsp16s(256 * (below(2) == 0 ? below(3) : 18 + below(10))), near({1, 2560}), near({1, 100})};

        Frame f{Vsp16s(below(3)),
                near({-24, -14, -4, -2, 0}),
                0x40000000 + below(0x3FFFFFFF),
                Signal(10),
                {},
                {},
                Vsp16s(below(2)),
                Vsp16s(below(2)),
                Vsp16s(below(4) == 0)};
        for (std::size_t i = 0; i < 10; i++) f.reflection[i] = Vsp16s(d.reflection[i] + below(64) - 32);
        const std::size_t far = std::size_t(below(10));
        if (below(2) == 0) f.reflection[far] = Vsp16s(d.reflection[far] + near({20200}));
        if (below(2) == 0) f.reflection[1] = near({0, 14746});
        for (int i = 0; i < 5; i++) {
            f.gain.push_back(Vsp16s(d.gain + below(5) - 2));
            f.lag.push_back(Vsp16s(60 + below(4)));
        }
        if (below(3) == 0) {
            const bool loud = below(2) == 0;
            f.exponent = loud ? -4 : -18;
            f.r0 = Vsp32s((loud ? 1537500000 : 1261100000) + below(8000000) - 4000000);
        }
        if (below(3) == 0) d.energy = Vsp16s(residualEnergy(f) - near({819}));

        Guarded<Vsp16s> state(wordsOf(d)), vad(Signal{f.vad});
        const Vsp16s expected = d(f);
        ASSERT_EQ(vspStsNoErr,
                  api.vspsMusicDetect_G729E_16s(f.rate, f.r0, f.exponent, f.reflection.data(), f.lag.data(), f.gain.data(),
                                                f.previousMode, f.previousVad, vad.data(), state.data()));
        ASSERT_EQ(expected, vad[0]) << n;
        ASSERT_EQ(wordsOf(d), state.values()) << n;
        decisions[expected]++;
    }
    EXPECT_GT(decisions[0], 10000);
    EXPECT_GT(decisions[1], 10000);
}

}  // namespace vsp::test
