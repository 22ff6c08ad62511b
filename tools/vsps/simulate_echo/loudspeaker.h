// A loudspeaker that distorts what is too loud for it.
#pragma once

enum class Clipping { soft, hard };

class Loudspeaker {
  public:
    // A sine of that level has that much total harmonic distortion: percent over 0, at most 40.
    Loudspeaker(Clipping clipping, double percent, double dbov);

    double play(double x) const;  // samples of 16 bits

  private:
    Clipping clipping_;
    double limit_;  // that the sound never exceeds
};
