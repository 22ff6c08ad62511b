// Linear prediction of order 30 from the past synthesis, which both ends have (G.729 Annex E.3.2).
#pragma once

#include "codec/g729/lp_filter.h"

namespace vspv::g729 {

class BackwardAnalysis {
  public:
    void reset();
    void analyse(Vsp16s* lpc);              // 31 coefficients, from what has been synthesised so far
    void synthesised(const Vsp16s* frame);  // 80 samples

  private:
    Vsp16s past_[145], memory_[33], last_[kMaxOrder + 1];
    HybridWindowState window_;
};

}  // namespace vspv::g729
