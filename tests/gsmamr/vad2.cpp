// Detector option 2: flag and every field of the record after every frame.
#include "gsmamr/detector_test.h"

namespace vsp::test {

namespace {

using Samples = std::vector<Vsp16s>;
using State = VspGSMAMRVad2State;

}  // namespace

extern "C" const State vad2InitialisedInC;

class Vad2 : public LevelTest {
  protected:
    Vsp16s detect(const Samples& src, Vsp32s ltpFlag = 0, Guard guard = Guard::end, std::size_t gap = 0) {
        const Guarded<Vsp16s> samples(src, guard, gap);
        Guarded<State> record(std::vector{state}, guard);
        Guarded<Vsp16s> flag(1, guard);
        EXPECT_EQ(vspStsNoErr, api.vspsVAD2_GSMAMR_16s(samples.data(), record.data(), flag.data(), ltpFlag));
        EXPECT_EQ(src, samples.values());
        state = record[0];
        return flag[0];
    }

    State state = VSP_GSMAMR_VAD2_STATE_INIT;
};
VSPSC_EVERY_LEVEL(Vad2);

TEST_P(Vad2, RecordedSequencesHold) {
    const RecordedCalls calls("vad2_seq.bin", 2, 520);
    for (std::size_t i = 0; i < calls.count(); i++) {
        const Record r = calls[i];
        if (r.at<Vsp16u>(0) == 1) state = VSP_GSMAMR_VAD2_STATE_INIT;
        ASSERT_EQ(r.at<Vsp16s>(328), detect(r.samples(8, 160), r.at<Vsp32s>(4))) << "frame " << i;
        ASSERT_EQ(bytesOf(r.at<State>(332)), bytesOf(state)) << "frame " << i;
    }
}

TEST_P(Vad2, RecordedSingleCallsHoldAtEveryPlaceInMemory) {
    const RecordedCalls calls("vad2_one.bin", 4, 704);
    for (std::size_t i = 0; i < calls.count(); i++)
        for (const Guard guard : {Guard::end, Guard::begin}) {
            const Record r = calls[i];
            state = r.at<State>(324);
            const Vsp16s flag = detect(r.samples(4, 160), r.at<Vsp32s>(0), guard, i % 9);
            ASSERT_EQ(r.at<Vsp16s>(512), flag) << "call " << i;
            ASSERT_EQ(bytesOf(r.at<State>(516)), bytesOf(state)) << "call " << i;
        }
}

TEST_P(Vad2, MatchesTheDefinitionOverALongRecording) {
    const Samples signal = longRecording();
    State expected = state;
    for (std::size_t i = 0; i + 160 <= signal.size(); i += 160) {
        const Vsp32s ltpFlag = i / 160 % 300 < 40 ? 0x10000 : 0;
        const Samples src(signal.begin() + std::ptrdiff_t(i), signal.begin() + std::ptrdiff_t(i) + 160);
        ASSERT_EQ(plain::vad2(src.data(), expected, ltpFlag), detect(src, ltpFlag)) << "frame " << i / 160;
        ASSERT_EQ(bytesOf(expected), bytesOf(state)) << "frame " << i / 160;
    }
}

TEST_P(Vad2, MatchesTheDefinitionFromAnyRecord) {
    for (unsigned seed = 1; seed <= 3000; seed++) {
        Samples src = samples(160, seed);
        if (seed % 2 == 0)
            for (Vsp16s& x : src) x = Vsp16s(x >> seed % 16);
        State expected = state = anyRecord<State>(seed);
        expected.shiftState = state.shiftState = Vsp16s(seed % 3);
        if (seed % 4 != 0) expected.frameCnt = state.frameCnt = Vsp32s(seed % 9);
        const Vsp32s ltpFlag = seed % 5 == 0 ? kMin32 : 0;
        ASSERT_EQ(plain::vad2(src.data(), expected, ltpFlag), detect(src, ltpFlag)) << seed;
        ASSERT_EQ(bytesOf(expected), bytesOf(state)) << seed;
    }
}

TEST_P(Vad2, SpeechInEitherHalfIsEnough) {
    // Soft noise, then a half-frame loud enough to be speech but not to make the smoothed energies of the next one speech.
    std::mt19937 random(1);
    const auto half = [&random](int amplitude) {
        Samples x(80);
        for (Vsp16s& sample : x) sample = Vsp16s(int(random() % unsigned(2 * amplitude)) - amplitude);
        return x;
    };
    const auto frame = [&](int first, int second) {
        Samples x = half(first);
        const Samples y = half(second);
        x.insert(x.end(), y.begin(), y.end());
        return x;
    };
    for (int i = 0; i < 30; i++) detect(frame(20, 20));
    EXPECT_EQ(0, detect(frame(20, 20)));
    const State quiet = state;
    EXPECT_EQ(1, detect(frame(40, 5)));
    EXPECT_EQ(0, state.burstCount) << "the second half was not speech";
    EXPECT_EQ(0, state.hangoverCount);
    state = quiet;
    EXPECT_EQ(1, detect(frame(20, 40)));
    EXPECT_EQ(1, state.burstCount);
    EXPECT_EQ(quiet.frameCnt + 2, state.frameCnt);
}

TEST_P(Vad2, CountersStopAtTheirHighest) {
    const Samples soft(160, 0), loud = samples(160);
    state.frameCnt = kMax32;
    state.hysterCnt = state.burstCount = 32767;
    detect(soft);
    EXPECT_EQ(32767, state.hysterCnt);
    EXPECT_EQ(kMax32, state.frameCnt);
    state.burstCount = 32767;
    EXPECT_EQ(1, detect(loud));
    EXPECT_EQ(32767, state.burstCount);
}

TEST(Vad2Record, IsInitialisedAlikeInC) {
    EXPECT_EQ(bytesOf(State VSP_GSMAMR_VAD2_STATE_INIT), bytesOf(vad2InitialisedInC));
}

}  // namespace vsp::test
