// The tone detectors as they are defined, sample by sample. The states are their own.
#pragma once

#include "vspsc/types.h"

namespace vsp::plain {

// The counters, in samples. They stay at the largest value that they can have.
struct ToneRuns {
    static constexpr Vsp32s kMost = 0x7FFFFFFF;
    Vsp32s minRun, maxRun, maxDip;
    Vsp32s run = 0, dip = 0, reversals = 0;

    explicit ToneRuns(Vsp32s rate)
        : minRun(rate == 8000 ? 3304 : 6608), maxRun(rate == 8000 ? 3728 : 7456), maxDip(rate == 8000 ? 160 : 320) {}

    void tone() {
        if (run < kMost) run++;
        dip = 0;
    }
    void nothing() { run = dip = 0; }
    bool low(bool deep) {
        bool found = false;
        if (deep && minRun < run && run < maxRun) {
            if (reversals < kMost) reversals++;
            found = reversals >= 2;
            run = 0;
        }
        if (++dip > maxDip) reversals = dip = run = 0;
        return found;
    }
};

struct ToneDetector_32f {
    ToneRuns runs;
    Vsp32f c0, c2, c3, alpha, x1 = 0, x2 = 0, y1 = 0, y2 = 0, in = 0, out = 0;

    explicit ToneDetector_32f(Vsp32s rate)
        : runs(rate),
          c0(rate == 8000 ? 0.037804752588272095f : 0.019259274005889893f),
          c2(rate == 8000 ? 0.1511024385690689f : -1.331711769104004f),
          c3(rate == 8000 ? 0.9243904948234558f : 0.9614814519882202f),
          alpha(rate == 8000 ? 0.96f : 0.92f) {}

    bool sample(Vsp32f x) {
        const Vsp32f y = ((c0 * x + -c0 * x2) - c2 * y1) - c3 * y2;
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        in = alpha * in + (1.0f - alpha) * (x * x);
        out = alpha * out + (1.0f - alpha) * (y * y);
        if (Vsp64f(out) > 0.8 * Vsp64f(in) && 10000.0f * in > out)
            runs.tone();
        else if (Vsp64f(out) > 0.0008 * Vsp64f(in) && in > out)
            return runs.low(Vsp64f(out) < 0.48 * Vsp64f(in));
        else
            runs.nothing();
        return false;
    }
};

struct ToneDetector_16s {
    ToneRuns runs;
    Vsp32s c0, c2, c3, alpha, x1 = 0, x2 = 0, y1 = 0, y2 = 0;
    Vsp64s in = 0, out = 0;

    explicit ToneDetector_16s(Vsp32s rate)
        : runs(rate),
          c0(rate == 8000 ? 155 : 79),
          c2(rate == 8000 ? 619 : -5455),
          c3(rate == 8000 ? 3786 : 3938),
          alpha(rate == 8000 ? 15728 : 15073) {}

    bool sample(Vsp16s x) {
        const Vsp32s sum = (-c0 * x2 - c2 * y1 - c3 * y2 + c0 * x + 2048) >> 12;
        const Vsp32s y = sum > 32767 ? 32767 : sum < -32768 ? -32768 : sum;
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        in = (Vsp64s(x * x) * (16384 - alpha) + in * alpha) >> 14;
        out = (Vsp64s(y * y) * (16384 - alpha) + out * alpha) >> 14;
        if (out > in * 13107 >> 14)
            runs.tone();
        else
            return runs.low(out < in * 7864 >> 14);
        return false;
    }
};

}  // namespace vsp::plain
