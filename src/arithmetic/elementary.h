// Elementary functions of floats with the same bits everywhere: in double precision, operation by operation, so that
// neither the level nor the machine's mathematical library counts. Within one unit of the last place of a float.
#pragma once

#include "core/inline.h"
#include "vspsc/types.h"

namespace vsp {

constexpr double kPi = 3.14159265358979323846, kLn2 = 0.69314718055994530942, kLn10 = 2.30258509299404568402;

// Sum of coefficients[i] * z^i, from the last one on.
template <int kTerms>
VSP_INLINE double polynomial(const double (&coefficients)[kTerms], double z) {
    double sum = coefficients[kTerms - 1];
    for (int i = kTerms - 2; i >= 0; i--) sum = sum * z + coefficients[i];
    return sum;
}

// The nearest integer of what is not large.
VSP_INLINE Vsp64s nearest(double x) { return Vsp64s(x < 0 ? x - 0.5 : x + 0.5); }

VSP_INLINE double powerOfTwo(int n) { return __builtin_bit_cast(double, static_cast<unsigned long long>(n + 1023) << 52); }

// Zero gives minus infinity, less than zero no number.
VSP_INLINE Vsp32f log10_32f(Vsp32f x) {
    constexpr double kOdd[] = {1, 1.0 / 3, 1.0 / 5, 1.0 / 7, 1.0 / 9, 1.0 / 11, 1.0 / 13, 1.0 / 15};
    if (!(x > 0)) return x == 0 ? -__builtin_inff() : __builtin_nanf("");
    if (x > 3.4028235e38f) return x;
    const unsigned long long bits = __builtin_bit_cast(unsigned long long, double(x));
    int exponent = int(bits >> 52) - 1023;
    double m = __builtin_bit_cast(double, (bits & 0xFFFFFFFFFFFFF) | 0x3FF0000000000000);
    if (m > 1.4142135623730951) {
        m /= 2;
        exponent++;
    }
    const double t = (m - 1) / (m + 1);
    return Vsp32f((exponent * kLn2 + 2 * t * polynomial(kOdd, t * t)) / kLn10);
}

VSP_INLINE Vsp32f exp10_32f(Vsp32f x) {
    constexpr double kInverseFactorials[] = {
        1,         1,          1.0 / 2,     1.0 / 6,      1.0 / 24,      1.0 / 120,
        1.0 / 720, 1.0 / 5040, 1.0 / 40320, 1.0 / 362880, 1.0 / 3628800, 1.0 / 39916800};
    if (!(x > -60)) return x < 0 ? 0.0f : x;
    if (x > 40) return __builtin_inff();
    const double y = x * kLn10;
    const Vsp64s n = nearest(y / kLn2);
    return Vsp32f(polynomial(kInverseFactorials, y - double(n) * kLn2) * powerOfTwo(int(n)));
}

// Angles above a million are too coarse to have a cosine, which is then taken to be 1.
VSP_INLINE Vsp32f cos_32f(Vsp32f x) {
    constexpr double kEven[] = {1, -1.0 / 2, 1.0 / 24, -1.0 / 720, 1.0 / 40320, -1.0 / 3628800, 1.0 / 479001600};
    constexpr double kOdd[] = {1, -1.0 / 6, 1.0 / 120, -1.0 / 5040, 1.0 / 362880, -1.0 / 39916800, 1.0 / 6227020800};
    if (!(x > -1e6f && x < 1e6f)) return x < 0 || x > 0 ? 1.0f : x;
    const Vsp64s quarter = nearest(x / (kPi / 2));
    const double r = x - double(quarter) * (kPi / 2), z = r * r;
    const double value = quarter % 2 == 0 ? polynomial(kEven, z) : r * polynomial(kOdd, z);
    const bool negative = quarter % 2 == 0 ? (quarter & 2) != 0 : (quarter & 2) == 0;
    return Vsp32f(negative ? -value : value);
}

// No number outside -1 .. 1.
VSP_INLINE Vsp32f acos_32f(Vsp32f x) {
    // Of the arc sine of up to one half.
    constexpr double kArcSine[] = {1,
                                   1.0 / 6,
                                   3.0 / 40,
                                   5.0 / 112,
                                   35.0 / 1152,
                                   63.0 / 2816,
                                   231.0 / 13312,
                                   143.0 / 10240,
                                   6435.0 / 557056,
                                   12155.0 / 1245184,
                                   46189.0 / 5505024,
                                   88179.0 / 12058624,
                                   676039.0 / 104857600};
    const double a = x < 0 ? -x : x;
    if (!(a <= 1)) return __builtin_nanf("");
    if (a <= 0.5) return Vsp32f(kPi / 2 - x * polynomial(kArcSine, a * a));
    const double z = (1 - a) / 2, angle = 2 * __builtin_sqrt(z) * polynomial(kArcSine, z);
    return Vsp32f(x < 0 ? kPi - angle : angle);
}

}  // namespace vsp
