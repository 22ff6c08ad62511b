// The open-loop search of the tool against what an encoder of the standard found in recorded speech, noise, music and
// tones. The encoder ran at all rates in turn, the search of the tool is that of some of them, so that they agree mostly,
// not always.
#include "vad/amr_open_loop.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "gsmamr/recorded.h"

namespace {

using namespace vsp::test;

constexpr Vsp16s kNewestFlag = 0x4000;

// The front end over a sequence of pre-processed frames.
class FrontEnd {
  public:
    void process(const std::vector<Vsp16s>& samples) {
        AmrFrame frame;
        std::copy(samples.begin(), samples.end(), frame.begin());
        search_.process(weighting_.process(frame));
    }
    // What the detector of the next frame sees.
    const OpenLoopResult& result() const { return search_.result(); }

  private:
    AmrWeighting weighting_;
    AmrOpenLoop search_;
};

struct Agreement {
    int same = 0, all = 0;

    void add(bool isSame) {
        same += isSame;
        all++;
    }
    double share() const { return double(same) / all; }
};

}  // namespace

TEST(AmrOpenLoop, FindsWhatTheEncoderFoundForOption1) {
    constexpr int kSequences = 13,
                  kExactlyPeriodic = 11;  // in the latter, rounding decides between multiples of the period
    const RecordedCalls calls("vad1_seq.bin", 1, 446);
    Agreement pitch, tones, near;
    FrontEnd frontEnd;
    int sequence = -1;
    for (std::size_t i = 0; i < calls.count(); i++) {
        if (calls[i].at<Vsp16s>(0) == 1) {
            frontEnd = {};
            if (++sequence == kSequences) break;
        }
        const OpenLoopResult& found = frontEnd.result();
        if (sequence != kExactlyPeriodic) pitch.add(found.steadyPitch == ((calls[i].at<Vsp16s>(2) & kNewestFlag) != 0));
        near.add(std::abs(found.bestCorrHp - calls[i].at<Vsp16s>(4)) < 1000);
        tones.add((found.toneFlags & kNewestFlag) == (calls[i].at<Vsp16s>(6) & kNewestFlag));
        frontEnd.process(calls[i].samples(8, kAmrFrame));
    }
    EXPECT_EQ(kSequences, sequence);
    EXPECT_GT(pitch.share(), 0.95);
    EXPECT_GT(tones.share(), 0.95);
    EXPECT_GT(near.share(), 0.7);
}

TEST(AmrOpenLoop, FindsWhatTheEncoderFoundForOption2) {
    constexpr int kSequences = 11;
    const RecordedCalls calls("vad2_seq.bin", 2, 520);
    Agreement periodic;
    FrontEnd frontEnd;
    for (std::size_t i = 0; i < calls.count() && calls[i].at<Vsp16s>(2) < kSequences; i++) {
        if (calls[i].at<Vsp16s>(0) == 1) frontEnd = {};
        periodic.add(frontEnd.result().ltpFlag == (calls[i].at<Vsp32s>(4) != 0));
        frontEnd.process(calls[i].samples(8, kAmrFrame));
    }
    EXPECT_GT(periodic.all, 1500);
    EXPECT_GT(periodic.share(), 0.97);
}
