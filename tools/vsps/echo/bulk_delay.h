// The pure delay before an echo path: of networks, and of the buffers of sound devices.
#pragma once

#include <vector>

#include "echo/delay_line.h"
#include "vspsc/types.h"

// A long adaptive filter in a few bands, rough but enough to see where the echo path lies.
class BulkDelay {
  public:
    // Delays up to maxFrames are found, for a canceller whose own filter spans so many taps. `spacing` is the distance
    // between bands in Hz.
    BulkDelay(int maxFrames, int taps, double spacing, double frameRate);

    // Bands of the newest frame of both signals, the near end not being delayed. True if the delay has changed.
    bool update(const Vsp32fc* far, const Vsp32fc* near);
    // Frames.
    int delay() const { return delay_; }

    // The bands that update() looks at are firstBand() + i * kBandStep, and these are all it is given.
    static constexpr int kBands = 16, kBandStep = 2;
    int firstBand() const { return firstBand_; }

  private:
    void adapt(const Vsp32fc* near);
    bool decide();

    int maxFrames_, taps_, firstBand_, length_, hold_;
    DelayLine<Vsp32fc> far_, response_;
    std::vector<double> farPower_, step_;
    std::vector<double> errorPower_;
    std::vector<Vsp32fc> error_;
    std::vector<double> energy_;  // of the response, at each delay
    int delay_ = 0, candidate_ = 0, held_ = 0;
    bool skip_ = false;
};
