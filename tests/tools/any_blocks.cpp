// What the pitch analysis of the tool finds does not depend on the blocks in which the samples come.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "pitch/pitch_track.h"

namespace {

std::mt19937 g_random(1);

// Noise that rises and falls, with a period in the louder parts.
std::vector<std::int16_t> makeSamples(std::size_t count) {
    std::vector<std::int16_t> samples(count);
    for (std::size_t i = 0; i < count; i++) {
        const double time = double(i) / 8000, voice = std::max(0.0, std::sin(2 * std::numbers::pi * time));
        samples[i] =
            std::int16_t(8000 * voice * std::sin(2 * std::numbers::pi * 140 * time) + double(g_random() % 400) - 200);
    }
    return samples;
}

template <typename Result, typename Analysis>
std::vector<Result> analyse(Analysis analysis, std::span<const std::int16_t> samples, std::size_t longestBlock) {
    std::vector<Result> results;
    while (!samples.empty()) {
        const std::size_t count = std::min<std::size_t>(samples.size(), 1 + g_random() % longestBlock);
        analysis.process(samples.first(count), results);
        samples = samples.subspan(count);
    }
    analysis.finish(results);
    return results;
}

bool same(const PitchPoint& a, const PitchPoint& b) {
    return a.openLoopLag == b.openLoopLag && a.lag == b.lag && a.fraction == b.fraction && a.gain == b.gain &&
           a.predictionGain == b.predictionGain && a.level == b.level;
}

template <typename Result, typename Make>
void expectTheSame(Make make, std::span<const std::int16_t> samples, std::size_t results) {
    const std::vector<Result> whole = analyse<Result>(make(), samples, samples.size() + 1);
    EXPECT_EQ(results, whole.size());
    for (const std::size_t longest : {1, 13, 100, 3000}) {
        const std::vector<Result> parts = analyse<Result>(make(), samples, longest);
        EXPECT_TRUE(std::equal(whole.begin(), whole.end(), parts.begin(), parts.end(),
                               [](const Result& a, const Result& b) { return same(a, b); }))
            << longest;
    }
}

}  // namespace

TEST(AnyBlocks, FindTheSame) {
    for (const std::size_t count : {0, 1, 79, 80, 119, 121, 160, 48077}) {
        const std::vector<std::int16_t> samples = makeSamples(count);
        for (const PitchSearch search : {PitchSearch::kMain, PitchSearch::kAnnexA})
            expectTheSame<PitchPoint>([=] { return PitchTracker(search); }, samples, count / 80 * 2);
    }
}
