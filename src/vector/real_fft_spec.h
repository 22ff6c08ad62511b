// What a specification of either kind looks like in the caller's memory: the order, then the tables, from a 64-byte line
// on.
#pragma once

#include "vector/real_fft_kernel.h"

namespace vsp::VSP_LEVEL {

template <class T>
struct alignas(64) FftSpec {
    Vsp32s order, blocksAt;  // the blocks of the last pass, in bytes from here
    T oneByN;
    [[gnu::always_inline]] const T* tables() const { return reinterpret_cast<const T*>(this + 1); }
    [[gnu::always_inline]] const Vsp32s* blocks() const {
        return reinterpret_cast<const Vsp32s*>(reinterpret_cast<const Vsp8u*>(this) + blocksAt);
    }
};
struct RealFftSpec_32f : FftSpec<Vsp32f> {};
struct RealFftSpec_16s : FftSpec<Vsp64f> {};

template <class T>
VSP_INLINE T* alignedUp(Vsp8u* p) {
    constexpr unsigned long kLine = 64;
    return reinterpret_cast<T*>(p + (-reinterpret_cast<unsigned long>(p) & (kLine - 1)));
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

template <class Spec, class T>
VSP_INLINE const Spec* initSpec(int order, Vsp8u* memory) {
    Spec* spec = alignedUp<Spec>(memory);
    T* tables = reinterpret_cast<T*>(spec + 1);
    Vsp32s* blocks = reinterpret_cast<Vsp32s*>(tables + fftTablesLen(order));
    spec->order = order;
    spec->blocksAt = Vsp32s(reinterpret_cast<Vsp8u*>(blocks) - reinterpret_cast<Vsp8u*>(spec));
    spec->oneByN = T(1) / T(1 << order);
    ownFftTables(order, tables);
    if (order > kLastSmallFftOrder) ownFftBlocks(order, blocks);
    return spec;
}

}  // namespace vsp::VSP_LEVEL
