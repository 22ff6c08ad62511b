// A decoded signal beside its original: both come in pieces of any length, are aligned and measured.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "analysis/fidelity.h"
#include "audio/audio.h"

class Comparison {
  public:
    // Each step that is measured is passed on.
    Comparison(int rate, std::function<void(const FidelityStep&)> onStep);

    void addOriginal(const Samples& samples) { add(original_, samples); }
    void addHeard(const Samples& samples) { add(heard_, samples); }
    void finish();

    const FidelityMeter& meter() const { return meter_; }
    int delay() const { return delay_.value_or(0); }  // samples that the decoded signal is late
    double seconds() const { return double(meter_.steps()) * meter_.stepSeconds(); }

  private:
    void add(Samples& to, const Samples& samples);
    void align();
    void measure();

    int rate_;
    FidelityMeter meter_;
    std::function<void(const FidelityStep&)> onStep_;
    Samples original_, heard_;    // not yet measured
    std::ptrdiff_t silence_ = 0;  // samples before the original begins to sound
    std::optional<int> delay_;
};
