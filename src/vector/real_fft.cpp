#include "vector/real_fft.h"

#include <math.h>

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kMaxOrder = 15, kSlack = 15;

struct Complex {
    double re, im;
};

// Twiddle factors exp(-j 2 pi i / N) of the first half turn follow it.
struct Spec {
    Vsp32s order, n;
    const Complex* twiddles() const { return reinterpret_cast<const Complex*>(this + 1); }
};
static_assert(sizeof(Spec) % alignof(Complex) == 0);

template <class T>
T* align16(Vsp8u* p) {
    return reinterpret_cast<T*>((reinterpret_cast<unsigned long>(p) + kSlack) & ~static_cast<unsigned long>(kSlack));
}

VspStatus getSize(Vsp32s order, Vsp32s* pSpecSize, Vsp32s* pInitBufSize, Vsp32s* pWorkBufSize) {
    if (order < 1 || order > kMaxOrder) return vspStsBadArgErr;
    *pSpecSize = Vsp32s(sizeof(Spec) + (sizeof(Complex) << (order - 1))) + kSlack;
    *pInitBufSize = 0;
    *pWorkBufSize = Vsp32s(sizeof(Complex) << order) + kSlack;
    return vspStsNoErr;
}

const Spec* init(Vsp32s order, Vsp8u* pSpecMem) {
    if (order < 1 || order > kMaxOrder) return nullptr;
    Spec* spec = align16<Spec>(pSpecMem);
    *spec = {order, 1 << order};
    Complex* twiddles = reinterpret_cast<Complex*>(spec + 1);
    for (int i = 0; i < spec->n / 2; i++) {
        const double angle = -2 * M_PI * i / spec->n;
        twiddles[i] = {cos(angle), sin(angle)};
    }
    return spec;
}

// In place; the input is in bit-reversed order. sign -1 conjugates the twiddle factors.
void transform(Complex* x, const Spec& spec, double sign) {
    for (int half = 1; half < spec.n; half *= 2)
        for (int start = 0; start < spec.n; start += 2 * half)
            for (int i = 0; i < half; i++) {
                const Complex w = spec.twiddles()[i * (spec.n / 2 / half)];
                Complex &a = x[start + i], &b = x[start + i + half];
                const Complex p = {b.re * w.re - b.im * sign * w.im, b.re * sign * w.im + b.im * w.re};
                b = {a.re - p.re, a.im - p.im};
                a = {a.re + p.re, a.im + p.im};
            }
}

int bitReversed(int i, int order) {
    int reversed = 0;
    for (int bit = 0; bit < order; bit++) reversed |= ((i >> bit) & 1) << (order - 1 - bit);
    return reversed;
}

template <class T>
Complex* forward(const T* pSrc, const Spec& spec, Vsp8u* pBuf) {
    Complex* x = align16<Complex>(pBuf);
    for (int i = 0; i < spec.n; i++) x[bitReversed(i, spec.order)] = {double(pSrc[i]), 0};
    transform(x, spec, 1);
    x[0].im = x[spec.n / 2].im = 0;
    return x;
}

template <class TC>
Complex* inverse(const TC* pSrc, const Spec& spec, Vsp8u* pBuf) {
    Complex* x = align16<Complex>(pBuf);
    for (int i = 0; i <= spec.n / 2; i++) {
        const bool real = i == 0 || i == spec.n / 2;
        const Complex value = {double(pSrc[i].re), real ? 0 : double(pSrc[i].im)};
        x[bitReversed(i, spec.order)] = value;
        if (!real) x[bitReversed(spec.n - i, spec.order)] = {value.re, -value.im};
    }
    transform(x, spec, -1);
    for (int i = 0; i < spec.n; i++) x[i].re /= spec.n;
    return x;
}

double scale(Vsp32s scaleFactor) {
    const int exponent = scaleFactor > 1000 ? -1000 : scaleFactor < -1000 ? 1000 : -scaleFactor;
    return __builtin_bit_cast(double, (1023LL + exponent) << 52);
}

template <class T>
T saturate(double x, double lowest, double highest) {
    return T(x >= highest ? highest : x <= lowest ? lowest : rint(x));
}

Vsp32s saturate32(double x) { return saturate<Vsp32s>(x, -0x1p31, 0x1p31 - 1); }

}  // namespace

VspStatus ownRealFftGetSize_32f(Vsp32s order, Vsp32s* pSpecSize, Vsp32s* pInitBufSize, Vsp32s* pWorkBufSize) {
    return getSize(order, pSpecSize, pInitBufSize, pWorkBufSize);
}

VspStatus ownRealFftGetSize_16s(Vsp32s order, Vsp32s* pSpecSize, Vsp32s* pInitBufSize, Vsp32s* pWorkBufSize) {
    return getSize(order, pSpecSize, pInitBufSize, pWorkBufSize);
}

VspStatus ownRealFftInit_32f(const RealFftSpec_32f** ppSpec, Vsp32s order, Vsp8u* pSpecMem, Vsp8u*) {
    const Spec* spec = init(order, pSpecMem);
    if (spec == nullptr) return vspStsBadArgErr;
    *ppSpec = reinterpret_cast<const RealFftSpec_32f*>(spec);
    return vspStsNoErr;
}

VspStatus ownRealFftInit_16s(const RealFftSpec_16s** ppSpec, Vsp32s order, Vsp8u* pSpecMem, Vsp8u*) {
    const Spec* spec = init(order, pSpecMem);
    if (spec == nullptr) return vspStsBadArgErr;
    *ppSpec = reinterpret_cast<const RealFftSpec_16s*>(spec);
    return vspStsNoErr;
}

VspStatus ownRealFftFwd_32f(const Vsp32f* pSrc, Vsp32fc* pDst, const RealFftSpec_32f* pSpec, Vsp8u* pBuf) {
    const Spec& spec = *reinterpret_cast<const Spec*>(pSpec);
    const Complex* x = forward(pSrc, spec, pBuf);
    for (int i = 0; i <= spec.n / 2; i++) pDst[i] = {Vsp32f(x[i].re), Vsp32f(x[i].im)};
    return vspStsNoErr;
}

VspStatus ownRealFftInv_32f(const Vsp32fc* pSrc, Vsp32f* pDst, const RealFftSpec_32f* pSpec, Vsp8u* pBuf) {
    const Spec& spec = *reinterpret_cast<const Spec*>(pSpec);
    const Complex* x = inverse(pSrc, spec, pBuf);
    for (int i = 0; i < spec.n; i++) pDst[i] = Vsp32f(x[i].re);
    return vspStsNoErr;
}

VspStatus ownRealFftFwd_16s32s_Sfs(const Vsp16s* pSrc, Vsp32sc* pDst, const RealFftSpec_16s* pSpec, Vsp32s scaleFactor,
                                   Vsp8u* pBuf) {
    const Spec& spec = *reinterpret_cast<const Spec*>(pSpec);
    const double factor = scale(scaleFactor);
    const Complex* x = forward(pSrc, spec, pBuf);
    for (int i = 0; i <= spec.n / 2; i++) pDst[i] = {saturate32(x[i].re * factor), saturate32(x[i].im * factor)};
    return vspStsNoErr;
}

VspStatus ownRealFftInv_32s16s_Sfs(const Vsp32sc* pSrc, Vsp16s* pDst, const RealFftSpec_16s* pSpec, Vsp32s scaleFactor,
                                   Vsp8u* pBuf) {
    const Spec& spec = *reinterpret_cast<const Spec*>(pSpec);
    const double factor = scale(scaleFactor);
    const Complex* x = inverse(pSrc, spec, pBuf);
    for (int i = 0; i < spec.n; i++) pDst[i] = saturate<Vsp16s>(x[i].re * factor, -32768, 32767);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
