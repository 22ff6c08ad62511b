// The pitch tracker of the voice layer.
#include <cmath>
#include <numbers>

#include "support/samples.h"
#include "support/speech.h"
#include "support/status_order.h"
#include "voice/object.h"

namespace vsp::test {

namespace {

using Samples = std::vector<Vsp16s>;
using Tracker = VoiceObject<VspvPitchTracker>;
using Points = std::vector<VspvPitchPoint>;

constexpr Vsp32s kSearches[] = {vspvPitchMain, vspvPitchAnnexA, vspvPitchAnnexD};

// On an object that moves after every call.
Points track(Vsp32s search, std::span<const Vsp16s> samples, std::size_t longestBlock) {
    Tracker one(0, vspvPitchTrackerGetSize), two(1, vspvPitchTrackerGetSize);
    EXPECT_EQ(vspStsNoErr, vspvPitchTrackerInit(one.get(), search));
    Tracker *current = &one, *next = &two;
    Points all;
    Vsp32s count = -1;
    inBlocks(samples, longestBlock, 1, [&](std::span<const Vsp16s> block) {
        const Guarded<Vsp16s> guarded(Samples(block.begin(), block.end()));
        Guarded<VspvPitchPoint> points(2 * ((block.size() + 79) / 80));
        ASSERT_EQ(vspStsNoErr,
                  vspvPitchTrackerProcess(current->get(), guarded.data(), Vsp32s(block.size()), points.data(), &count));
        all.insert(all.end(), points.begin(), points.begin() + count);
        current->moveTo(*next);
        std::swap(current, next);
    });
    Guarded<VspvPitchPoint> last(std::size_t(2));
    EXPECT_EQ(vspStsNoErr, vspvPitchTrackerFinish(current->get(), last.data(), &count));
    all.insert(all.end(), last.begin(), last.begin() + count);
    return all;
}

bool same(const VspvPitchPoint& a, const VspvPitchPoint& b) {
    return a.openLoopLag == b.openLoopLag && a.lag == b.lag && a.fraction == b.fraction && a.voiced == b.voiced &&
           a.f0 == b.f0 && a.power == b.power && a.gain == b.gain && a.predictionGain == b.predictionGain;
}

}  // namespace

TEST(VoicePitch, BlocksOfAnyLengthGiveTheSame) {
    const Samples speech = recordedSpeech();
    for (const Vsp32s search : kSearches)
        for (const std::size_t count : {0, 1, 79, 80, 119, 121, 160, 24077}) {
            const auto samples = std::span(speech).subspan(8000, count);
            const Points whole = track(search, samples, 100000);
            EXPECT_EQ(count / 80 * 2, whole.size());
            for (const std::size_t longest : {1, 13, 100, 3000}) {
                const Points parts = track(search, samples, longest);
                EXPECT_TRUE(std::equal(whole.begin(), whole.end(), parts.begin(), parts.end(), same)) << longest;
            }
        }
}

TEST(VoicePitch, PulsesHaveTheirPeriodAndNoiseHasNone) {
    for (const Vsp32s search : kSearches) {
        for (const double f0 : {123.0, 234.5, 390.0}) {
            Samples pulses(8000);
            double phase = 0;
            for (Vsp16s& x : pulses) {
                phase += f0 / 8000;
                double sum = 0;  // harmonics that fall with frequency
                for (int k = 1; k * f0 < 3500; k++) sum += std::cos(2 * std::numbers::pi * k * phase) / k;
                x = Vsp16s(4000 * sum);
            }
            int voiced = 0, near = 0, all = 0;  // a subframe may have no pulse
            for (const VspvPitchPoint& p : track(search, pulses, 100)) {
                const double periods = f0 / p.f0;  // multiples are as good
                near += std::abs(periods - std::round(periods)) < 0.03 * std::round(periods);
                voiced += p.voiced;
                all++;
            }
            EXPECT_GT(voiced, 0.85 * all) << f0;
            EXPECT_GT(near, 0.7 * all) << f0;
        }
        std::mt19937 random(1);
        Samples noise(8000);
        for (Vsp16s& x : noise) x = Vsp16s(int(random() % 4001) - 2000);
        int voiced = 0;
        for (const VspvPitchPoint& p : track(search, noise, 100)) voiced += p.voiced;
        EXPECT_LT(voiced, 20);
        for (const VspvPitchPoint& p : track(search, Samples(8000, 0), 100)) EXPECT_EQ(0, p.voiced + p.gain + p.power);
        EXPECT_EQ(200U, track(search, samples(8000), 100).size());
    }
}

TEST(VoicePitch, ChecksComeInOrderAndTouchNothing) {
    const Choices<Vsp32s> searches{2, {{-1, vspStsBadArgErr}, {3, vspStsBadArgErr}, {kLowest, vspStsBadArgErr}}};
    const std::vector<VspStatus> nulls{vspStsNullPtrErr};
    EXPECT_EQ(vspStsNullPtrErr, vspvPitchTrackerGetSize(nullptr));
    expectStatusOrder(vspvPitchTrackerInit, {vspStsNullPtrErr, vspStsBadArgErr}, pointer, searches);
    expectStatusOrder(vspvPitchTrackerProcess, {vspStsNullPtrErr, vspStsSizeErr}, pointer, pointer, length, pointer,
                      pointer);
    expectStatusOrder(vspvPitchTrackerFinish, nulls, pointer, pointer, pointer);
}

}  // namespace vsp::test
