// The front end of the speech detector against what an encoder of the standard found in recorded signals. The encoder ran
// at all rates in turn, of which the front end has one: in these recordings the rates hardly differ.
#include "detect/open_loop.h"

#include <gtest/gtest.h>

#include "gsmamr/recorded.h"

namespace vsp::test {

TEST(VoiceSpeechDetector, HearsTheOpenLoopOfAnEncoder) {
    const RecordedCalls calls("vad1_seq.bin", 1, 446);
    Vsp64s highPass[2];
    vspv::OpenLoop openLoop(1, highPass);
    int sequence = -1, frames = 0, sameCorrelation = 0, sameFlags = 0;
    for (std::size_t i = 0; i < calls.count(); i++) {
        if (calls[i].at<Vsp16s>(0) == 1) {
            openLoop = vspv::OpenLoop(1, highPass);
            sequence++;
        }
        Vsp16s pitchFlags = calls[i].at<Vsp16s>(2);
        if (sequence == 4 || sequence == 5 || sequence == 9) {
            frames++;
            sameCorrelation += openLoop.bestCorrHp() == calls[i].at<Vsp16s>(4);
            sameFlags += openLoop.toneFlags() == calls[i].at<Vsp16s>(6);
        }
        openLoop.readProcessed(calls[i].samples(8, vspv::kFrame).data());
        openLoop.search(&pitchFlags);
    }
    EXPECT_EQ(480, frames);
    EXPECT_GT(sameCorrelation, 0.93 * frames);
    EXPECT_GT(sameFlags, 0.93 * frames);
}

}  // namespace vsp::test
