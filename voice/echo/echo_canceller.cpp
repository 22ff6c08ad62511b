// The interface of the echo canceller: the checks, and the call of the engine.
#include "echo/engine.h"

namespace vspv {

// What lies at the beginning of an object; behind it is the engine's part.
struct alignas(8) CancellerHead {
    const EchoEngine* engine;
    void* object;
};

static CancellerHead* headOf(VspvEchoCanceller* canceller) { return reinterpret_cast<CancellerHead*>(canceller); }
static const CancellerHead* headOf(const VspvEchoCanceller* canceller) {
    return reinterpret_cast<const CancellerHead*>(canceller);
}

static bool isOneOf(Vsp32s value, Vsp32s first, Vsp32s second) { return value == first || value == second; }

// NaN is not.
static bool isInRange(const VspvEchoSettings& s) {
    return isOneOf(s.samplingRate, 8000, 16000) && s.tailMs >= 1 && s.tailMs <= 500 && s.maxBulkDelayMs >= 0 &&
           s.maxBulkDelayMs <= 1000;
}

static bool hasKnownModes(const VspvEchoSettings& s) {
    return isOneOf(s.engine, vspvEchoSubband, vspvEchoFullband) && isOneOf(s.arithmetic, vspvEchoFloat, vspvEchoFixed) &&
           isOneOf(s.toneDisabling, 0, 1) && isOneOf(s.suppression, 0, s.engine == vspvEchoSubband ? 1 : 0);
}

static const EchoEngine& chosenEngine(const VspvEchoSettings& s) {
    const bool fixed = s.arithmetic == vspvEchoFixed;
    if (s.engine == vspvEchoSubband) return fixed ? kSubbandFixed : kSubbandFloat;
    return fixed ? kFullbandFixed : kFullbandFloat;
}

}  // namespace vspv

using namespace vspv;

VspStatus vspvEchoCancellerDefaults(Vsp32s samplingRate, VspvEchoSettings* pSettings) {
    if (pSettings == nullptr) return vspStsNullPtrErr;
    if (!isOneOf(samplingRate, 8000, 16000)) return vspStsRangeErr;
    *pSettings = {samplingRate, vspvEchoSubband, vspvEchoFloat, 1, 0, 128, 1000};
    return vspStsNoErr;
}

VspStatus vspvEchoCancellerGetSize(const VspvEchoSettings* pSettings, Vsp32s* pSize) {
    if (pSettings == nullptr || pSize == nullptr) return vspStsNullPtrErr;
    if (!isInRange(*pSettings)) return vspStsRangeErr;
    if (!hasKnownModes(*pSettings)) return vspStsBadArgErr;
    *pSize = static_cast<Vsp32s>(sizeof(CancellerHead)) + chosenEngine(*pSettings).size(*pSettings);
    return vspStsNoErr;
}

VspStatus vspvEchoCancellerInit(VspvEchoCanceller* pCanceller, const VspvEchoSettings* pSettings) {
    if (pCanceller == nullptr || pSettings == nullptr) return vspStsNullPtrErr;
    if (!isInRange(*pSettings)) return vspStsRangeErr;
    if (!hasKnownModes(*pSettings)) return vspStsBadArgErr;
    CancellerHead* head = headOf(pCanceller);
    head->engine = &chosenEngine(*pSettings);
    head->object = head->engine->init(head + 1, *pSettings);
    return vspStsNoErr;
}

VspStatus vspvEchoCancellerProcess_16s(VspvEchoCanceller* pCanceller, const Vsp16s* pFar, const Vsp16s* pNear, Vsp16s* pOut,
                                       Vsp32s len) {
    if (pCanceller == nullptr || pFar == nullptr || pNear == nullptr || pOut == nullptr) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    const CancellerHead* head = headOf(pCanceller);
    head->engine->process16s(head->object, pFar, pNear, pOut, len);
    return vspStsNoErr;
}

VspStatus vspvEchoCancellerProcess_32f(VspvEchoCanceller* pCanceller, const Vsp32f* pFar, const Vsp32f* pNear, Vsp32f* pOut,
                                       Vsp32s len) {
    if (pCanceller == nullptr || pFar == nullptr || pNear == nullptr || pOut == nullptr) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    const CancellerHead* head = headOf(pCanceller);
    head->engine->process32f(head->object, pFar, pNear, pOut, len);
    return vspStsNoErr;
}

VspStatus vspvEchoCancellerLatency(const VspvEchoCanceller* pCanceller, Vsp32s* pLatency) {
    if (pCanceller == nullptr || pLatency == nullptr) return vspStsNullPtrErr;
    *pLatency = headOf(pCanceller)->engine->latency(headOf(pCanceller)->object);
    return vspStsNoErr;
}

VspStatus vspvEchoCancellerStatus(const VspvEchoCanceller* pCanceller, VspvEchoStatus* pStatus) {
    if (pCanceller == nullptr || pStatus == nullptr) return vspStsNullPtrErr;
    *pStatus = headOf(pCanceller)->engine->status(headOf(pCanceller)->object);
    return vspStsNoErr;
}
