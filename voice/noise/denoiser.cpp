// The denoiser: the noise filter of libvspscy8, which takes frames of 10 ms, on blocks of any length.
#pragma GCC visibility push(default)  // of what the library exports
#include "vspsvoice/denoiser.h"
#pragma GCC visibility pop

#include "vspsc/ec.h"

namespace vspv {

static constexpr Vsp32s kLongestFrame = 320;

// In front of the state of the library's noise filter.
struct alignas(8) Denoiser {
    Vsp32s frameLen, length;  // length of the transform
    Vsp32s filled;            // samples of the current frame
    Vsp32f presence;
    Vsp32f frame[kLongestFrame];  // the current frame, and behind it what is left of the last result
};

static Denoiser* own(VspvDenoiser* denoiser) { return reinterpret_cast<Denoiser*>(denoiser); }
static const Denoiser* own(const VspvDenoiser* denoiser) { return reinterpret_cast<const Denoiser*>(denoiser); }

static VspFilterNoiseState_EC_32f* filterOf(VspvDenoiser* denoiser) {
    return reinterpret_cast<VspFilterNoiseState_EC_32f*>(own(denoiser) + 1);
}

// Of the transform at a sampling rate; 0 for one that is not supported.
static Vsp32s orderAt(Vsp32s samplingRate) {
    switch (samplingRate) {
        case 8000: return 8;
        case 16000:
        case 22050: return 9;
        case 32000: return 10;
        default: return 0;
    }
}

static bool isMode(Vsp32s mode) { return mode >= vspvDenoiserOff && mode <= vspvDenoiserAuto; }

static VspStatus check(const VspvDenoiserSettings& s) {
    if (orderAt(s.samplingRate) == 0) return vspStsRangeErr;
    if (!isMode(s.mode)) return vspStsBadArgErr;
    return vspStsNoErr;
}

static Vsp32f exchanged(VspvDenoiser* denoiser, Vsp32f in) {
    Denoiser& d = *own(denoiser);
    const Vsp32f out = d.frame[d.filled];
    d.frame[d.filled] = in;
    if (++d.filled == d.frameLen) {
        vspsFilterNoise_EC_32f_I(d.frame, filterOf(denoiser), &d.presence);
        d.filled = 0;
    }
    return out;
}

static Vsp16s rounded(Vsp32f x) {
    if (x >= 32767) return 32767;
    if (x <= -32768) return -32768;
    return Vsp16s(x < 0 ? x - 0.5f : x + 0.5f);
}

}  // namespace vspv

using namespace vspv;

VspStatus vspvDenoiserGetSize(const VspvDenoiserSettings* pSettings, Vsp32s* pSize) {
    if (pSettings == nullptr || pSize == nullptr) return vspStsNullPtrErr;
    const VspvDenoiserSettings s = *pSettings;
    if (const VspStatus status = check(s)) return status;
    Vsp32s state = 0;
    vspsFilterNoiseGetStateSize_EC_32f(s.samplingRate, s.samplingRate / 100, orderAt(s.samplingRate), &state);
    *pSize = (Vsp32s(sizeof(Denoiser)) + state + 7) & ~7;
    return vspStsNoErr;
}

VspStatus vspvDenoiserInit(VspvDenoiser* pDenoiser, const VspvDenoiserSettings* pSettings) {
    if (pDenoiser == nullptr || pSettings == nullptr) return vspStsNullPtrErr;
    const VspvDenoiserSettings s = *pSettings;
    if (const VspStatus status = check(s)) return status;
    const Vsp32s order = orderAt(s.samplingRate), frameLen = s.samplingRate / 100;
    *own(pDenoiser) = {frameLen, 1 << order, 0, 0, {}};
    vspsFilterNoiseInit_EC_32f(filterOf(pDenoiser), s.samplingRate, frameLen, order);
    vspsFilterNoiseSetMode_EC_32f(filterOf(pDenoiser), s.mode);
    return vspStsNoErr;
}

VspStatus vspvDenoiserSetMode(VspvDenoiser* pDenoiser, Vsp32s mode) {
    if (pDenoiser == nullptr) return vspStsNullPtrErr;
    if (!isMode(mode)) return vspStsBadArgErr;
    return vspsFilterNoiseSetMode_EC_32f(filterOf(pDenoiser), mode);
}

VspStatus vspvDenoiserProcess_16s(VspvDenoiser* pDenoiser, const Vsp16s* pSrc, Vsp16s* pDst, Vsp32s len) {
    if (pDenoiser == nullptr || pSrc == nullptr || pDst == nullptr) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    for (Vsp32s i = 0; i < len; i++) pDst[i] = rounded(exchanged(pDenoiser, pSrc[i]));
    return vspStsNoErr;
}

VspStatus vspvDenoiserProcess_32f(VspvDenoiser* pDenoiser, const Vsp32f* pSrc, Vsp32f* pDst, Vsp32s len) {
    if (pDenoiser == nullptr || pSrc == nullptr || pDst == nullptr) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    for (Vsp32s i = 0; i < len; i++) pDst[i] = exchanged(pDenoiser, pSrc[i]);
    return vspStsNoErr;
}

VspStatus vspvDenoiserLatency(const VspvDenoiser* pDenoiser, Vsp32s* pLatency) {
    if (pDenoiser == nullptr || pLatency == nullptr) return vspStsNullPtrErr;
    *pLatency = own(pDenoiser)->length;
    return vspStsNoErr;
}

VspStatus vspvDenoiserPresence(const VspvDenoiser* pDenoiser, Vsp32f* pPresence) {
    if (pDenoiser == nullptr || pPresence == nullptr) return vspStsNullPtrErr;
    *pPresence = own(pDenoiser)->presence;
    return vspStsNoErr;
}
