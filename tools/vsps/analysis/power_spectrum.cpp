#include "analysis/power_spectrum.h"

#include <cmath>
#include <numbers>

namespace {

VspSubbandProcessState_32f* stateIn(std::vector<std::uint8_t>& memory) {
    return reinterpret_cast<VspSubbandProcessState_32f*>(memory.data());
}

}  // namespace

PowerSpectrum::PowerSpectrum(int order) : order_(order), input_(step()), power_(bins()), bands_(bins()) {
    const int length = 1 << order;
    Vsp32s stateBytes = 0, initBytes = 0, workBytes = 0;
    vspsSubbandProcessGetSize_32f(order, length, &stateBytes, &initBytes, &workBytes);
    state_.resize(std::size_t(stateBytes));
    work_.resize(std::size_t(workBytes));
    std::vector<std::uint8_t> init(std::size_t(initBytes) + 1);
    std::vector<float> window;  // the mean of its values is 1/2, and a sine has half of its amplitude at either frequency
    for (int i = 0; i < length; i++)
        window.push_back(float((1 - std::cos(2 * std::numbers::pi * (i + 0.5) / length)) * std::numbers::sqrt2 / length));
    vspsSubbandProcessInit_32f(stateIn(state_), order, Vsp32s(step()), length, window.data(), init.data());
}

const std::vector<float>& PowerSpectrum::process(std::span<const std::int16_t> samples) {
    for (std::size_t i = 0; i < input_.size(); i++) input_[i] = float(samples[i]) / 32768;
    vspsSubbandAnalysis_32f32fc(input_.data(), bands_.data(), stateIn(state_), work_.data());
    for (std::size_t k = 0; k < power_.size(); k++) power_[k] = bands_[k].re * bands_[k].re + bands_[k].im * bands_[k].im;
    return power_;
}
