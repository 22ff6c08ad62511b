#include "voice/double_weighted_speech.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr std::size_t kSubframe = 40, kSubframes = kAmrFrame / kSubframe;
constexpr std::size_t kFrameBegin = kLpWindow - kAmrLookAhead - kAmrFrame;

std::int16_t toInt16(double x) { return static_cast<std::int16_t>(std::clamp(std::nearbyint(x), -32768.0, 32767.0)); }

Lsf mapped(Lsf values, double (*function)(double)) {
    std::transform(values.begin(), values.end(), values.begin(), function);
    return values;
}

Lsf flatSpectrum() {
    Lsf lsf;
    for (std::size_t i = 0; i < kLpOrder; i++) lsf[i] = std::numbers::pi * double(i + 1) / double(kLpOrder + 1);
    return lsf;
}

}  // namespace

AmrFrame AmrPreProcessing::process(const AmrFrame& speech) {
    AmrFrame result;
    for (std::size_t i = 0; i < kAmrFrame; i++) {
        const double x = speech[i] & ~7;
        const double y = (1899 * x - 3798 * in_[0] + 1899 * in_[1] + 7807 * out_[0] - 3733 * out_[1]) / 4096;
        in_ = {x, in_[0]};
        out_ = {y, out_[0]};
        result[i] = toInt16(y);
    }
    return result;
}

AmrWeighting::AmrWeighting() : lsp_(mapped(flatSpectrum(), std::cos)), weighted_{} {}

AmrFrame AmrWeighting::process(const AmrFrame& speech) {
    std::shift_left(window_.begin(), window_.end(), kAmrFrame);
    std::copy(speech.begin(), speech.end(), window_.end() - kAmrFrame);
    const std::optional<Lsf> lsf = toLsf(predict(window_).filter);
    const Lsf next = lsf ? mapped(*lsf, std::cos) : lsp_;

    AmrFrame result;
    for (std::size_t subframe = 0; subframe < kSubframes; subframe++) {
        const double part = double(subframe + 1) / kSubframes;
        Lsf lsp;
        for (std::size_t i = 0; i < kLpOrder; i++) lsp[i] = (1 - part) * lsp_[i] + part * next[i];
        const LpFilter filter = toFilter(mapped(lsp, std::acos));
        const LpFilter zeros = expandBandwidth(filter, 0.94), poles = expandBandwidth(filter, 0.6);
        std::shift_left(weighted_.begin(), weighted_.end(), kSubframe);
        for (std::size_t n = 0; n < kSubframe; n++) {
            const double* x = window_.data() + kFrameBegin + subframe * kSubframe + n;
            double* y = weighted_.data() + kLpOrder + n;
            *y = *x;
            for (std::ptrdiff_t j = 1; j <= std::ptrdiff_t(kLpOrder); j++)
                *y += zeros[std::size_t(j)] * x[-j] - poles[std::size_t(j)] * y[-j];
            result[subframe * kSubframe + n] = toInt16(*y);
        }
    }
    lsp_ = next;
    return result;
}
