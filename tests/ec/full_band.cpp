// The full-band filters against their definition.
#include "ec/full_band_definitions.h"
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"
#include "support/upper_halves.h"

namespace vsp::test {

namespace {

template <class T>
using Vector = std::vector<T>;

// All signals of a call. The history of the reference is before its first len values.
template <class T, class Step>
struct Call {
    Vsp32s len, numTaps;
    Vector<T> ref, near, taps;
    Vector<Step> steps;
    T scaledErr = 0;

    Call(Vsp32s length, Vsp32s number, unsigned seed)
        : len(length),
          numTaps(number),
          ref(samples<T>(std::size_t(length) + std::size_t(number), seed)),
          near(samples<T>(std::size_t(length), seed + 1)),
          taps(samples<T>(std::size_t(number), seed + 2)),
          steps(samples<Step>(std::size_t(length), seed + 3)) {}
};
using Call_16s = Call<Vsp16s, Vsp32s>;
using Call_32f = Call<Vsp32f, Vsp32f>;

// Floats of a size at which the adaptation neither stands still nor overflows.
Call_32f moderate(Call_32f call) {
    for (auto* signal : {&call.ref, &call.near, &call.taps})
        for (Vsp32f& x : *signal) x /= 32768;
    for (Vsp32f& x : call.steps) x /= 32768 * Vsp32f(call.numTaps);
    call.scaledErr = 0.25f;
    return call;
}

// Lengths that use every combination of vectors and rests.
Vector<Vsp32s> lengthsFor(Vsp32s numTaps) {
    if (numTaps > 70) return {1, 5, 81};
    Vector<Vsp32s> lengths = {31, 32, 33, 63, 79, 80, 81, 87, 88, 161};
    for (Vsp32s len = 1; len <= 20; len++) lengths.push_back(len);
    return lengths;
}

Vector<Vsp32s> numbersOfTaps() {
    Vector<Vsp32s> numbers = {511, 512, 513, 1023, 1024, 1025, 1600};
    for (Vsp32s n = 1; n <= 70; n++) numbers.push_back(n);
    return numbers;
}

template <class T, class Step, class Function>
void expectFir(const Call<T, Step>& c, Function fir) {
    SCOPED_TRACE(std::to_string(c.len) + " samples, " + std::to_string(c.numTaps) + " taps");
    const std::size_t gap = std::size_t(c.len) % 4;
    const Vector<T> history(c.ref.begin() + 1, c.ref.end());  // one less than the adaptive filter needs
    Vector<T> expected(c.near.size());
    plain::fir(&c.ref[std::size_t(c.numTaps)], c.near.data(), expected.data(), c.len, c.taps.data(), c.numTaps);
    for (const Guard guard : {Guard::end, Guard::begin}) {
        const Guarded<T> ref(history, guard, gap), taps(c.taps, guard);
        Guarded<T> near(c.near, guard), dst(c.near.size(), guard);
        const T* const first = ref.data() + c.numTaps - 1;
        ASSERT_EQ(vspStsNoErr, fir(first, near.data(), dst.data(), c.len, taps.data(), c.numTaps));
        ASSERT_FALSE(upperHalvesInUse());
        ASSERT_EQ(expected, dst.values());
        ASSERT_EQ(vspStsNoErr, fir(first, near.data(), near.data(), c.len, taps.data(), c.numTaps));
        ASSERT_EQ(expected, near.values()) << "in place";
    }
}

template <class T, class Step, class Function>
void expectNlms(const Call<T, Step>& c, Function nlms) {
    SCOPED_TRACE(std::to_string(c.len) + " samples, " + std::to_string(c.numTaps) + " taps");
    Vector<T> expected(c.near.size()), expectedTaps = c.taps;
    T expectedErr = c.scaledErr;
    plain::nlms(&c.ref[std::size_t(c.numTaps)], c.near.data(), c.steps.data(), expected.data(), c.len, expectedTaps.data(),
                c.numTaps, &expectedErr);
    bool inPlace = false;
    for (const Guard guard : {Guard::end, Guard::begin}) {
        const Guarded<T> ref(c.ref, guard, std::size_t(c.len) % 4);
        const Guarded<Step> steps(c.steps, guard);
        Guarded<T> near(c.near, guard), other(c.near.size(), guard), taps(c.taps, guard);
        Guarded<T> scaledErr(Vector<T>(1, c.scaledErr), guard);
        Guarded<T>& dst = inPlace ? near : other;
        ASSERT_EQ(vspStsNoErr, nlms(ref.data() + c.numTaps, near.data(), steps.data(), dst.data(), c.len, taps.data(),
                                    c.numTaps, scaledErr.data()));
        ASSERT_FALSE(upperHalvesInUse());
        ASSERT_EQ(expected, dst.values());
        ASSERT_EQ(expectedTaps, taps.values());
        ASSERT_EQ(expectedErr, scaledErr[0]);
        inPlace = true;
    }
}

}  // namespace

class FullBand : public LevelTest {};
VSPSC_EVERY_LEVEL(FullBand);

TEST_P(FullBand, FirMatchesTheDefinitionForEveryLengthAndNumberOfTaps) {
    for (const Vsp32s numTaps : numbersOfTaps())
        for (const Vsp32s len : lengthsFor(numTaps)) {
            const Call_16s c(len, numTaps, unsigned(numTaps));
            expectFir(c, api.vspsFIR_EC_16s);
            Call_16s small = c;  // the later taps are those of a decayed echo path
            for (std::size_t k = std::size_t(numTaps) / 3; k < small.taps.size(); k++) small.taps[k] >>= 2;
            expectFir(small, api.vspsFIR_EC_16s);
            expectFir(Call_32f(len, numTaps, unsigned(numTaps)), api.vspsFIR_EC_32f);
            if (HasFatalFailure()) return;
        }
}

TEST_P(FullBand, FirIsExactWhereProductsAreLargest) {
    for (const Vsp32s numTaps : {1, 8, 15, 16, 17, 64, 77, 65535})
        for (const Vsp16s ref : {Vsp16s(-32768), Vsp16s(32767)})
            for (const Vsp16s tap : {Vsp16s(-32768), Vsp16s(32767), Vsp16s(8191), Vsp16s(-8191), Vsp16s(-8192)})
                for (const Vsp16s near : {Vsp16s(-32768), Vsp16s(0), Vsp16s(32767)}) {
                    Call_16s c(numTaps > 100 ? 2 : 6, numTaps, 1);
                    std::fill(c.ref.begin(), c.ref.end(), ref);
                    std::fill(c.taps.begin(), c.taps.end(), tap);
                    std::fill(c.near.begin(), c.near.end(), near);
                    c.near.back() = Vsp16s(numTaps / 2);
                    expectFir(c, api.vspsFIR_EC_16s);
                }
}

// 65535 of the largest terms fit 32 bits, one more saturates.
TEST_P(FullBand, SumsOfTheLargestTermsSaturateFromTheFirstThatCan) {
    for (const Vsp32s numTaps : {65535, 65536}) {
        Call_16s c(2, numTaps, 1);
        for (auto* signal : {&c.ref, &c.taps}) std::fill(signal->begin(), signal->end(), Vsp16s(-32768));
        std::fill(c.steps.begin(), c.steps.end(), 0);
        c.near = {-2, 0};  // one beyond a difference of 32 bits
        expectFir(c, api.vspsFIR_EC_16s);
        expectNlms(c, api.vspsNLMS_EC_16s);
    }
}

// Sums beyond the limits of 32 bits that come back to zero, so that the order counts.
TEST_P(FullBand, LongFiltersSaturateInTheOrderOfTheTaps) {
    constexpr std::size_t kThere = 66000, kBack = 65540;
    for (const auto& [there, back] : {std::pair<Vsp16s, Vsp16s>(-32768, 32767), {32767, -32768}}) {
        Call_16s c(2, kThere + kBack, 1);
        std::fill(c.ref.begin(), c.ref.end(), Vsp16s(-32768));
        std::fill(c.taps.begin(), c.taps.begin() + kThere, there);
        std::fill(c.taps.begin() + kThere, c.taps.end(), back);
        c.taps[kThere + 1] = 12345;
        c.near = {0, 0};
        std::fill(c.steps.begin(), c.steps.end(), 1);
        expectFir(c, api.vspsFIR_EC_16s);
        expectNlms(c, api.vspsNLMS_EC_16s);
    }
}

TEST_P(FullBand, NlmsMatchesTheDefinitionForEveryLengthAndNumberOfTaps) {
    for (const Vsp32s numTaps : numbersOfTaps())
        for (const Vsp32s len : lengthsFor(numTaps)) {
            Call_16s c(len, numTaps, unsigned(numTaps));
            for (const Vsp16s scaledErr : {Vsp16s(-32768), Vsp16s(8191), Vsp16s(8192), Vsp16s(3)}) {
                c.scaledErr = scaledErr;
                expectNlms(c, api.vspsNLMS_EC_16s);  // any step size: scaled errors of up to 32 bits
            }
            for (Vsp32s& step : c.steps) step = 1 + step % 500;
            expectNlms(c, api.vspsNLMS_EC_16s);
            expectNlms(moderate(Call_32f(len, numTaps, unsigned(numTaps))), api.vspsNLMS_EC_32f);
            if (HasFatalFailure()) return;
        }
}

// Scaled errors at the border between small and large updates, and taps at both limits.
TEST_P(FullBand, NlmsUpdatesSaturateForEveryScaledError) {
    for (const Vsp32s error : {-32768, -20000, -8193, -8192, -8191, 8191, 8192, 8193, 20000, 32767})
        for (const Vsp16s tap : {Vsp16s(-32768), Vsp16s(-1), Vsp16s(32767)}) {
            Call_16s c(2, 83, 7);
            c.scaledErr = Vsp16s(error);
            std::fill(c.taps.begin(), c.taps.end(), tap);
            for (std::size_t i = 0; i < c.ref.size(); i += 3) c.ref[i] = Vsp16s(i % 2 == 0 ? -32768 : 32767);
            expectNlms(c, api.vspsNLMS_EC_16s);
        }
}

TEST_P(FullBand, ScaledErrorIsClampedOnlyWhenACallReturns) {
    Call_16s c(2, 40, 5);
    std::fill(c.ref.begin(), c.ref.end(), Vsp16s(3));
    std::fill(c.taps.begin(), c.taps.end(), Vsp16s(0));
    c.near = {20000, 20000};
    c.steps = {20480, 20480};  // w = 10 * error
    expectNlms(c, api.vspsNLMS_EC_16s);

    const auto run = [&](int calls) {
        Vector<Vsp16s> taps = c.taps, dst(2);
        Vsp16s scaledErr = 0;
        for (int i = 0; i < calls; i++)
            EXPECT_EQ(vspStsNoErr,
                      api.vspsNLMS_EC_16s(c.ref.data() + c.numTaps + i, &c.near[std::size_t(i)], &c.steps[0],
                                          &dst[std::size_t(i)], 2 / calls, taps.data(), c.numTaps, &scaledErr));
        EXPECT_EQ(32767, scaledErr);
        return taps[0];
    };
    EXPECT_EQ((3 * 200000 + 4096) >> 13, run(1));
    EXPECT_EQ((3 * 32767 + 4096) >> 13, run(2));
}

TEST_P(FullBand, FloatingPointNlmsDoesNotDependOnCalls) {
    const Call_32f c = moderate(Call_32f(100, 37, 3));
    const auto run = [&](Vsp32s part) {
        Vector<Vsp32f> taps = c.taps, dst(c.near.size());
        Vsp32f scaledErr = c.scaledErr;
        for (Vsp32s n = 0; n < c.len; n += part)
            EXPECT_EQ(vspStsNoErr,
                      api.vspsNLMS_EC_32f(c.ref.data() + c.numTaps + n, c.near.data() + n, c.steps.data() + n,
                                          dst.data() + n, std::min(part, c.len - n), taps.data(), c.numTaps, &scaledErr));
        dst.push_back(scaledErr);
        return dst;
    };
    const auto whole = run(c.len);
    for (const Vsp32s part : {1, 7, 50}) EXPECT_EQ(whole, run(part));
}

}  // namespace vsp::test
