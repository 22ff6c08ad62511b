#include "tone/reversal_detector.h"

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>

namespace {

constexpr std::size_t kForget = 50;  // ms

void check(VspStatus status) {
    if (status != vspStsNoErr) throw std::logic_error("tone detection: status " + std::to_string(status));
}

VspToneDetectState_EC_16s* fixedState(std::vector<Vsp64f>& memory) {
    return reinterpret_cast<VspToneDetectState_EC_16s*>(memory.data());
}

VspToneDetectState_EC_32f* floatState(std::vector<Vsp64f>& memory) {
    return reinterpret_cast<VspToneDetectState_EC_32f*>(memory.data());
}

}  // namespace

ReversalDetector::ReversalDetector(int rate, bool fixedPoint) : rate_(rate), fixedPoint_(fixedPoint) {
    Vsp32s size = 0;
    check(fixedPoint ? vspsToneDetectGetStateSize_EC_16s(rate, &size) : vspsToneDetectGetStateSize_EC_32f(rate, &size));
    state_.resize((static_cast<std::size_t>(size) + sizeof(Vsp64f) - 1) / sizeof(Vsp64f));
    begin();
}

void ReversalDetector::begin() {
    check(fixedPoint_ ? vspsToneDetectInit_EC_16s(fixedState(state_), rate_)
                      : vspsToneDetectInit_EC_32f(floatState(state_), rate_));
}

bool ReversalDetector::detect(std::span<const std::int16_t> block) {
    const auto count = static_cast<Vsp32s>(block.size());
    Vsp32s reported = 0;
    if (fixedPoint_) {
        check(vspsToneDetect_EC_16s(block.data(), count, &reported, fixedState(state_)));
    } else {
        const std::vector<Vsp32f> samples(block.begin(), block.end());
        check(vspsToneDetect_EC_32f(samples.data(), count, &reported, floatState(state_)));
    }
    const bool isConstant = std::adjacent_find(block.begin(), block.end(), std::not_equal_to<>()) == block.end();
    constant_ = isConstant ? constant_ + 1 : 0;
    if (constant_ >= kForget) begin();
    return reported != 0;
}
