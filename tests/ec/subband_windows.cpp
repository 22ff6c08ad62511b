// What the built-in prototype windows reach, from the definitions in docs/subband-windows.md.
#include <gtest/gtest.h>

#include <cmath>

#include "ec/tables.h"

namespace vsp::test {
namespace {

template <class T>
struct Bank {
    const T* window;
    int length, bands, frame;
    double one;  // what stands for 1.0

    double w(int i) const { return i < 0 || i >= length ? 0 : window[i] / one; }

    // White noise through analysis and synthesis: out[n] is the sum over k of x[n - (L-F) + kN] T_k(n mod F).
    double snr() const {
        double error = 0;
        for (int n = 0; n < frame; n++)
            for (int shift = -length / bands * bands; shift <= length; shift += bands) {
                double t = shift == 0 ? -1 : 0;
                for (int i = n; i < length; i += frame) t += w(i) * w(i + shift);
                error += t * t / frame;
            }
        return -10 * std::log10(error);
    }

    // What ideal filters in the sub-bands leave of white noise is aliased from other bands.
    double erle() const {
        double all = 0, aliased = 0, zero = 0;
        for (int lag = -length; lag <= length; lag++) {
            double r = 0;
            for (int i = 0; i < length; i++) r += w(i) * w(i + lag);
            if (lag == 0) zero = r;
            if (lag % frame == 0) aliased += frame * r * r;
            all += r * r;
        }
        return 10 * std::log10(bands * zero * zero / (aliased - all));
    }
};

TEST(SubbandWindows, ReconstructAndKeepTheBandsApart) {
    const Bank<Vsp32f> five{VspsSubbandWindow_5_24_128_32f, 128, 32, 24, 1};
    EXPECT_GE(five.snr(), 22.17);
    EXPECT_GE(five.erle(), 28.0);
    const Bank<Vsp32f> six{VspsSubbandWindow_6_44_256_32f, 256, 64, 44, 1};
    EXPECT_GE(six.snr(), 34.4);
    EXPECT_GE(six.erle(), 32.5);
}

TEST(SubbandWindows, LoseLittleInQ13) {
    const Bank<Vsp16s> five{VspsSubbandWindow_5_24_128_16s, 128, 32, 24, 8192};
    EXPECT_GE(five.snr(), 22.1);
    EXPECT_GE(five.erle(), 27.9);
    const Bank<Vsp16s> six{VspsSubbandWindow_6_44_256_16s, 256, 64, 44, 8192};
    EXPECT_GE(six.snr(), 34.3);
    EXPECT_GE(six.erle(), 32.4);
}

}  // namespace
}  // namespace vsp::test
