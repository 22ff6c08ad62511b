// The pitch of speech as a G.729 encoder finds it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

enum class PitchSearch { kMain, kAnnexA, kAnnexD };  // G.729, Annex A (reduced complexity), Annex D (6.4 kbit/s)

constexpr double kPitchPointSeconds = 0.005;

struct PitchPoint {              // a subframe
    std::int16_t openLoopLag;    // samples, of the frame
    std::int16_t lag, fraction;  // closed loop: lag + fraction / 3 samples
    float gain;                  // of the adaptive codebook
    float predictionGain;        // dB that the adaptive codebook removes from the target
    float level;                 // dBov

    double f0() const { return 8000 / (lag + fraction / 3.0); }  // Hz
    // The past predicts at least half of the energy, with at least half its own amplitude.
    bool voiced() const { return gain >= 0.5f && predictionGain >= 3; }
};

class PitchTracker {
  public:
    explicit PitchTracker(PitchSearch search);
    ~PitchTracker();
    PitchTracker(PitchTracker&&) noexcept;

    // Takes any number of samples at 8000 Hz and appends two points for each frame of 80 samples that they and the 40
    // samples behind it complete.
    void process(std::span<const std::int16_t> samples, std::vector<PitchPoint>& points);
    // At the end: appends the points of the last whole frame, if they are still missing; silence follows it.
    void finish(std::vector<PitchPoint>& points);

  private:
    struct Coder;
    std::unique_ptr<Coder> coder_;
    std::vector<std::int16_t> samples_;  // from the next frame on
};
