// What a specification of either kind looks like in the caller's memory: the order, then the tables, from a 64-byte line
// on.
#pragma once

#include "vector/real_fft_kernel.h"

namespace vsp::VSP_LEVEL {

struct alignas(64) RealFftSpec_32f {
    Vsp32s order;
};
struct alignas(64) RealFftSpec_16s {
    Vsp32s order;
};

template <class T>
VSP_INLINE T* alignedUp(Vsp8u* p) {
    constexpr unsigned long kLine = 64;
    return reinterpret_cast<T*>((reinterpret_cast<unsigned long>(p) + kLine - 1) & -kLine);
}

template <class T>
VSP_INLINE Vsp32s specSize(int order) {
    const int blocks = order > kLastSmallFftOrder ? 1 << (order - 7) : 0;
    return Vsp32s(64 + 63 + sizeof(T) * fftTablesLen(order) + sizeof(Vsp32s) * blocks);
}

template <class T>
VSP_INLINE Vsp32s workSize(int order) {
    return order > kLastSmallFftOrder ? Vsp32s(63 + sizeof(T) * (4 << (order - 1))) : 0;
}

template <class T, class Spec>
VSP_INLINE FftTables<T> tablesOf(const Spec* spec) {
    const T* tables = reinterpret_cast<const T*>(spec + 1);
    return {tables, tables + fftSpectrumTableLen(spec->order),
            reinterpret_cast<const Vsp32s*>(tables + fftTablesLen(spec->order))};
}

template <class Spec, class T>
VSP_INLINE const Spec* initSpec(int order, Vsp8u* memory) {
    Spec* spec = alignedUp<Spec>(memory);
    spec->order = order;
    T* tables = reinterpret_cast<T*>(spec + 1);
    ownFftTables(order, tables);
    if (order > kLastSmallFftOrder) ownFftBlocks(order, reinterpret_cast<Vsp32s*>(tables + fftTablesLen(order)));
    return spec;
}

}  // namespace vsp::VSP_LEVEL
