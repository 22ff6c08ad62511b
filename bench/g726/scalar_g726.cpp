// The coder as the tests define it. Arguments are taken as valid.
#include "g726/scalar_g726.h"

#include <new>

#include "g726/definitions.h"

namespace {

using vsp::plain::G726;

static_assert(sizeof(G726) <= bench::kScalarG726Words * sizeof(Vsp32s));

VspStatus init(void* state, Vsp32s rate) {
    new (state) G726(rate);
    return vspStsNoErr;
}

VspStatus encode(const Vsp16s* src, Vsp8u* dst, Vsp32s len, void* state) {
    G726& coder = *static_cast<G726*>(state);
    for (int i = 0; i < len; i++) dst[i] = Vsp8u(coder.encode(src[i] >> 2));
    return vspStsNoErr;
}

VspStatus decode(const Vsp8u* src, Vsp16s* dst, Vsp32s len, void* state) {
    G726& coder = *static_cast<G726*>(state);
    for (int i = 0; i < len; i++) dst[i] = Vsp16s(coder.decode(src[i]));
    return vspStsNoErr;
}

VspStatus encodePcm(const Vsp8u* src, Vsp8u* dst, Vsp32s len, Vsp32s law, void* state) {
    using namespace vsp::plain;
    G726& coder = *static_cast<G726*>(state);
    for (int i = 0; i < len; i++) dst[i] = Vsp8u(coder.encode(law == 0 ? expandALaw(src[i]) : expandMuLaw(src[i])));
    return vspStsNoErr;
}

VspStatus decodePcm(const Vsp8u* src, Vsp8u* dst, Vsp32s len, Vsp32s law, void* state) {
    G726& coder = *static_cast<G726*>(state);
    for (int i = 0; i < len; i++) dst[i] = Vsp8u(coder.decodePcm(src[i], law));
    return vspStsNoErr;
}

}  // namespace

void bench::addScalarG726(vsp::Api& api) {
    api.vspsEncodeInit_G726_16s8u = init;
    api.vspsDecodeInit_G726_8u16s = init;
    api.vspsEncode_G726_16s8u = encode;
    api.vspsDecode_G726_8u16s = decode;
    api.vspsEncodePCM_G726_8u = encodePcm;
    api.vspsDecodePCM_G726_8u = decodePcm;
}
