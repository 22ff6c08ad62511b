#include "simulate_echo/simulation.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace {

std::int16_t toPcm(double x) { return static_cast<std::int16_t>(std::clamp(std::nearbyint(x), -32768.0, 32767.0)); }

}  // namespace

NoiseSource::NoiseSource(const NoiseSettings& settings)
    : source_(settings.seed), amplitude_(32768 * std::pow(10, settings.level / 20)) {}

// Box and Muller.
double NoiseSource::next() {
    const auto uniform = [&] { return (double(source_() >> 11) + 0.5) * 0x1p-53; };
    const double radius = std::sqrt(-2 * std::log(uniform()));
    return amplitude_ * radius * std::cos(2 * std::numbers::pi * uniform());
}

EchoFilter::EchoFilter(std::vector<double> response, std::size_t delay)
    : response_(std::move(response)), past_(response_.size() + delay), history_(past_) {}

const std::vector<double>& EchoFilter::process(std::span<const double> far) {
    history_.insert(history_.end(), far.begin(), far.end());
    echo_.assign(far.size(), 0);
    const std::size_t delay = past_ - response_.size();
    for (std::size_t k = 0; k < response_.size(); k++) {
        const double tap = response_[k];
        const double* x = history_.data() + past_ - k - delay;
        for (std::size_t n = 0; n < far.size(); n++) echo_[n] += tap * x[n];
    }
    history_.erase(history_.begin(), history_.begin() + std::ptrdiff_t(far.size()));
    return echo_;
}

LineSimulation::LineSimulation(const EchoFilter& filter, const std::optional<NoiseSettings>& noise,
                               const std::optional<Loudspeaker>& loudspeaker)
    : filter_(filter), loudspeaker_(loudspeaker) {
    if (noise) source_.emplace(*noise);
}

void LineSimulation::process(const Samples& far, const Samples& near) {
    sound_.assign(far.begin(), far.end());
    if (loudspeaker_)
        for (double& x : sound_) x = loudspeaker_->play(x);
    const std::vector<double>& echo = filter_.process(sound_);
    echo_.clear();
    noise_.clear();
    out_.clear();
    for (std::size_t i = 0; i < far.size(); i++) {
        const double noise = source_ ? source_->next() : 0, sum = near[i] + echo[i] + noise;
        echo_.push_back(toPcm(echo[i]));
        noise_.push_back(toPcm(noise));
        out_.push_back(toPcm(sum));
        farEnergy_ += double(far[i]) * far[i];
        echoEnergy_ += echo[i] * echo[i];
        clipped_ += std::nearbyint(sum) < -32768 || std::nearbyint(sum) > 32767;
    }
}
