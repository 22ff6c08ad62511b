// The sub-band filters and updates for AVX-512, eight bands at a time and masks for the rest.
#include "ec/hand_tuned_subband.h"

#include <immintrin.h>

#include "ec/scalar_subband.h"

namespace {

// --- Floating point ----------------------------------------------------------------------------------------------------

// Real and imaginary parts of eight bands in double precision, in the order 0, 1, 4, 5, 2, 3, 6, 7.
struct Complex {
    __m512d re, im;
};

// The first n of eight bands, n > 0.
struct First {
    __mmask8 lower, upper, all;
    explicit First(int n)
        : lower(__mmask8(n < 4 ? (1 << 2 * n) - 1 : 0xFF)),
          upper(__mmask8(n < 4   ? 0
                         : n < 8 ? (1 << 2 * (n - 4)) - 1
                                 : 0xFF)),
          all(__mmask8(n < 8 ? (1 << n) - 1 : 0xFF)) {}

    Complex load(const Vsp32fc* p) const {
        const __m256 a = _mm256_maskz_loadu_ps(lower, p), b = _mm256_maskz_loadu_ps(upper, p + 4);
        return {_mm512_cvtps_pd(_mm256_shuffle_ps(a, b, 0x88)), _mm512_cvtps_pd(_mm256_shuffle_ps(a, b, 0xDD))};
    }
    __m512d load(const Vsp64f* p) const {
        return _mm512_permutexvar_pd(_mm512_setr_epi64(0, 1, 4, 5, 2, 3, 6, 7), _mm512_maskz_loadu_pd(all, p));
    }
    void store(__m256 re, __m256 im, Vsp32fc* p) const {
        _mm256_mask_storeu_ps(p, lower, _mm256_unpacklo_ps(re, im));
        _mm256_mask_storeu_ps(p + 4, upper, _mm256_unpackhi_ps(re, im));
    }
    void addTo(Vsp32fc* p, Complex a) const {
        const __m256 re = _mm512_cvtpd_ps(a.re), im = _mm512_cvtpd_ps(a.im);
        const __m256 lo = _mm256_add_ps(_mm256_maskz_loadu_ps(lower, p), _mm256_unpacklo_ps(re, im));
        const __m256 hi = _mm256_add_ps(_mm256_maskz_loadu_ps(upper, p + 4), _mm256_unpackhi_ps(re, im));
        _mm256_mask_storeu_ps(p, lower, lo);
        _mm256_mask_storeu_ps(p + 4, upper, hi);
    }
};

struct Eight {
    Complex load(const Vsp32fc* p) const {
        const __m256 a = _mm256_loadu_ps(&p->re), b = _mm256_loadu_ps(&p[4].re);
        return {_mm512_cvtps_pd(_mm256_shuffle_ps(a, b, 0x88)), _mm512_cvtps_pd(_mm256_shuffle_ps(a, b, 0xDD))};
    }
    __m512d load(const Vsp64f* p) const {
        return _mm512_permutexvar_pd(_mm512_setr_epi64(0, 1, 4, 5, 2, 3, 6, 7), _mm512_loadu_pd(p));
    }
    void store(__m256 re, __m256 im, Vsp32fc* p) const {
        _mm256_storeu_ps(&p->re, _mm256_unpacklo_ps(re, im));
        _mm256_storeu_ps(&p[4].re, _mm256_unpackhi_ps(re, im));
    }
    void addTo(Vsp32fc* p, Complex a) const {
        const __m256 re = _mm512_cvtpd_ps(a.re), im = _mm512_cvtpd_ps(a.im);
        _mm256_storeu_ps(&p->re, _mm256_add_ps(_mm256_loadu_ps(&p->re), _mm256_unpacklo_ps(re, im)));
        _mm256_storeu_ps(&p[4].re, _mm256_add_ps(_mm256_loadu_ps(&p[4].re), _mm256_unpackhi_ps(re, im)));
    }
};

template <class Op>
[[gnu::always_inline]] inline void forBands(int numSubbands, Op op) {
    int k = 0;
    for (; k <= numSubbands - 8; k += 8) op(Eight(), k);
    if (k < numSubbands) op(First(numSubbands - k), k);
}

// A product of two floats is exact in double precision, so that contracted sums of them round as the definition does.
VspStatus fir32fc(const Vsp32fc* const* src, const Vsp32fc* const* coef, Vsp32fc* dst, Vsp32s len, Vsp32s numSubbands) {
    forBands(numSubbands, [=](auto bands, int k) {
        __m256 re = _mm256_setzero_ps(), im = re;
        for (int t = 0; t < len; t++) {
            const Complex x = bands.load(src[t] + k), c = bands.load(coef[t] + k);
            re = _mm256_add_ps(re, _mm512_cvtpd_ps(_mm512_fmsub_pd(x.re, c.re, _mm512_mul_pd(x.im, c.im))));
            im = _mm256_add_ps(im, _mm512_cvtpd_ps(_mm512_fmadd_pd(x.re, c.im, _mm512_mul_pd(x.im, c.re))));
        }
        bands.store(re, im, dst + k);
    });
    return vspStsNoErr;
}

VspStatus update32fc(const Vsp64f* stepSize, const Vsp32fc* const* src, const Vsp32fc* err, Vsp32fc* const* coef,
                     Vsp32s len, Vsp32s numSubbands) {
    forBands(numSubbands, [=](auto bands, int k) {
        const Complex e = bands.load(err + k);
        const __m512d step = bands.load(stepSize + k), a = _mm512_mul_pd(e.re, step), b = _mm512_mul_pd(e.im, step);
        for (int t = 0; t < len; t++) {
            const Complex x = bands.load(src[t] + k);
            bands.addTo(coef[t] + k, {_mm512_add_pd(_mm512_mul_pd(x.re, a), _mm512_mul_pd(x.im, b)),
                                      _mm512_sub_pd(_mm512_mul_pd(x.re, b), _mm512_mul_pd(x.im, a))});
        }
    });
    return vspStsNoErr;
}

template <int count, class Bands>
void projectTaps(Bands bands, const Vsp64f* const* stepSize, const Vsp32fc* const* src, const Vsp32fc* const* err,
                 Vsp32fc* const* coef, Vsp32u order, int k) {
    const __m512d g = _mm512_set1_pd(1.0f / Vsp32f(order));
    Complex sum[count] = {};
    for (Vsp32u j = 0; j < order; j++) {
        const Complex e = bands.load(err[j] + k);
        const __m512d step = bands.load(stepSize[j] + k);
        for (int t = 0; t < count; t++) {
            const Complex x = bands.load(src[j + Vsp32u(t)] + k);
            const __m512d re = _mm512_fmadd_pd(e.re, x.re, _mm512_mul_pd(e.im, x.im));
            const __m512d im = _mm512_fmsub_pd(e.im, x.re, _mm512_mul_pd(e.re, x.im));
            sum[t].re = _mm512_add_pd(sum[t].re, _mm512_mul_pd(re, step));
            sum[t].im = _mm512_add_pd(sum[t].im, _mm512_mul_pd(im, step));
        }
    }
    for (int t = 0; t < count; t++) {
        bands.addTo(coef[t] + k, {_mm512_mul_pd(sum[t].re, g), _mm512_mul_pd(sum[t].im, g)});
    }
}

VspStatus updateProjection(const Vsp64f* const* stepSize, const Vsp32fc* const* src, const Vsp32fc* const* err,
                           Vsp32fc* const* coef, Vsp32u len, Vsp32u numSubbands, Vsp32u order) {
    forBands(int(numSubbands), [=](auto bands, int k) {
        Vsp32u t = 0;
        for (; t + 4 <= len; t += 4) projectTaps<4>(bands, stepSize, src + t, err, coef + t, order, k);
        for (; t < len; t++) projectTaps<1>(bands, stepSize, src + t, err, coef + t, order, k);
    });
    return vspStsNoErr;
}

// --- Fixed point: a band is a 64-bit element ----------------------------------------------------------------------------

__mmask8 firstBands(int n) { return __mmask8(n < 8 ? (1 << n) - 1 : 0xFF); }

__m512i packSat(__m512i re, __m512i im) {
    const __m512i alternating = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    return _mm512_permutex2var_epi32(_mm512_castsi256_si512(_mm512_cvtsepi64_epi32(re)), alternating,
                                     _mm512_castsi256_si512(_mm512_cvtsepi64_epi32(im)));
}

struct Sums {
    __m512i re, im, beyond;  // beyond is negative where a sum has left -2^62 .. 2^62-1, so that none has wrapped unseen
};

template <bool check>
[[gnu::always_inline]] inline Sums sums(const Vsp32sc* const* src, const Vsp32sc* const* coef, int len, int k,
                                        __mmask8 bands) {
    Sums s = {};
    for (int t = 0; t < len; t++) {
        const __m512i x = _mm512_maskz_loadu_epi64(bands, src[t] + k), c = _mm512_maskz_loadu_epi64(bands, coef[t] + k);
        const __m512i xi = _mm512_srli_epi64(x, 32), ci = _mm512_srli_epi64(c, 32);
        s.re = _mm512_add_epi64(s.re, _mm512_sub_epi64(_mm512_mul_epi32(x, c), _mm512_mul_epi32(xi, ci)));
        s.im = _mm512_add_epi64(s.im, _mm512_add_epi64(_mm512_mul_epi32(x, ci), _mm512_mul_epi32(xi, c)));
        if (check) {
            constexpr int kOrDiffering = 0xF6;  // a | (b ^ c)
            s.beyond = _mm512_ternarylogic_epi64(s.beyond, s.re, _mm512_add_epi64(s.re, s.re), kOrDiffering);
            s.beyond = _mm512_ternarylogic_epi64(s.beyond, s.im, _mm512_add_epi64(s.im, s.im), kOrDiffering);
        }
    }
    return s;
}

// Right shifts only.
VspStatus fir32sc(const Vsp32sc* const* src, const Vsp32sc* const* coef, Vsp32sc* dst, Vsp32s len, Vsp32s numSubbands,
                  Vsp32s scaleFactor) {
    const __m512i low = _mm512_set1_epi64((1LL << scaleFactor) - 1);
    const __m128i shift = _mm_cvtsi32_si128(scaleFactor);
    const auto divided = [=](__m512i a) {
        return _mm512_sra_epi64(_mm512_add_epi64(a, _mm512_and_si512(_mm512_srai_epi64(a, 63), low)), shift);
    };
    for (int k = 0; k < numSubbands; k += 8) {
        const __mmask8 bands = firstBands(numSubbands - k);
        const Sums s = sums<true>(src, coef, len, k, bands);
        if (_mm512_movepi64_mask(s.beyond) != 0) {
            static const vsp::Api scalar = [] {
                vsp::Api api{};
                bench::addScalarSubband(api);
                return api;
            }();
            return scalar.vspsFIRSubband_EC_32sc_Sfs(src, coef, dst, len, numSubbands, scaleFactor);
        }
        _mm512_mask_storeu_epi64(dst + k, bands, packSat(divided(s.re), divided(s.im)));
    }
    return vspStsNoErr;
}

VspStatus firLow(const Vsp32sc* const* src, const Vsp32sc* const* coef, Vsp32s len, Vsp32sc* dst, Vsp32s firstBand,
                 Vsp32s numSubbands, Vsp32s scaleFactor) {
    const __m128i shift = _mm_cvtsi32_si128(scaleFactor);
    for (int k = firstBand; k < numSubbands; k += 8) {
        const __mmask8 bands = firstBands(numSubbands - k);
        const Sums s = sums<false>(src, coef, len, k, bands);
        _mm512_mask_storeu_epi64(dst + k, bands,
                                 _mm512_mask_mov_epi32(_mm512_srl_epi64(s.re, shift), 0xAAAA,
                                                       _mm512_slli_epi64(_mm512_srl_epi64(s.im, shift), 32)));
    }
    return vspStsNoErr;
}

// Error times mantissa, and the shifts of bands that all shift to the right.
struct Step {
    __m512i re, im, right, rounding;
    Step(__m512i err, __m512i stepSize, int scaleFactor) {
        const __m512i half = _mm512_set1_epi64(1LL << 30);
        const __m512i product = _mm512_mul_epi32(_mm512_srli_epi64(err, 32), stepSize);
        re = _mm512_srli_epi64(_mm512_add_epi64(_mm512_mul_epi32(err, stepSize), half), 31);
        im = _mm512_srli_epi64(_mm512_add_epi64(product, half), 31);
        const __m512i r = _mm512_sub_epi64(_mm512_srai_epi64(stepSize, 32), _mm512_set1_epi64(scaleFactor + 31));
        rounding = _mm512_srli_epi64(_mm512_sub_epi64(_mm512_set1_epi64(1), r), 63);
        right = _mm512_sub_epi64(r, rounding);
    }
    __m512i shifted(__m512i a) const {
        return _mm512_srav_epi64(_mm512_add_epi64(_mm512_srav_epi64(a, right), rounding), rounding);
    }
};

VspStatus update32sc(const Vsp32sc* stepSize, const Vsp32sc* const* src, const Vsp32sc* err, Vsp32sc* const* coef,
                     Vsp32s len, Vsp32s numSubbands, Vsp32s scaleFactor) {
    for (int k = 0; k < numSubbands; k += 8) {
        const __mmask8 bands = firstBands(numSubbands - k);
        const Step step(_mm512_maskz_loadu_epi64(bands, err + k), _mm512_maskz_loadu_epi64(bands, stepSize + k),
                        scaleFactor);
        for (int t = 0; t < len; t++) {
            const __m512i x = _mm512_maskz_loadu_epi64(bands, src[t] + k), c = _mm512_maskz_loadu_epi64(bands, coef[t] + k);
            const __m512i xi = _mm512_max_epi32(_mm512_srli_epi64(x, 32), _mm512_set1_epi64(0x80000001));
            const __m512i re = _mm512_add_epi64(_mm512_mul_epi32(x, step.re), _mm512_mul_epi32(xi, step.im));
            const __m512i im = _mm512_sub_epi64(_mm512_mul_epi32(x, step.im), _mm512_mul_epi32(xi, step.re));
            const __m512i lower = _mm512_srai_epi64(_mm512_slli_epi64(c, 32), 32), upper = _mm512_srai_epi64(c, 32);
            _mm512_mask_storeu_epi64(
                coef[t] + k, bands,
                packSat(_mm512_add_epi64(lower, step.shifted(re)), _mm512_add_epi64(upper, step.shifted(im))));
        }
    }
    return vspStsNoErr;
}

VspStatus updateLow(const Vsp32sc* const* src, const Vsp32sc* err, Vsp32sc* const* coef, Vsp32s len, Vsp32sc* scratch,
                    const Vsp32sc* stepSize, Vsp32s firstBand, Vsp32s numSubbands, Vsp32s scaleFactor) {
    const auto pack = [](__m512i re, __m512i im) { return _mm512_mask_mov_epi32(re, 0xAAAA, _mm512_slli_epi64(im, 32)); };
    for (int k = firstBand; k < numSubbands; k += 8) {
        const __mmask8 bands = firstBands(numSubbands - k);
        const Step step(_mm512_maskz_loadu_epi64(bands, err + k), _mm512_maskz_loadu_epi64(bands, stepSize + k),
                        scaleFactor);
        _mm512_mask_storeu_epi64(scratch + k, bands, pack(step.re, step.im));
        for (int t = 0; t < len; t++) {
            const __m512i x = _mm512_maskz_loadu_epi64(bands, src[t] + k), c = _mm512_maskz_loadu_epi64(bands, coef[t] + k);
            const __m512i conj = _mm512_sub_epi64(_mm512_setzero_si512(), _mm512_srli_epi64(x, 32));
            const __m512i re = _mm512_sub_epi64(_mm512_mul_epi32(x, step.re), _mm512_mul_epi32(conj, step.im));
            const __m512i im = _mm512_add_epi64(_mm512_mul_epi32(x, step.im), _mm512_mul_epi32(conj, step.re));
            _mm512_mask_storeu_epi64(coef[t] + k, bands, _mm512_add_epi32(c, pack(step.shifted(re), step.shifted(im))));
        }
    }
    return vspStsNoErr;
}

}  // namespace

void bench::addHandTunedSubband(vsp::Api& api) {
    api.vspsFIRSubband_EC_32fc = fir32fc;
    api.vspsFIRSubband_EC_32sc_Sfs = fir32sc;
    api.vspsFIRSubbandLow_EC_32sc_Sfs = firLow;
    api.vspsFIRSubbandCoeffUpdate_EC_32fc_I = update32fc;
    api.vspsFIRSubbandCoeffUpdate_EC_32sc_I = update32sc;
    api.vspsFIRSubbandLowCoeffUpdate_EC_32sc_I = updateLow;
    api.vspsFIRSubbandAPCoeffUpdate_EC_32fc_I = updateProjection;
}
