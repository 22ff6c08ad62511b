#include "vector/scalar_real_fft.h"

namespace bench {

void scalarRealFft(const float* src, float* dst, int order, const float* factors, float* work) {
    const int points = 1 << (order - 1);
    for (int i = 0; i < points; i++) {
        int reversed = 0;
        for (int bit = 0; bit < order - 1; bit++) reversed |= (i >> bit & 1) << (order - 2 - bit);
        work[2 * reversed] = src[2 * i];
        work[2 * reversed + 1] = src[2 * i + 1];
    }
    for (int half = 1; half < points; half *= 2)
        for (int k = 0; k < half; k++) {
            const float* w = factors + 2 * (k * points / half);
            for (int i = k; i < points; i += 2 * half) {
                float *a = work + 2 * i, *b = a + 2 * half;
                const float re = b[0] * w[0] - b[1] * w[1], im = b[0] * w[1] + b[1] * w[0];
                b[0] = a[0] - re;
                b[1] = a[1] - im;
                a[0] += re;
                a[1] += im;
            }
        }
    for (int k = 0; k <= points; k++) {
        // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): points is a power of two
        const float *a = work + 2 * (k % points), *b = work + 2 * ((points - k) % points);
        const float sign = k == points ? -1.0f : 1.0f, *w = factors + 2 * (k % points);
        const float re = (a[0] - b[0]) / 2, im = (a[1] + b[1]) / 2;
        dst[2 * k] = (a[0] + b[0]) / 2 + sign * (im * w[0] + re * w[1]);
        dst[2 * k + 1] = (a[1] - b[1]) / 2 + sign * (im * w[1] - re * w[0]);
    }
}

}  // namespace bench
