// The library's functions in floating and in fixed point under the same names, so that the canceller is written once.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "echo/prototype_window.h"
#include "echo/samples.h"
#include "vspsc/ec.h"

namespace vspv {

// None of the calls can fail.
struct FloatArithmetic {
    using Sample = Vsp32f;
    using Complex = Vsp32fc;
    using Step = Vsp64f;
    using WindowValue = Vsp32f;
    using BankState = VspSubbandProcessState_32f;
    using SubbandControllerState = VspSubbandControllerState_EC_32f;
    using FullbandControllerState = VspFullbandControllerState_EC_32f;
    using SuppressorState = VspSubbandSuppressorState_EC_32f;

    static constexpr float kBand = 1, kCoefficient = 1;  // what 1 is stored as

    static WindowValue windowValue(float w) { return w; }
    static Sample sample(float x) { return x; }
    static void store(Four x, Sample* to) { vspv::store(x, to); }
    static Complex subtract(Complex a, Complex b) { return {a.re - b.re, a.im - b.im}; }
    static void subtract(const Complex* a, const Complex* b, Complex* y, int bands) {
        int k = 0;
        for (; k + 2 <= bands; k += 2) vspv::store(fourOf(a + k) - fourOf(b + k), &y[k].re);
        if (k < bands) y[k] = subtract(a[k], b[k]);
    }
    static Complex scaled(Complex a, float gain) { return {gain * a.re, gain * a.im}; }

    static void bankSize(const BankShape& s, Vsp32s* state, Vsp32s* init, Vsp32s* work) {
        vspsSubbandProcessGetSize_32f(s.order, s.window, state, init, work);
    }
    static void initBank(BankState* state, const BankShape& s, const WindowValue* window, Vsp8u* buffer) {
        vspsSubbandProcessInit_32f(state, s.order, s.frame, s.window, window, buffer);
    }
    static void analyse(const Sample* in, Complex* out, BankState* state, Vsp8u* work) {
        vspsSubbandAnalysis_32f32fc(in, out, state, work);
    }
    static void synthesise(const Complex* in, Sample* out, BankState* state, Vsp8u* work) {
        vspsSubbandSynthesis_32fc32f(in, out, state, work);
    }
    static void filter(const Complex* const* x, const Complex* const* c, Complex* y, int taps, int bands) {
        vspsFIRSubbandFast_EC_32fc(x, c, y, taps, bands);
    }
    static void adapt(const Step* steps, const Complex* const* x, const Complex* e, Complex* const* c, int taps,
                      int bands) {
        vspsFIRSubbandFastCoeffUpdate_EC_32fc_I(steps, x, e, c, taps, bands);
    }

    static void controllerSize(const BankShape& s, int taps, int rate, Vsp32s* size) {
        vspsSubbandControllerGetSize_EC_32f(taps, s.bands(), s.frame, rate, size);
    }
    static void initController(SubbandControllerState* state, const BankShape& s, int taps, int rate) {
        vspsSubbandControllerInit_EC_32f(state, taps, s.bands(), s.frame, rate);
    }
    static void resetController(SubbandControllerState* state, int shift) {
        vspsSubbandControllerReset_EC_32f(state, shift);
    }
    static void control(const Complex* const* x, const Complex* e, const Complex* y, const Complex* const* c,
                        bool cancelling, Step* const* steps, Vsp32s* adapt, float* residual, float* learning,
                        Vsp32s* doubleTalk, SubbandControllerState* state) {
        vspsSubbandControllerUpdate_EC_32f(x, e, y, c, cancelling, steps, adapt, residual, learning, doubleTalk, state);
    }

    static void suppressorSize(const BankShape& s, int rate, Vsp32s* size) {
        vspsSubbandSuppressorGetSize_EC_32f(s.bands(), s.frame, rate, size);
    }
    static void initSuppressor(SuppressorState* state, const BankShape& s, int rate) {
        vspsSubbandSuppressorInit_EC_32f(state, s.bands(), s.frame, rate);
    }
    static void suppress(const Complex* y, const float* residual, bool doubleTalk, Complex* e, SuppressorState* state) {
        vspsSubbandSuppressor_EC_32fc_I(y, residual, doubleTalk, e, state);
    }

    using FullbandStep = Vsp32f;
    static constexpr float kTap = 1;
    static void initFullbandController(FullbandControllerState* state, int taps, int block, int rate) {
        vspsFullbandControllerInit_EC_32f(state, taps, block, rate);
    }
    static void fullbandControllerSize(Vsp32s* size) { vspsFullbandControllerGetSize_EC_32f(size); }
    static void resetFullbandController(FullbandControllerState* state, int shift) {
        vspsFullbandControllerReset_EC_32f(state, shift);
    }
    static void controlFullband(const Sample* ref, const Sample* near, const Sample* err, int count, const Sample* taps,
                                bool cancelling, FullbandStep* steps, float* learning, Vsp32s* doubleTalk,
                                FullbandControllerState* state) {
        vspsFullbandControllerUpdate_EC_32f(ref, near, err, count, taps, cancelling, steps, learning, doubleTalk, state);
    }
    static void filterFullband(const Sample* ref, const Sample* near, Sample* out, int count, const Sample* taps,
                               int numTaps) {
        vspsFIR_EC_32f(ref, near, out, count, taps, numTaps);
    }
    static void adaptFullband(const Sample* ref, const Sample* near, const FullbandStep* steps, Sample* out, int count,
                              Sample* taps, int numTaps, Sample* scaledError) {
        vspsNLMS_EC_32f(ref, near, steps, out, count, taps, numTaps, scaledError);
    }
};

struct FixedArithmetic {
    using Sample = Vsp16s;
    using Complex = Vsp32sc;
    using Step = Vsp32sc;  // mantissa, exponent
    using WindowValue = Vsp16s;
    using BankState = VspSubbandProcessState_16s;
    using SubbandControllerState = VspSubbandControllerDTState_EC_16s;
    using FullbandControllerState = VspFullbandControllerState_EC_16s;
    using SuppressorState = VspSubbandSuppressorState_EC_16s;

    // A band reaches 2^15 times the transform's length of 2^8 or 2^9, so that 6 more bits fit. Coefficients reach 16.
    static constexpr int kBandBits = 6, kCoefficientBits = 27;
    static constexpr float kBand = 1 << kBandBits, kCoefficient = static_cast<float>(1 << kCoefficientBits);

    static WindowValue windowValue(float w) { return static_cast<WindowValue>(std::lrint(w * 8192)); }  // Q13
    static Sample sample(float x) { return static_cast<Sample>(std::lrint(std::clamp(x, -kFullScale, kHighest))); }
    static void store(Four x, Sample* to) {
        const Four clipped = _mm_max_ps(_mm_min_ps(x, Four{} + kHighest), Four{} - kFullScale);
        const __m128i words = _mm_cvtps_epi32(clipped);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packs_epi32(words, words));
    }

    static Complex subtract(Complex a, Complex b) { return {difference(a.re, b.re), difference(a.im, b.im)}; }
    static void subtract(const Complex* a, const Complex* b, Complex* y, int bands) {
        int k = 0;
        for (; k + 2 <= bands; k += 2) {
            const auto two = [k](const Complex* z) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(z + k)); };
            _mm_storeu_si128(reinterpret_cast<__m128i*>(y + k), differences(two(a), two(b)));
        }
        if (k < bands) y[k] = subtract(a[k], b[k]);
    }
    static Complex scaled(Complex a, float gain) { return {product(a.re, gain), product(a.im, gain)}; }

    static void bankSize(const BankShape& s, Vsp32s* state, Vsp32s* init, Vsp32s* work) {
        vspsSubbandProcessGetSize_16s(s.order, s.window, state, init, work);
    }
    static void initBank(BankState* state, const BankShape& s, const WindowValue* window, Vsp8u* buffer) {
        vspsSubbandProcessInit_16s(state, s.order, s.frame, s.window, window, buffer);
    }
    static void analyse(const Sample* in, Complex* out, BankState* state, Vsp8u* work) {
        vspsSubbandAnalysis_16s32sc_Sfs(in, out, state, -kBandBits, work);
    }
    static void synthesise(const Complex* in, Sample* out, BankState* state, Vsp8u* work) {
        vspsSubbandSynthesis_32sc16s_Sfs(in, out, state, kBandBits, work);
    }
    static void filter(const Complex* const* x, const Complex* const* c, Complex* y, int taps, int bands) {
        vspsFIRSubbandFast_EC_32sc_Sfs(x, c, y, taps, bands, kCoefficientBits);
    }
    static void adapt(const Step* steps, const Complex* const* x, const Complex* e, Complex* const* c, int taps,
                      int bands) {
        vspsFIRSubbandFastCoeffUpdate_EC_32sc_I(steps, x, e, c, taps, bands, 0);
    }

    static void controllerSize(const BankShape& s, int taps, int rate, Vsp32s* size) {
        vspsSubbandControllerDTGetSize_EC_16s(taps, s.bands(), s.frame, rate, size);
    }
    static void initController(SubbandControllerState* state, const BankShape& s, int taps, int rate) {
        vspsSubbandControllerDTInit_EC_16s(state, taps, s.bands(), s.frame, rate, -kBandBits, kCoefficientBits);
    }
    static void resetController(SubbandControllerState* state, int shift) {
        vspsSubbandControllerDTReset_EC_16s(state, shift);
    }
    static void control(const Complex* const* x, const Complex* e, const Complex* y, const Complex* const* c,
                        bool cancelling, Step* const* steps, Vsp32s* adapt, float* residual, float* learning,
                        Vsp32s* doubleTalk, SubbandControllerState* state) {
        vspsSubbandControllerDTUpdate_EC_16s(x, e, y, c, cancelling, steps, adapt, residual, learning, doubleTalk, state);
    }

    static void suppressorSize(const BankShape& s, int rate, Vsp32s* size) {
        vspsSubbandSuppressorGetSize_EC_16s(s.bands(), s.frame, rate, size);
    }
    static void initSuppressor(SuppressorState* state, const BankShape& s, int rate) {
        vspsSubbandSuppressorInit_EC_16s(state, s.bands(), s.frame, rate, -kBandBits);
    }
    static void suppress(const Complex* y, const float* residual, bool doubleTalk, Complex* e, SuppressorState* state) {
        vspsSubbandSuppressor_EC_32sc_I(y, residual, doubleTalk, e, state);
    }

    using FullbandStep = Vsp32s;
    static constexpr float kTap = 32768;  // Q15
    static void initFullbandController(FullbandControllerState* state, int taps, int block, int rate) {
        vspsFullbandControllerInit_EC_16s(state, taps, block, rate);
    }
    static void fullbandControllerSize(Vsp32s* size) { vspsFullbandControllerGetSize_EC_16s(size); }
    static void resetFullbandController(FullbandControllerState* state, int shift) {
        vspsFullbandControllerReset_EC_16s(state, shift);
    }
    static void controlFullband(const Sample* ref, const Sample* near, const Sample* err, int count, const Sample* taps,
                                bool cancelling, FullbandStep* steps, float* learning, Vsp32s* doubleTalk,
                                FullbandControllerState* state) {
        vspsFullbandControllerUpdate_EC_16s(ref, near, err, count, taps, cancelling, steps, learning, doubleTalk, state);
    }
    static void filterFullband(const Sample* ref, const Sample* near, Sample* out, int count, const Sample* taps,
                               int numTaps) {
        vspsFIR_EC_16s(ref, near, out, count, taps, numTaps);
    }
    static void adaptFullband(const Sample* ref, const Sample* near, const FullbandStep* steps, Sample* out, int count,
                              Sample* taps, int numTaps, Sample* scaledError) {
        vspsNLMS_EC_16s(ref, near, steps, out, count, taps, numTaps, scaledError);
    }

  private:
    static Vsp32s product(Vsp32s a, float gain) {
        return static_cast<Vsp32s>(std::clamp(double(gain) * a, -0x1p31, 0x1p31 - 1));
    }
    static Vsp32s difference(Vsp32s a, Vsp32s b) {
        return static_cast<Vsp32s>(std::clamp(Vsp64s(a) - b, -0x80000000LL, 0x7fffffffLL));
    }
    // The same of four: where signs differ and the difference, which wraps, has not that of a, the limit on a's side.
    static __m128i differences(__m128i a, __m128i b) {
        const __m128i wrapped = _mm_sub_epi32(a, b);
        const __m128i wrong = _mm_srai_epi32(_mm_and_si128(_mm_xor_si128(a, b), _mm_xor_si128(a, wrapped)), 31);
        const __m128i limit = _mm_xor_si128(_mm_srai_epi32(a, 31), _mm_set1_epi32(0x7fffffff));
        return _mm_or_si128(_mm_and_si128(wrong, limit), _mm_andnot_si128(wrong, wrapped));
    }
};

}  // namespace vspv
