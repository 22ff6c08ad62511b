// One interface to all echo cancellers that are compared.
#pragma once

#include <memory>
#include <string>

#include "echo/owned_canceller.h"
#include "echo_scenario.h"

namespace echo {

class Adapter {
  public:
    virtual ~Adapter() = default;
    // A whole recording from a fresh start; out has the length of near.
    virtual Signal process(const Signal& far, const Signal& near) = 0;
};

// name: subband, fullband, each with -fixed or -bare (without tone detector and search of the bulk delay, which speexdsp
// has not either) or as it is; speexdsp; webrtc, whose tail is fixed; a program as examples/subband_filter, with a slash.
std::unique_ptr<Adapter> makeAdapter(const std::string& name, double tailMs);

// Ours, to be called in steps.
OwnedCanceller makeCanceller(const std::string& name, double tailMs);

}  // namespace echo
