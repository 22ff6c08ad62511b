// Fourier transforms of 2, 4, 8 and 16 complex vectors, with exp(-j ...), in place and in natural order.
#pragma once

#include "vector/complex_vector.h"

namespace vsp::VSP_LEVEL {

// The four in natural order, given the sums and differences of x0 and x2.
template <class V>
VSP_INLINE void secondHalf(Complex<V> sumEven, Complex<V> difEven, Complex<V>& x0, Complex<V>& x1, Complex<V>& x2,
                           Complex<V>& x3) {
    const Complex<V> sumOdd = add(x1, x3), difOdd = sub(x1, x3);
    x0 = add(sumEven, sumOdd);
    x1 = subJ(difEven, difOdd);
    x2 = sub(sumEven, sumOdd);
    x3 = addJ(difEven, difOdd);
}

template <class V>
VSP_INLINE void butterfly4(Complex<V>& x0, Complex<V>& x1, Complex<V>& x2, Complex<V>& x3) {
    secondHalf(add(x0, x2), sub(x0, x2), x0, x1, x2, x3);
}

// The same of x0, x1, -j x2, x3.
template <class V>
VSP_INLINE void butterfly4Rotated(Complex<V>& x0, Complex<V>& x1, Complex<V>& x2, Complex<V>& x3) {
    secondHalf(subJ(x0, x2), addJ(x0, x2), x0, x1, x2, x3);
}

// a exp(-j pi / 4) and a exp(-j 3 pi / 4)
template <class V>
VSP_INLINE Complex<V> rotate1(Complex<V> a) {
    return scale(subJ(a, a), V::splat(typename V::Elem(0.70710678118654752440)));
}
template <class V>
VSP_INLINE Complex<V> rotate3(Complex<V> a) {
    return scale(addJ(a, a), V::splat(typename V::Elem(-0.70710678118654752440)));
}

template <class V>
VSP_INLINE void butterfly(Complex<V> (&)[1]) {}

template <class V>
VSP_INLINE void butterfly(Complex<V> (&x)[2]) {
    const Complex<V> a = x[0], b = x[1];
    x[0] = add(a, b);
    x[1] = sub(a, b);
}

template <class V>
VSP_INLINE void butterfly(Complex<V> (&x)[4]) {
    butterfly4(x[0], x[1], x[2], x[3]);
}

template <class V>
VSP_INLINE void butterfly(Complex<V> (&x)[8]) {
    butterfly4(x[0], x[2], x[4], x[6]);
    butterfly4(x[1], x[3], x[5], x[7]);
    const Complex<V> a0 = x[0], a1 = x[2], a2 = x[4], a3 = x[6], b0 = x[1], b1 = rotate1(x[3]), b2 = x[5],
                     b3 = rotate3(x[7]);
    x[0] = add(a0, b0);
    x[1] = add(a1, b1);
    x[2] = subJ(a2, b2);
    x[3] = add(a3, b3);
    x[4] = sub(a0, b0);
    x[5] = sub(a1, b1);
    x[6] = addJ(a2, b2);
    x[7] = sub(a3, b3);
}

template <class V>
VSP_INLINE void butterfly(Complex<V> (&x)[16]) {
    using T = typename V::Elem;
    const V cosine = V::splat(T(0.92387953251128675613)), sine = V::splat(T(0.38268343236508977173));  // of pi / 8
    const Complex<V> w1 = {cosine, sine}, w3 = {sine, cosine};  // conjugates of the factors
    for (int i = 0; i < 4; i++) butterfly4(x[i], x[4 + i], x[8 + i], x[12 + i]);
    x[5] = mulConj(x[5], w1);
    x[6] = rotate1(x[6]);
    x[7] = mulConj(x[7], w3);
    x[9] = rotate1(x[9]);
    x[11] = rotate3(x[11]);
    x[13] = mulConj(x[13], w3);
    x[14] = rotate3(x[14]);
    x[15] = mulConj(x[15], {V::splat(T(-0.92387953251128675613)), V::splat(T(-0.38268343236508977173))});
    butterfly4(x[0], x[1], x[2], x[3]);
    butterfly4(x[4], x[5], x[6], x[7]);
    butterfly4Rotated(x[8], x[9], x[10], x[11]);
    butterfly4(x[12], x[13], x[14], x[15]);
    for (int i = 0; i < 4; i++)
        for (int k = i + 1; k < 4; k++) {
            const Complex<V> a = x[4 * i + k];
            x[4 * i + k] = x[4 * k + i];
            x[4 * k + i] = a;
        }
}

}  // namespace vsp::VSP_LEVEL
