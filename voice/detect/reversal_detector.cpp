#include "detect/reversal_detector.h"

#include <string.h>

#include "vspsc/ec.h"

namespace vspv {

static constexpr unsigned long kAlignment = 16;
static constexpr Vsp32s kForget = 50;              // ms
static constexpr Vsp32s kLongestMillisecond = 16;  // samples

static Vsp32s toAlignment(const void* p) { return Vsp32s(-reinterpret_cast<unsigned long>(p) % kAlignment); }
static auto fixedState(void* p) { return static_cast<VspToneDetectState_EC_16s*>(p); }
static auto floatState(void* p) { return static_cast<VspToneDetectState_EC_32f*>(p); }

Vsp32s ReversalDetector::stateBytes(Vsp32s rate, bool fixedPoint) {
    Vsp32s bytes = 0;
    fixedPoint ? vspsToneDetectGetStateSize_EC_16s(rate, &bytes) : vspsToneDetectGetStateSize_EC_32f(rate, &bytes);
    return bytes;
}

ReversalDetector::ReversalDetector(Vsp32s rate, bool fixedPoint, void* state)
    : rate_(rate), offset_(toAlignment(state)), fixedPoint_(fixedPoint) {
    begin(static_cast<char*>(state) + offset_);
}

bool ReversalDetector::detect(const Vsp16s* block, Vsp32s count, void* state) {
    void* const placed = place(state);
    Vsp32s reported = 0;
    if (fixedPoint_) {
        vspsToneDetect_EC_16s(block, count, &reported, fixedState(placed));
    } else {
        Vsp32f samples[kLongestMillisecond] = {};
        for (Vsp32s i = 0; i < count; i++) samples[i] = block[i];
        vspsToneDetect_EC_32f(samples, count, &reported, floatState(placed));
    }
    bool isConstant = true;
    for (Vsp32s i = 1; i < count; i++) isConstant &= block[i] == block[0];
    constant_ = isConstant ? constant_ + 1 : 0;
    if (constant_ >= kForget) begin(placed);
    return reported != 0;
}

void* ReversalDetector::place(void* state) {
    char* const bytes = static_cast<char*>(state);
    const Vsp32s offset = toAlignment(state);
    if (offset != offset_) {
        memmove(bytes + offset, bytes + offset_, size_t(stateBytes(rate_, fixedPoint_)) - kAlignment);
        offset_ = offset;
    }
    return bytes + offset;
}

void ReversalDetector::begin(void* state) {
    constant_ = 0;
    fixedPoint_ ? vspsToneDetectInit_EC_16s(fixedState(state), rate_) : vspsToneDetectInit_EC_32f(floatState(state), rate_);
}

}  // namespace vspv
