// The detector of answer tones of the voice layer.
#include <cmath>
#include <numbers>
#include <tuple>

#include "support/samples.h"
#include "support/status_order.h"
#include "voice/object.h"

namespace vsp::test {

namespace {

using Samples = std::vector<Vsp16s>;
using Detector = VoiceObject<VspvToneDetector>;
using Times = std::vector<std::tuple<Vsp32s, Vsp32s, Vsp64s, Vsp64s, Vsp64s, Vsp64f>>;

struct Kind {
    Vsp32s rate, arithmetic;
};
constexpr Kind kKinds[] = {{8000, vspvToneFloat}, {8000, vspvToneFixed}, {16000, vspvToneFloat}, {16000, vspvToneFixed}};

// Noise, with tones of 1.7 s every 2.5 s that are reversed every 0.45 s.
Samples noisyTones(Vsp32s rate, double seconds) {
    std::mt19937 random(1);
    Samples samples(std::size_t(rate * seconds));
    for (std::size_t i = 0; i < samples.size(); i++) {
        const double time = double(i) / rate, since = std::fmod(time, 2.5);
        const double tone = since < 1.7 ? 8000 * std::sin(2 * std::numbers::pi * 2100 * time) : 0;
        samples[i] = Vsp16s((std::fmod(since, 0.9) < 0.45 ? tone : -tone) + double(random() % 400) - 200);
    }
    return samples;
}

// The events, on an object that moves before every call.
Times eventsIn(const Samples& samples, Kind kind, std::size_t longest) {
    Detector one(0, vspvToneDetectorGetSize, kind.rate, kind.arithmetic),
        two(1, vspvToneDetectorGetSize, kind.rate, kind.arithmetic);
    Detector *current = &one, *next = &two;
    EXPECT_EQ(vspStsNoErr, vspvToneDetectorInit(one.get(), kind.rate, kind.arithmetic));
    Times times;
    const auto add = [&](const VspvToneEvent& e) {
        if (e.type != vspvToneNothing) times.emplace_back(e.type, e.reversals, e.time, e.start, e.end, e.power);
        current->moveTo(*next);
        std::swap(current, next);
        return e.type != vspvToneNothing;
    };
    VspvToneEvent event;
    inBlocks(samples, longest, 1, [&](std::span<const Vsp16s> block) {
        const Guarded<Vsp16s> guarded(Samples(block.begin(), block.end()));
        for (Vsp32s done = 0, used = 0; done < Vsp32s(block.size()); done += used) {
            EXPECT_EQ(vspStsNoErr, vspvToneDetectorProcess(current->get(), guarded.data() + done,
                                                           Vsp32s(block.size()) - done, &used, &event));
            if (!add(event)) {
                EXPECT_EQ(Vsp32s(block.size()), done + used);
            }
        }
    });
    do {
        EXPECT_EQ(vspStsNoErr, vspvToneDetectorFinish(current->get(), &event));
    } while (add(event));
    return times;
}

}  // namespace

TEST(VoiceTone, BlocksOfAnyLengthGiveTheSameEvents) {
    for (const Kind kind : kKinds) {
        const Samples samples = noisyTones(kind.rate, 6.009);
        const Times whole = eventsIn(samples, kind, samples.size());
        // Three tones with two, two and one reversals that are reported; the last one ends with the signal.
        ASSERT_EQ(8U, whole.size());
        for (std::size_t i = 0; i < whole.size(); i++) {
            const auto& [type, reversals, time, start, end, power] = whole[i];
            const bool ended = i == 2 || i == 5 || i == 7;
            EXPECT_EQ(ended ? vspvToneEnd : vspvToneReversal, type);
            EXPECT_EQ(i < 6 && i % 3 != 0 ? 2 : 1, reversals);
            const std::size_t tone = i / 3;
            const double begin = 2.5 * double(tone), late = double(time) / kind.rate - begin;
            if (!ended) {
                EXPECT_NEAR(i % 3 == 0 ? 0.905 : 1.355, late, 0.005);
            } else {
                EXPECT_NEAR(begin, double(start) / kind.rate, 0.011);
                EXPECT_NEAR(i == 7 ? 6 : begin + 1.7, double(end) / kind.rate, 0.011);
                EXPECT_NEAR(8000.0 * 8000 / 2, power, 8000.0 * 8000 / 50);
            }
        }
        for (const std::size_t longest : {1, 13, 100, 3000}) EXPECT_EQ(whole, eventsIn(samples, kind, longest)) << longest;
        EXPECT_TRUE(eventsIn(Samples(std::size_t(kind.rate), 8), kind, 100).empty());
        EXPECT_TRUE(eventsIn({}, kind, 1).empty());
    }
}

TEST(VoiceTone, ChecksComeInOrderAndTouchNothing) {
    const std::vector<VspStatus> order{vspStsNullPtrErr, vspStsRangeErr, vspStsBadArgErr}, nulls{vspStsNullPtrErr};
    const Choices<Vsp32s> rates{8000, {{0, vspStsRangeErr}, {11025, vspStsRangeErr}, {kLowest, vspStsRangeErr}}};
    const Choices<Vsp32s> arithmetics{1, {{-1, vspStsBadArgErr}, {2, vspStsBadArgErr}}};
    expectStatusOrder(vspvToneDetectorGetSize, order, rates, arithmetics, pointer);
    expectStatusOrder(vspvToneDetectorInit, order, pointer, rates, arithmetics);
    expectStatusOrder(vspvToneDetectorProcess, {vspStsNullPtrErr, vspStsSizeErr}, pointer, pointer, length, pointer,
                      pointer);
    expectStatusOrder(vspvToneDetectorFinish, nulls, pointer, pointer);
}

}  // namespace vsp::test
