// Detector option 1: flag and every field of the record after every frame.
#include "gsmamr/detector_test.h"

namespace vsp::test {

namespace {

using Samples = std::vector<Vsp16s>;
using State = VspGSMAMRVad1State;

constexpr Vsp16s kCorrLowest = 13106, kPeriodic = 30000;

}  // namespace

extern "C" const State vad1InitialisedInC;

class Vad1 : public LevelTest {
  protected:
    Vsp16s detect(const Samples& src, Vsp16s bestCorrHp = kCorrLowest, Vsp16s toneFlags = 0, Guard guard = Guard::end,
                  std::size_t gap = 0) {
        const Guarded<Vsp16s> samples(src, guard, gap);
        Guarded<State> record(std::vector{state}, guard);
        Guarded<Vsp16s> flag(1, guard);
        EXPECT_EQ(vspStsNoErr, api.vspsVAD1_GSMAMR_16s(samples.data(), record.data(), flag.data(), bestCorrHp, toneFlags));
        EXPECT_EQ(src, samples.values());
        state = record[0];
        return flag[0];
    }

    State state = VSP_GSMAMR_VAD1_STATE_INIT;
};
VSPSC_EVERY_LEVEL(Vad1);

TEST_P(Vad1, RecordedSequencesHold) {
    const RecordedCalls calls("vad1_seq.bin", 1, 446);
    Samples src(200);
    for (std::size_t i = 0; i < calls.count(); i++) {
        const Record r = calls[i];
        if (r.at<Vsp16u>(0) == 1) {
            state = VSP_GSMAMR_VAD1_STATE_INIT;
            src.assign(200, 0);
        }
        const Samples frame = r.samples(8, 160);
        src.erase(src.begin(), src.begin() + 160);
        src.insert(src.end(), frame.begin(), frame.end());
        state.pitchFlags = r.at<Vsp16s>(2);
        ASSERT_EQ(r.at<Vsp16s>(328), detect(src, r.at<Vsp16s>(4), r.at<Vsp16s>(6))) << "frame " << i;
        ASSERT_EQ(bytesOf(r.at<State>(330)), bytesOf(state)) << "frame " << i;
    }
}

TEST_P(Vad1, RecordedSingleCallsHoldAtEveryPlaceInMemory) {
    const RecordedCalls calls("vad1_one.bin", 3, 640);
    for (std::size_t i = 0; i < calls.count(); i++)
        for (const Guard guard : {Guard::end, Guard::begin}) {
            const Record r = calls[i];
            state = r.at<State>(404);
            const Vsp16s flag = detect(r.samples(0, 200), r.at<Vsp16s>(400), r.at<Vsp16s>(402), guard, i % 9);
            ASSERT_EQ(r.at<Vsp16s>(520), flag) << "call " << i;
            ASSERT_EQ(bytesOf(r.at<State>(524)), bytesOf(state)) << "call " << i;
        }
}

TEST_P(Vad1, MatchesTheDefinitionOverALongRecording) {
    const Samples signal = longRecording();
    State expected = state;
    std::mt19937 random(1);
    for (std::size_t i = 0; i + 200 <= signal.size(); i += 160) {
        // Periods of strong and of weak correlation, pitch and tones, some as long as an encoder's registers.
        const bool periodic = i / 160 % 700 < 300;
        const Vsp16s corr = Vsp16s(periodic ? 20000 + random() % 12000 : random() % 20000);
        const Vsp16s tones = Vsp16s(random() % 8 == 0 ? 0x7C00 : random() & 0x7FFF);
        expected.pitchFlags = state.pitchFlags = Vsp16s(random() % 4 == 0 ? random() & 0x7FFF : 0);
        const Samples src(signal.begin() + std::ptrdiff_t(i), signal.begin() + std::ptrdiff_t(i) + 200);
        ASSERT_EQ(plain::vad1(src.data(), expected, corr, tones), detect(src, corr, tones)) << "frame " << i / 160;
        ASSERT_EQ(bytesOf(expected), bytesOf(state)) << "frame " << i / 160;
    }
}

TEST_P(Vad1, MatchesTheDefinitionFromAnyRecord) {
    for (unsigned seed = 1; seed <= 3000; seed++) {
        Samples src = samples(200, seed);
        if (seed % 2 == 0)
            for (Vsp16s& x : src) x = Vsp16s(x >> seed % 16);
        State expected = state = anyRecord<State>(seed);
        const auto args = samples(2, seed + 10000);
        ASSERT_EQ(plain::vad1(src.data(), expected, args[0], args[1]), detect(src, args[0], args[1])) << seed;
        ASSERT_EQ(bytesOf(expected), bytesOf(state)) << seed;
    }
}

TEST_P(Vad1, ASilentFrameEndsSpeechAndClearsTheCounters) {
    state.burstCount = 3;
    state.hangCount = 7;
    state.complexHangCount = 200;
    state.complexHangTimer = 90;
    state.pitchFlags = 0x7FFF;
    Samples src(200);
    src[100] = 86;  // power 14792
    EXPECT_EQ(0, detect(src, kPeriodic));
    EXPECT_EQ(0, state.burstCount | state.hangCount | state.complexHangCount | state.complexHangTimer);
    EXPECT_EQ(0x3FFF, state.pitchFlags);

    state.hangCount = 7;
    src[100] = 87;  // power 15138
    EXPECT_EQ(1, detect(src, kPeriodic));
    EXPECT_EQ(6, state.hangCount);
}

TEST_P(Vad1, AComplexSignalKeepsSpeechOnFor250Frames) {
    // Soft and steady, so that only the correlation speaks for it.
    Samples src(200);
    for (std::size_t i = 0; i < src.size(); i++) src[i] = i % 2 == 0 ? 16 : -16;
    const auto framesUntil = [&](Vsp16s corr, auto done) {
        int frames = 0;
        for (; !done() && frames < 1000; frames++) detect(src, corr);
        return frames;
    };
    framesUntil(kPeriodic, [&] { return state.complexHangTimer == 100; });
    EXPECT_EQ(0, state.complexHangCount);
    detect(src, kPeriodic);
    EXPECT_EQ(249, state.complexHangCount);
    // The timer keeps the hangover at its height until the correlation has gone.
    framesUntil(kCorrLowest, [&] { return state.complexHangTimer == 0; });
    EXPECT_EQ(248, state.complexHangCount);
    int forced = 0;
    while (forced < 1000 && detect(src) == 1) forced++;
    EXPECT_GE(forced, 248);
    EXPECT_EQ(0, state.complexHangCount);
    EXPECT_LT(forced, 260);
}

TEST_P(Vad1, CountersStopAtTheirHighest) {
    Samples src(200, 1000);
    state.complexHangTimer = state.burstCount = 32767;
    state.corrHpFast = kPeriodic;
    EXPECT_EQ(1, detect(src, kPeriodic));
    EXPECT_EQ(32767, state.complexHangTimer);

    state.complexHangTimer = state.complexHangCount = 0;
    state.corrHpFast = kCorrLowest;
    state.burstCount = 32767;
    state.vadReg = 0x7FFF;
    EXPECT_EQ(1, detect(src));
    EXPECT_EQ(32767, state.burstCount);
}

TEST(Vad1Record, IsInitialisedAlikeInC) {
    EXPECT_EQ(bytesOf(State VSP_GSMAMR_VAD1_STATE_INIT), bytesOf(vad1InitialisedInC));
}

}  // namespace vsp::test
