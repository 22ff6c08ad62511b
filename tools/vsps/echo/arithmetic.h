// The library's sub-band functions in floating and in fixed point under the same names, so that the canceller is written
// once.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "echo/prototype_window.h"
#include "echo/status.h"
#include "vspsc/ec.h"

struct FloatArithmetic {
    using Sample = Vsp32f;
    using Complex = Vsp32fc;
    using Step = Vsp64f;
    using Window = Vsp32f;
    using State = VspSubbandProcessState_32f;

    static constexpr double kBandScale = 1, kCoefficientScale = 1;  // integers per unit

    static Window window(double w) { return static_cast<Window>(w); }
    static Sample sample(float x) { return x; }
    static Step step(double s) { return s; }

    static void getSize(const BankShape& s, Vsp32s* state, Vsp32s* init, Vsp32s* work) {
        check(vspsSubbandProcessGetSize_32f(s.order, s.window, state, init, work));
    }
    static void init(State* state, const BankShape& s, const Window* window, Vsp8u* buffer) {
        check(vspsSubbandProcessInit_32f(state, s.order, s.frame, s.window, window, buffer));
    }
    static void analyse(const Sample* in, Complex* out, State* state, Vsp8u* work) {
        check(vspsSubbandAnalysis_32f32fc(in, out, state, work));
    }
    static void synthesise(const Complex* in, Sample* out, State* state, Vsp8u* work) {
        check(vspsSubbandSynthesis_32fc32f(in, out, state, work));
    }
    static void filter(const Complex* const* x, const Complex* const* c, Complex* y, int taps, int bands) {
        check(vspsFIRSubband_EC_32fc(x, c, y, taps, bands));
    }
    static void update(const Step* steps, const Complex* const* x, const Complex* e, Complex* const* c, int taps, int bands) {
        check(vspsFIRSubbandCoeffUpdate_EC_32fc_I(steps, x, e, c, taps, bands));
    }
    static Complex subtract(Complex a, Complex b) { return {a.re - b.re, a.im - b.im}; }
};

struct FixedArithmetic {
    using Sample = Vsp16s;
    using Complex = Vsp32sc;
    using Step = Vsp32sc;  // mantissa and exponent
    using Window = Vsp16s;
    using State = VspSubbandProcessState_16s;

    // A band is at most transform * 2^15, which leaves 6 more bits for transforms of up to 2^9. Coefficients reach 16.
    static constexpr int kBandBits = 6, kCoefficientBits = 27, kUpdateScale = 0;
    static constexpr double kBandScale = 1 << kBandBits, kCoefficientScale = 1 << kCoefficientBits;

    static Window window(double w) { return static_cast<Window>(std::lrint(w * 8192)); }  // Q13
    static Sample sample(float x) { return static_cast<Sample>(std::lrint(std::clamp(x, -32768.0f, 32767.0f))); }

    // The update is x * e * mantissa * 2^-exponent for the integers x and e of the bands.
    static Step step(double s) {
        int exponent = 0;
        const double mantissa = std::frexp(s * (kCoefficientScale / (kBandScale * kBandScale)), &exponent);
        return {static_cast<Vsp32s>(std::min(mantissa * 0x1p31, 0x7fffffffp0)), 31 - exponent + kUpdateScale};
    }

    static void getSize(const BankShape& s, Vsp32s* state, Vsp32s* init, Vsp32s* work) {
        check(vspsSubbandProcessGetSize_16s(s.order, s.window, state, init, work));
    }
    static void init(State* state, const BankShape& s, const Window* window, Vsp8u* buffer) {
        check(vspsSubbandProcessInit_16s(state, s.order, s.frame, s.window, window, buffer));
    }
    static void analyse(const Sample* in, Complex* out, State* state, Vsp8u* work) {
        check(vspsSubbandAnalysis_16s32sc_Sfs(in, out, state, -kBandBits, work));
    }
    static void synthesise(const Complex* in, Sample* out, State* state, Vsp8u* work) {
        check(vspsSubbandSynthesis_32sc16s_Sfs(in, out, state, kBandBits, work));
    }
    static void filter(const Complex* const* x, const Complex* const* c, Complex* y, int taps, int bands) {
        check(vspsFIRSubband_EC_32sc_Sfs(x, c, y, taps, bands, kCoefficientBits));
    }
    static void update(const Step* steps, const Complex* const* x, const Complex* e, Complex* const* c, int taps, int bands) {
        check(vspsFIRSubbandCoeffUpdate_EC_32sc_I(steps, x, e, c, taps, bands, kUpdateScale));
    }
    static Complex subtract(Complex a, Complex b) { return {difference(a.re, b.re), difference(a.im, b.im)}; }

  private:
    static Vsp32s difference(Vsp32s a, Vsp32s b) {
        return static_cast<Vsp32s>(std::clamp(Vsp64s(a) - b, Vsp64s(-0x7fffffff) - 1, Vsp64s(0x7fffffff)));
    }
};

