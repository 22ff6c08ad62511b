// The decoder, to linear samples (G.726 Annex A) and to G.711.
#include "core/checks.h"
#include "g726/exports.h"
#include "g726/synchronous.h"
#include "vector/for_blocks.h"

namespace vsp::VSP_LEVEL {

namespace {

template <int kBits>
void decodeAt(const Vsp8u* pSrc, Vsp16s* pDst, Vsp32s len, G726State& state) {
    Coder coder = load(state);
    for (int i = 0; i < len; i++) {
        const Prediction p = predict(coder);
        const int sr = adapt<kBits>(coder, p, pSrc[i] & ((1 << kBits) - 1));
        pDst[i] = Vsp16s(4 * clamp(sr, -8192, 8191));
    }
    store(coder, state);
}

// The adjustment runs over a block of its own, because nothing in it waits for the sample before.
template <int kBits>
void decodePcmAt(const Vsp8u* pSrc, Vsp8u* pDst, Vsp32s len, Law law, G726State& state) {
    constexpr int kChunk = 64;
    Coder coder = load(state);
    forBlocks(len, kChunk, [&](Vsp32s done, Vsp32s n) {
        Prediction predictions[kChunk];
        Vsp16s sr[kChunk];
        for (int i = 0; i < n; i++) {
            predictions[i] = predict(coder);
            sr[i] = Vsp16s(adapt<kBits>(coder, predictions[i], pSrc[done + i] & ((1 << kBits) - 1)));
        }
        for (int i = 0; i < n; i++) {
            const int code = pSrc[done + i] & ((1 << kBits) - 1);
            pDst[done + i] = g711Octet(law, synchronousLevel<kBits>(law, sr[i], predictions[i], code));
        }
    });
    store(coder, state);
}

}  // namespace

VspStatus vspsDecode_G726_8u16s(const Vsp8u* pSrc, Vsp16s* pDst, Vsp32s len, void* pState) {
    if (anyNull(pSrc, pDst, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    G726State& state = *static_cast<G726State*>(pState);
    switch (state.bits) {
        case 2: decodeAt<2>(pSrc, pDst, len, state); break;
        case 3: decodeAt<3>(pSrc, pDst, len, state); break;
        case 4: decodeAt<4>(pSrc, pDst, len, state); break;
        default: decodeAt<5>(pSrc, pDst, len, state); break;
    }
    return vspStsNoErr;
}

VspStatus vspsDecodePCM_G726_8u(const Vsp8u* pSrc, Vsp8u* pDst, Vsp32s len, Vsp32s law, void* pState) {
    if (anyNull(pSrc, pDst, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (law != 0 && law != 1) return vspStsRangeErr;
    G726State& state = *static_cast<G726State*>(pState);
    const Law g711 = law == 0 ? Law::a : Law::mu;
    switch (state.bits) {
        case 2: decodePcmAt<2>(pSrc, pDst, len, g711, state); break;
        case 3: decodePcmAt<3>(pSrc, pDst, len, g711, state); break;
        case 4: decodePcmAt<4>(pSrc, pDst, len, g711, state); break;
        default: decodePcmAt<5>(pSrc, pDst, len, g711, state); break;
    }
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
