// The real transforms of every level: SinglePrecision_y8, FixedPoint_y8, ..., each with the same members.
#pragma once

#include "core/cpu.h"
#include "vspsc/types.h"

#define VSPSC_REAL_FFT(level)                                                                                     \
    namespace vsp::level {                                                                                        \
    struct RealFftSpec_32f;                                                                                       \
    struct RealFftSpec_16s;                                                                                       \
    VspStatus ownRealFftGetSize_32f(Vsp32s order, Vsp32s* pSpecSize, Vsp32s* pInitBufSize, Vsp32s* pWorkBufSize); \
    VspStatus ownRealFftInit_32f(const RealFftSpec_32f** ppSpec, Vsp32s order, Vsp8u* pSpecMem, Vsp8u* pInitBuf); \
    VspStatus ownRealFftFwd_32f(const Vsp32f* pSrc, Vsp32fc* pDst, const RealFftSpec_32f* pSpec, Vsp8u* pBuf);    \
    VspStatus ownRealFftInv_32f(const Vsp32fc* pSrc, Vsp32f* pDst, const RealFftSpec_32f* pSpec, Vsp8u* pBuf);    \
    VspStatus ownRealFftGetSize_16s(Vsp32s order, Vsp32s* pSpecSize, Vsp32s* pInitBufSize, Vsp32s* pWorkBufSize); \
    VspStatus ownRealFftInit_16s(const RealFftSpec_16s** ppSpec, Vsp32s order, Vsp8u* pSpecMem, Vsp8u* pInitBuf); \
    VspStatus ownRealFftFwd_16s32s_Sfs(const Vsp16s* pSrc, Vsp32sc* pDst, const RealFftSpec_16s* pSpec,           \
                                       Vsp32s scaleFactor, Vsp8u* pBuf);                                          \
    VspStatus ownRealFftInv_32s16s_Sfs(const Vsp32sc* pSrc, Vsp16s* pDst, const RealFftSpec_16s* pSpec,           \
                                       Vsp32s scaleFactor, Vsp8u* pBuf);                                          \
    }                                                                                                             \
    namespace vsp::test {                                                                                         \
    struct SinglePrecision_##level {                                                                              \
        using Sample = Vsp32f;                                                                                    \
        using Bin = Vsp32fc;                                                                                      \
        using Spec = vsp::level::RealFftSpec_32f;                                                                 \
        static constexpr Level kLevel = Level::level;                                                             \
        static constexpr auto getSize = vsp::level::ownRealFftGetSize_32f;                                        \
        static constexpr auto init = vsp::level::ownRealFftInit_32f;                                              \
        static VspStatus forward(const Sample* src, Bin* dst, const Spec* spec, int, Vsp8u* work) {               \
            return vsp::level::ownRealFftFwd_32f(src, dst, spec, work);                                           \
        }                                                                                                         \
        static VspStatus inverse(const Bin* src, Sample* dst, const Spec* spec, int, Vsp8u* work) {               \
            return vsp::level::ownRealFftInv_32f(src, dst, spec, work);                                           \
        }                                                                                                         \
    };                                                                                                            \
    struct FixedPoint_##level {                                                                                   \
        using Sample = Vsp16s;                                                                                    \
        using Bin = Vsp32sc;                                                                                      \
        using Spec = vsp::level::RealFftSpec_16s;                                                                 \
        static constexpr Level kLevel = Level::level;                                                             \
        static constexpr auto getSize = vsp::level::ownRealFftGetSize_16s;                                        \
        static constexpr auto init = vsp::level::ownRealFftInit_16s;                                              \
        static constexpr auto forward = vsp::level::ownRealFftFwd_16s32s_Sfs;                                     \
        static constexpr auto inverse = vsp::level::ownRealFftInv_32s16s_Sfs;                                     \
    };                                                                                                            \
    }
VSPSC_REAL_FFT(y8)
VSPSC_REAL_FFT(v3)
VSPSC_REAL_FFT(v4)
#undef VSPSC_REAL_FFT
