// The coders and filters as the tests define them. Arguments are taken as valid.
#include "g722/scalar_g722.h"

#include "g722/definitions.h"

namespace {

using namespace vsp::test;

g722::Bands& bandsAt(void* state) { return *static_cast<g722::Bands*>(state); }
static_assert(sizeof(g722::Bands) <= 144);

using Delay = Vsp16s[24];
Delay& delayAt(void* delay) { return *static_cast<Delay*>(delay); }

VspStatus init(void* state) {
    bandsAt(state) = g722::Bands();
    return vspStsNoErr;
}

VspStatus encode(const Vsp16s* src, Vsp16s* dst, Vsp32s len, void* state) {
    g722::encode(src, dst, len, bandsAt(state));
    return vspStsNoErr;
}

VspStatus decode(const Vsp16s* src, Vsp16s* dst, Vsp32s len, Vsp32s mode, void* state) {
    g722::decode(src, dst, len, mode, bandsAt(state));
    return vspStsNoErr;
}

VspStatus analyse(const Vsp16s* src, Vsp16s* dst, Vsp32s len, Vsp16s* delay) {
    g722::analyse(src, dst, len, delayAt(delay));
    return vspStsNoErr;
}

VspStatus synthesise(const Vsp16s* src, Vsp16s* dst, Vsp32s len, Vsp16s* delay) {
    g722::synthesise(src, dst, len, delayAt(delay));
    return vspStsNoErr;
}

}  // namespace

void bench::addScalarG722(vsp::Api& api) {
    api.vspsSBADPCMEncodeInit_G722_16s = api.vspsSBADPCMDecodeInit_G722_16s = init;
    api.vspsSBADPCMEncode_G722_16s = encode;
    api.vspsSBADPCMDecode_G722_16s = decode;
    api.vspsQMFAnalysis_G722_16s = analyse;
    api.vspsQMFSynthesis_G722_16s = synthesise;
}
