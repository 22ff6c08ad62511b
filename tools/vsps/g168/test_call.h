// A call for a test: signals of both ends over a line with an echo, and a canceller that hears them.
#pragma once

#include <string>
#include <vector>

#include "echo/traced_canceller.h"
#include "simulate_echo/simulation.h"

struct TestLine {
    std::string path, otherPath;   // the other one is what the path changes to
    double echoReturnLoss, delay;  // dB, ms
    VspvEchoSettings canceller;
};

constexpr double kNothing = -96;  // dBm0, for digital silence

class TestCall {
  public:
    TestCall(const TestLine& line, bool suppresses);

    // Silence of the near end need not be said.
    void play(const Samples& far, const Samples& near = {});
    void changePath();
    // From here on the line returns nothing.
    void openPath();

    double seconds() const { return double(near_.size()) / kRate; }
    // The canceller is done with it.
    void finish();

    // Afterwards: mean levels over the period of the source signal that begins then, dBm0; over its sounds, as the level
    // of the source is given.
    double outputLevel(double second) const;
    double echoLeft(double second) const;  // output without what the near end says
    // 20 ms each.
    const std::vector<EchoFrame>& frames() const { return frames_; }

  private:
    static double level(const Samples& samples, double second);
    void keep();

    TestLine line_;
    LineSimulation simulation_;
    TracedCanceller canceller_;
    Samples near_, out_;
    std::vector<EchoFrame> frames_;
};
