// The detectors and their transform as the tests define them. Arguments are taken as valid.
#include "gsmamr/scalar_gsmamr.h"

#include "gsmamr/definitions.h"

namespace {

using namespace vsp;

VspStatus vad1(const Vsp16s* src, VspGSMAMRVad1State* state, Vsp16s* flag, Vsp16s bestCorrHp, Vsp16s toneFlags) {
    *flag = plain::vad1(src, *state, bestCorrHp, toneFlags);
    return vspStsNoErr;
}

VspStatus vad2(const Vsp16s* src, VspGSMAMRVad2State* state, Vsp16s* flag, Vsp32s ltpFlag) {
    *flag = plain::vad2(src, *state, ltpFlag);
    return vspStsNoErr;
}

VspStatus fft128(Vsp16s* srcDst) {
    plain::fft128(srcDst);
    return vspStsNoErr;
}

}  // namespace

void bench::addScalarGsmamr(vsp::Api& api) {
    api.vspsVAD1_GSMAMR_16s = vad1;
    api.vspsVAD2_GSMAMR_16s = vad2;
    api.vspsFFTFwd_RToPerm_GSMAMR_16s_I = fft128;
}
