// Whether somebody talks at the near end.
#pragma once

#include <algorithm>
#include <cmath>

namespace vspv {

class NearSpeech {
  public:
    explicit NearSpeech(double frameRate)
        : startFrames_(static_cast<int>(kStart * frameRate)),
          floorRise_(1 - std::exp(-1 / (kFloorTime * frameRate))),
          echoFall_(std::exp(-1 / (kEchoTime * frameRate))),
          farFall_(std::exp(-1 / (kFarTime * frameRate))) {}

    struct Frame {
        double near, far, error, estimate;  // powers
        double noise;                       // of the error, smoothed
        double predicted;                   // of the error, as far as it is echo that has not been learned yet
        bool cancelling;                    // the filter has been seen to remove echo
    };

    // A filter that cancels leaves little of the echo, so what is comparable to the echo is speech. Without such a filter
    // only what cannot be an echo is, as it is louder than the far end.
    void update(const Frame& f) {
        if (f.near > 0 && started_ < startFrames_) started_++;
        if (started_ < startFrames_) floor_ = f.noise;
        floor_ = f.noise < floor_ || floor_ == 0 ? f.noise : floor_ + floorRise_ * (f.noise - floor_);
        echo_ = std::max(f.estimate, echoFall_ * echo_);
        far_ = std::max(f.far, farFall_ * far_);
        const double explained = f.cancelling ? kComparable * echo_ : kLouder * far_;
        heard_ = started_ >= startFrames_ &&
                 (f.cancelling ? f.error : f.near) > std::max(kAbove * (f.predicted + floor_), explained);
    }
    bool heard() const { return heard_; }

  private:
    static constexpr double kFloorTime = 5, kEchoTime = 0.1, kFarTime = 0.5, kStart = 0.2;  // s
    static constexpr double kAbove = 4, kComparable = 0.25, kLouder = 4;

    int startFrames_, started_ = 0;
    double floorRise_, echoFall_, farFall_;
    double floor_ = 0, echo_ = 0, far_ = 0;
    bool heard_ = false;
};

}  // namespace vspv
