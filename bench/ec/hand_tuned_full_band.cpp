// Loops over outputs (FIR) and over taps (NLMS), for multiples of 32 samples and of 32 taps. Where loads at any place limit
// a loop its registers have 32 bytes, because 64-byte ones would cross cache lines all the time.
#include "ec/hand_tuned_full_band.h"

#include <immintrin.h>

namespace {

template <int Units>
[[gnu::always_inline]] inline void fir_32f(const Vsp32f* ref, const Vsp32f* near, Vsp32f* dst, const Vsp32f* taps,
                                           Vsp32s numTaps) {
    __m256 y[Units];
    for (auto& sum : y) sum = _mm256_setzero_ps();
    for (int k = 0; k < numTaps; k++) {
        const __m256 tap = _mm256_broadcast_ss(taps + k);
#pragma GCC unroll 10
        for (int u = 0; u < Units; u++) y[u] = _mm256_add_ps(y[u], _mm256_mul_ps(_mm256_loadu_ps(ref + 8 * u - k), tap));
    }
    for (int u = 0; u < Units; u++) _mm256_storeu_ps(dst + 8 * u, _mm256_sub_ps(_mm256_loadu_ps(near + 8 * u), y[u]));
}

VspStatus fir(const Vsp32f* ref, const Vsp32f* near, Vsp32f* dst, Vsp32s len, const Vsp32f* taps, Vsp32s numTaps) {
    int n = 0;
    for (; n + 80 <= len; n += 80) fir_32f<10>(ref + n, near + n, dst + n, taps, numTaps);
    for (; n < len; n += 32) fir_32f<4>(ref + n, near + n, dst + n, taps, numTaps);
    return vspStsNoErr;
}

// Terms of pairs of taps are widened and added by a multiplication by one. Not for -32768 * -32768.
template <int Units>
[[gnu::always_inline]] inline void fir_16s(const Vsp16s* ref, const Vsp16s* near, Vsp16s* dst, const Vsp16s* taps,
                                           Vsp32s numTaps) {
    const __m512i one = _mm512_set1_epi16(1);
    __m512i low[Units], high[Units];
    for (int u = 0; u < Units; u++) low[u] = high[u] = _mm512_setzero_si512();
    for (int k = 0; k < numTaps; k += 2) {
        const __m512i tap0 = _mm512_set1_epi16(taps[k]), tap1 = _mm512_set1_epi16(taps[k + 1]);
#pragma GCC unroll 5
        for (int u = 0; u < Units; u++) {
            const Vsp16s* at = ref + 32 * u - k;
            const __m512i a = _mm512_mulhrs_epi16(_mm512_loadu_si512(at), tap0),
                          b = _mm512_mulhrs_epi16(_mm512_loadu_si512(at - 1), tap1);
            low[u] = _mm512_add_epi32(low[u], _mm512_madd_epi16(_mm512_unpacklo_epi16(a, b), one));
            high[u] = _mm512_add_epi32(high[u], _mm512_madd_epi16(_mm512_unpackhi_epi16(a, b), one));
        }
    }
    for (int u = 0; u < Units; u++) {
        const __m512i x = _mm512_loadu_si512(near + 32 * u), zero = _mm512_setzero_si512();
        const __m512i x0 = _mm512_srai_epi32(_mm512_unpacklo_epi16(zero, x), 16),
                      x1 = _mm512_srai_epi32(_mm512_unpackhi_epi16(zero, x), 16);
        _mm512_storeu_si512(dst + 32 * u, _mm512_packs_epi32(_mm512_sub_epi32(x0, low[u]), _mm512_sub_epi32(x1, high[u])));
    }
}

VspStatus fir(const Vsp16s* ref, const Vsp16s* near, Vsp16s* dst, Vsp32s len, const Vsp16s* taps, Vsp32s numTaps) {
    int n = 0;
    for (; n + 160 <= len; n += 160) fir_16s<5>(ref + n, near + n, dst + n, taps, numTaps);
    for (; n < len; n += 32) fir_16s<1>(ref + n, near + n, dst + n, taps, numTaps);
    return vspStsNoErr;
}

constexpr int kMaxReference = 8192;

Vsp32s sum(__m256i x) {
    const __m128i half = _mm_add_epi32(_mm256_castsi256_si128(x), _mm256_extracti128_si256(x, 1));
    const __m128i pair = _mm_add_epi32(half, _mm_unpackhi_epi64(half, half));
    return _mm_cvtsi128_si32(_mm_add_epi32(pair, _mm_shuffle_epi32(pair, 1)));
}

// The reference backwards in a scratch array, so that taps and reference run in the same direction. Updates by 16-bit
// multiplication where they fit. Not for taps of -32768.
VspStatus nlms(const Vsp16s* ref, const Vsp16s* near, const Vsp32s* step, Vsp16s* dst, Vsp32s len, Vsp16s* taps,
               Vsp32s numTaps, Vsp16s* scaledErr) {
    Vsp16s backwards[kMaxReference];
    for (int i = 0; i < len + numTaps; i++) backwards[i] = ref[len - 1 - i];
    const auto load = [](const Vsp16s* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); };
    Vsp32s w = *scaledErr;
    for (int n = 0; n < len; n++) {
        const Vsp16s* now = backwards + (len - 1 - n);
        __m256i y = _mm256_setzero_si256();
        const auto filter = [&](int k, __m256i tap) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(taps + k), tap);
            y = _mm256_add_epi32(y, _mm256_madd_epi16(_mm256_mulhrs_epi16(tap, load(now + k)), _mm256_set1_epi16(1)));
        };
        if (w >= -8191 && w <= 8191) {
            const __m256i factor = _mm256_set1_epi16(Vsp16s(4 * w));
            for (int k = 0; k < numTaps; k += 32) {
                filter(k, _mm256_adds_epi16(load(taps + k), _mm256_mulhrs_epi16(load(now + k + 1), factor)));
                filter(k + 16, _mm256_adds_epi16(load(taps + k + 16), _mm256_mulhrs_epi16(load(now + k + 17), factor)));
            }
        } else {
            for (int k = 0; k < numTaps; k += 16) {
                const __m512i product = _mm512_mullo_epi32(_mm512_cvtepi16_epi32(load(now + k + 1)), _mm512_set1_epi32(w));
                const __m512i update = _mm512_srai_epi32(_mm512_add_epi32(product, _mm512_set1_epi32(4096)), 13);
                filter(k, _mm512_cvtsepi32_epi16(_mm512_add_epi32(_mm512_cvtepi16_epi32(load(taps + k)), update)));
            }
        }
        const Vsp32s e = near[n] - sum(y);
        dst[n] = Vsp16s(e > 32767 ? 32767 : e < -32768 ? -32768 : e);
        w = Vsp32s(Vsp32u(dst[n]) * Vsp32u(step[n]) + 1024) >> 11;
    }
    *scaledErr = Vsp16s(w > 32767 ? 32767 : w < -32768 ? -32768 : w);
    return vspStsNoErr;
}

}  // namespace

void bench::addHandTunedFullBand(vsp::Api& api) {
    api.vspsFIR_EC_16s = fir;
    api.vspsFIR_EC_32f = fir;
    api.vspsNLMS_EC_16s = nlms;
}
