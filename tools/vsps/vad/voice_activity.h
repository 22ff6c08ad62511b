// Where there is speech, as a GSM-AMR encoder detects it.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "vad/vad_detector.h"

struct ActivityFrame {
    bool speech;
    double power;      // mean square
    double snr;        // dB, see VadDetector
    double reference;  // dB, see VadDetector
};

constexpr double kActivityFrameSeconds = 0.02;

class VoiceActivity {
  public:
    explicit VoiceActivity(int option);

    // Takes any number of samples at 8000 Hz and appends the frames that they complete.
    void process(std::span<const std::int16_t> samples, std::vector<ActivityFrame>& frames);
    // At the end: appends the frame that has begun, if there is one; silence fills it up.
    void finish(std::vector<ActivityFrame>& frames);

  private:
    ActivityFrame detect();

    std::unique_ptr<VadDetector> detector_;
    AmrPreProcessing preProcessing_;
    AmrWeighting weighting_;
    AmrOpenLoop openLoop_;
    AmrFrame frame_{};
    std::size_t filled_ = 0;
    std::array<Vsp16s, kAmrLookAhead + kAmrFrame> speech_{};  // pre-processed: the end of the last frame, then the frame
};
