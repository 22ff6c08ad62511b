// The library's detector of an answer tone's phase reversals.
#pragma once

#include "vspsc/types.h"

namespace vspv {

// It begins anew after 50 ms of constant samples: with nothing to hear the library's detector does not forget a tone. Its
// state lies behind the object in the caller's memory, at a multiple of 16, which it keeps when the memory is copied.
class ReversalDetector {
  public:
    static Vsp32s stateBytes(Vsp32s rate, bool fixedPoint);

    ReversalDetector(Vsp32s rate, bool fixedPoint, void* state);

    // Takes a millisecond, or less at the end; tells whether there was a reversal.
    bool detect(const Vsp16s* block, Vsp32s count, void* state);

  private:
    void* place(void* state);
    void begin(void* state);

    Vsp32s rate_, constant_ = 0;  // Hz; milliseconds
    Vsp32s offset_;               // of what the state holds from its beginning
    bool fixedPoint_;
};

}  // namespace vspv
