#include "echo_scenario.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <stdexcept>

#include "audio/active_level.h"
#include "simulate_echo/g168_paths.h"

namespace echo {

namespace {

constexpr double kTailDecay = 40;   // dB over the length of the tail
constexpr double kTailLevel = -12;  // dB of the tail's energy relative to the hybrid's

std::vector<double> impulseResponse(const Path& path) {
    const auto delay = static_cast<std::size_t>(path.delayMs * kRate / 1000);
    const auto length = static_cast<std::size_t>(path.lengthMs * kRate / 1000);
    std::vector<double> h(std::max(length, delay + 1));
    double energy = 0;
    for (const G168Path& model : g168Paths())
        for (std::size_t i = 0; model.name == path.hybrid && i < model.taps.size() && delay + i < h.size(); i++) {
            h[delay + i] = model.taps[i] * model.k;
            energy += h[delay + i] * h[delay + i];
        }
    std::mt19937 random(7);
    std::normal_distribution<double> noise;
    const double decay = std::pow(10, -kTailDecay / 20 / static_cast<double>(h.size() - delay));
    std::vector<double> tail(h.size() - delay);
    double tailEnergy = 0, level = 1;
    for (double& value : tail) {
        value = level * noise(random);
        tailEnergy += value * value;
        level *= decay;
    }
    const double gain = energy > 0 ? std::sqrt(energy / tailEnergy * std::pow(10, kTailLevel / 10)) : 1;
    for (std::size_t i = 0; i < tail.size(); i++) h[delay + i] += gain * tail[i];
    return h;
}

Signal convolve(const Signal& x, const std::vector<double>& h) {
    constexpr std::size_t kBlock = 1024;  // of results that are summed at once
    Signal y(x.size());
    for (std::size_t begin = 0; begin < x.size(); begin += kBlock) {
        std::array<double, kBlock> sum{};
        const std::size_t end = std::min(begin + kBlock, x.size());
        for (std::size_t k = 0; k < h.size() && k < end; k++)
            for (std::size_t n = std::max(begin, k); n < end; n++) sum[n - begin] += h[k] * x[n - k];
        std::copy_n(sum.begin(), end - begin, y.begin() + static_cast<std::ptrdiff_t>(begin));
    }
    return y;
}

std::vector<std::int16_t> asIntegers(const Signal& x) {
    std::vector<std::int16_t> y(x.size());
    std::transform(x.begin(), x.end(), y.begin(),
                   [](float v) { return static_cast<std::int16_t>(std::clamp(std::lrint(v), -32768L, 32767L)); });
    return y;
}

}  // namespace

std::vector<Path> eightPaths() {
    return {{"d2", 0, 16, 6},   {"d3", 8, 32, 8},   {"d4", 16, 48, 10},  {"d5", 20, 64, 6},
            {"d6", 30, 80, 12}, {"d7", 40, 96, 10}, {"d8", 60, 112, 16}, {"d9", 70, 128, 20}};
}

Signal recordedSpeech(const std::vector<std::string>& files, double seconds) {
    Signal all;
    for (const std::string& name : files) {
        SF_INFO info{};
        SNDFILE* file = sf_open(name.c_str(), SFM_READ, &info);
        if (file == nullptr) throw std::runtime_error(name + ": " + sf_strerror(nullptr));
        std::vector<std::int16_t> samples(static_cast<std::size_t>(info.frames));
        const bool complete = info.channels == 1 && info.samplerate == kRate &&
                              sf_read_short(file, samples.data(), info.frames) == info.frames;
        sf_close(file);
        if (!complete) throw std::runtime_error(name + ": not one channel at 8000 Hz");
        all.insert(all.end(), samples.begin(), samples.end());
    }
    const auto length = static_cast<std::size_t>(seconds * kRate);
    if (all.empty()) throw std::runtime_error("no recordings");
    for (std::size_t i = all.size(), period = i; i < length; i++) all.push_back(all[i - period]);
    all.resize(length);
    return all;
}

Signal played(const Signal& x, Clipping clipping, double percent, double highPassHz) {
    const Loudspeaker loudspeaker(clipping, percent, activeDbov(x));
    const double share = 1 - std::exp(-2 * std::numbers::pi * highPassHz / kRate);
    double low = 0;
    Signal y(x.size());
    std::transform(x.begin(), x.end(), y.begin(), [&](float v) {
        low += share * (v - low);
        return static_cast<float>(loudspeaker.play(v - low));
    });
    return y;
}

double activeDbov(const Signal& x) {
    const auto level = activeLevel(asIntegers(x));
    if (!level) throw std::runtime_error("no speech in the recordings");
    return level->dbov;
}

void scale(Signal& x, double db) {
    const auto gain = static_cast<float>(std::pow(10, db / 20));
    for (float& v : x) v *= gain;
}

Signal whiteNoise(std::size_t length, double dbov, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<float> gauss;
    const auto level = static_cast<float>(32768 * std::pow(10, dbov / 20));
    Signal x(length);
    for (float& v : x) v = level * gauss(random);
    return x;
}

Scenario makeScenario(const Path& path, const Signal& far, const Signal& nearSpeech, double startOfNear, double endOfNear,
                      double nearDb, double noiseDbov) {
    Scenario s;
    s.far = far;
    s.echo = convolve(far, impulseResponse(path));
    scale(s.echo, -path.erl - decibels(power(s.echo.data(), s.echo.size()) / power(far.data(), far.size())));

    s.noise = whiteNoise(far.size(), noiseDbov);

    s.nearSpeech.assign(far.size(), 0);
    const auto start = static_cast<std::size_t>(startOfNear * kRate);
    const auto end = static_cast<std::size_t>(std::min(endOfNear * kRate, double(far.size())));
    if (start < end) {
        Signal speech(nearSpeech.begin(), nearSpeech.begin() + static_cast<std::ptrdiff_t>(end - start));
        scale(speech, activeDbov(far) - activeDbov(speech) + nearDb);
        std::copy(speech.begin(), speech.end(), s.nearSpeech.begin() + static_cast<std::ptrdiff_t>(start));
    }
    s.near.resize(far.size());
    for (std::size_t n = 0; n < far.size(); n++) {
        s.near[n] = std::clamp(std::rint(s.echo[n] + s.noise[n] + s.nearSpeech[n]), -32768.0f, 32767.0f);
        s.noise[n] = s.near[n] - s.echo[n] - s.nearSpeech[n];  // with the rounding
    }
    return s;
}

double power(const float* x, std::size_t count) {
    double sum = 0;
    for (std::size_t i = 0; i < count; i++) sum += double(x[i]) * x[i];
    return sum / static_cast<double>(count);
}

double decibels(double ratio) { return 10 * std::log10(ratio); }

}  // namespace echo
