// Between 16 kHz and 12.8 kHz (3GPP TS 26.190 5.1 and 6.1, `Decim_12k8` and `Oversamp_16k`).
#include "amrwb/exports.h"
#include "amrwb/filter_tables.h"
#include "arithmetic/standard_ops.h"
#include "core/checks.h"
#include "vector/magnitude.h"
#include "vector/simd.h"

namespace vsp::VSP_LEVEL {

namespace {

// kOut outputs for every kIn inputs; each has the filter of its phase over kTaps inputs, which are also the memory.
template <int kIn, int kOut, int kTaps, int kMaxLen>
struct Resampler {
    using V = Sliding16;
    using Phases = Vsp16s[kOut][kPhaseTaps];

    static constexpr int kBlock = 4 * kOut;  // outputs
    static constexpr int kMaxOutputs = (kMaxLen / kIn * kOut + kBlock - 1) / kBlock * kBlock;
    static constexpr int kBehind = 4 * kIn + kPhaseTaps;  // read behind the inputs, but for nothing

    static constexpr int place(int output) { return output * kIn / kOut; }
    static constexpr int phase(int output) { return output * kIn % kOut; }

    // Halves of the sums, for whole blocks.
    [[gnu::always_inline]] static void sumsExact(const Vsp16s* x, const Phases& phases, Vsp32s* sum, int outputs) {
        for (int first = 0; first < outputs; first += kBlock, x += 4 * kIn)
            for (int j = 0; j < kBlock; j += 4) {
                Wide<V> products[4];
                for (int k = 0; k < 4; k++) {
                    products[k] = Wide<V>::splat(0);
                    for (int t = 0; t < kTaps; t += V::width)
                        products[k] =
                            add(products[k], dot2(V::load(x + place(j + k) + t), V::load(phases[phase(j + k)] + t)));
                }
                sums(products[0], products[1], products[2], products[3]).store(sum + first + j);
            }
    }

    // kMagnitude: of the taps of a phase, at most.
    template <int kMagnitude>
    [[gnu::always_inline]] static void run(const Vsp16s* src, int len, const Phases& phases, Vsp16s* mem, Vsp16s* dst) {
        Vsp16s buffer[kTaps + kMaxLen + kBehind];
        for (int i = 0; i < kTaps; i++) buffer[i] = mem[i];
        for (int i = 0; i < len; i++) buffer[kTaps + i] = src[i];
        for (int i = 0; i < kBehind; i++) buffer[kTaps + len + i] = 0;
        const Vsp16s* const x = buffer + 1;
        const int outputs = len / kIn * kOut;
        if (maxMagnitude(buffer, kTaps + len) * kMagnitude < (1 << 30)) {
            Vsp32s sum[kMaxOutputs];
            sumsExact(x, phases, sum, outputs);
            for (int j = 0; j < outputs; j++) dst[j] = sat_16s((sum[j] + 0x2000) >> 14);
        } else {
            for (int j = 0; j < outputs; j++)
                dst[j] = round_32s(Mul2_32s(dotSaturating(phases[phase(j)], x + place(j), kTaps)));
        }
        for (int i = 0; i < kTaps; i++) mem[i] = buffer[len + i];
    }
};

}  // namespace

VspStatus vspsDownsample_AMRWB_16s(const Vsp16s* pSrc, Vsp32s len, Vsp16s* pMem, Vsp16s* pDst) {
    constexpr int kMaxLen = 320;
    if (anyNull(pSrc, pMem, pDst)) return vspStsNullPtrErr;
    if (len < 5 || len > kMaxLen || len % 5 != 0) return vspStsSizeErr;
    Resampler<5, 4, kDownTaps, kMaxLen>::run<kDownMagnitude>(pSrc, len, fir_down, pMem, pDst);
    return vspStsNoErr;
}

VspStatus vspsUpsample_AMRWB_16s(const Vsp16s* pSrc, Vsp32s len, Vsp16s* pMem, Vsp16s* pDst) {
    constexpr int kMaxLen = 256;
    if (anyNull(pSrc, pMem, pDst)) return vspStsNullPtrErr;
    if (len < 8 || len > kMaxLen || len % 8 != 0) return vspStsSizeErr;
    Resampler<4, 5, kUpTaps, kMaxLen>::run<kUpMagnitude>(pSrc, len, fir_up, pMem, pDst);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
