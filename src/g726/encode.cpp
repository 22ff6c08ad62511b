// The encoder, from linear samples and from G.711.
#include "common/g711.h"
#include "core/checks.h"
#include "g726/adaptation.h"
#include "g726/exports.h"
#include "vector/for_blocks.h"

namespace vsp::VSP_LEVEL {

namespace {

template <int kBits>
void encodeAt(const Vsp16s* pSrc, Vsp8u* pDst, Vsp32s len, G726State& state) {
    Coder coder = load(state);
    for (int i = 0; i < len; i++) {
        const Prediction p = predict(coder);
        const int code = codeOf<kBits>((pSrc[i] >> 2) - p.se, p.y);
        adapt<kBits>(coder, p, code);
        pDst[i] = Vsp8u(code);
    }
    store(coder, state);
}

void encode(const Vsp16s* pSrc, Vsp8u* pDst, Vsp32s len, G726State& state) {
    switch (state.bits) {
        case 2: return encodeAt<2>(pSrc, pDst, len, state);
        case 3: return encodeAt<3>(pSrc, pDst, len, state);
        case 4: return encodeAt<4>(pSrc, pDst, len, state);
        default: return encodeAt<5>(pSrc, pDst, len, state);
    }
}

}  // namespace

VspStatus vspsEncode_G726_16s8u(const Vsp16s* pSrc, Vsp8u* pDst, Vsp32s len, void* pState) {
    if (anyNull(pSrc, pDst, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    encode(pSrc, pDst, len, *static_cast<G726State*>(pState));
    return vspStsNoErr;
}

VspStatus vspsEncodePCM_G726_8u(const Vsp8u* pSrc, Vsp8u* pDst, Vsp32s len, Vsp32s law, void* pState) {
    if (anyNull(pSrc, pDst, pState)) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    if (law != 0 && law != 1) return vspStsRangeErr;
    constexpr int kChunk = 160;
    Vsp16s linear[kChunk];
    const Law g711 = law == 0 ? Law::a : Law::mu;
    forBlocks(len, kChunk, [&](Vsp32s done, Vsp32s n) {
        for (int i = 0; i < n; i++) linear[i] = Vsp16s(4 * g711Value(g711, g711Level(g711, pSrc[done + i])));
        encode(linear, pDst + done, n, *static_cast<G726State*>(pState));
    });
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
