// The transform against recorded results, the double-precision transform and the reference's steps.
#include <complex>

#include "gsmamr/detector_test.h"

namespace vsp::test {

namespace {

using Words = std::vector<Vsp16s>;

// In the order of the transform's output, divided by 64.
std::vector<double> exactTransform(const Words& x) {
    std::vector<double> words(128);
    for (std::size_t k = 0; k <= 64; k++) {
        std::complex<double> sum = 0;
        for (std::size_t n = 0; n < 128; n++) sum += double(x[n]) * std::polar(1.0 / 64, -2 * M_PI * double(k * n) / 128);
        words[k < 64 ? 2 * k : 1] = sum.real();
        if (k > 0 && k < 64) words[2 * k + 1] = sum.imag();
    }
    return words;
}

}  // namespace

class Transform : public LevelTest {
  protected:
    // In memory that ends or begins at an unmapped page.
    Words transformed(const Words& x, Guard guard = Guard::end, std::size_t gap = 0) {
        Guarded<Vsp16s> words(x, guard, gap);
        EXPECT_EQ(vspStsNoErr, api.vspsFFTFwd_RToPerm_GSMAMR_16s_I(words.data()));
        return words.values();
    }
};
VSPSC_EVERY_LEVEL(Transform);

TEST_P(Transform, RecordedResultsHoldAtEveryPlaceInMemory) {
    const RecordedCalls calls("fft128.bin", 5, 512);
    for (std::size_t i = 0; i < calls.count(); i++)
        for (const Guard guard : {Guard::end, Guard::begin})
            ASSERT_EQ(calls[i].samples(256, 128), transformed(calls[i].samples(0, 128), guard, i % 9)) << i;
}

TEST_P(Transform, IsCloseToTheExactOneForPaddedHalfFrames) {
    for (unsigned seed = 1; seed <= 50; seed++) {
        Words x(128);
        std::mt19937 random(seed);
        for (std::size_t i = 24; i < 104; i++)
            x[i] = Vsp16s(seed % 2 == 0 ? 14744 * std::sin(0.01 * double(i * i) / seed) : int(random() % 29489) - 14744);
        const auto exact = exactTransform(x);
        const Words words = transformed(x);
        for (std::size_t i = 0; i < 128; i++)
            ASSERT_NEAR(exact[i], words[i], i < 2 ? 5.0 : 4.0) << "seed " << seed << ", word " << i;
    }
}

TEST_P(Transform, MatchesTheDefinitionWhereItSaturates) {
    std::mt19937 random(1);
    for (unsigned run = 0; run < 4000; run++) {
        Words x = samples(128, run);
        for (std::size_t i = 0; run % 3 != 0 && i < 128; i++) {  // full scale: random signs, square waves
            const bool positive = run % 3 == 1 ? random() % 2 == 0 : std::cos(M_PI * double(i * (run % 128)) / 128) > 0;
            x[i] = positive ? 32767 : -32768;
        }
        Words expected = x;
        plain::fft128(expected.data());
        ASSERT_EQ(expected, transformed(x)) << run;
    }
}

}  // namespace vsp::test
