#include "noise_scenario.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <stdexcept>

namespace noise {

namespace {

using echo::kRate;

constexpr double kLevel = -26;                                   // dBov
constexpr std::size_t kLongest = 1'000'000, kShortest = 64'000;  // bytes of a file

// The prompts of some seconds, in the order of their names.
std::vector<std::string> prompts(const std::string& folder) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".wav") continue;
        const auto size = std::filesystem::file_size(entry.path());
        if (size >= kShortest && size <= kLongest) files.push_back(entry.path().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

// Takes files off the list until they last so many samples.
Signal joined(std::vector<std::string>& files, std::size_t length) {
    Signal all;
    while (all.size() < length) {
        if (files.empty()) throw std::runtime_error("too few prompts");
        const Signal next =
            echo::recordedSpeech({files.front()}, double(std::filesystem::file_size(files.front()) - 44) / 2 / kRate);
        files.erase(files.begin());
        all.resize(all.size() + kRate / 2);
        all.insert(all.end(), next.begin(), next.end());
    }
    all.resize(length);
    echo::scale(all, kLevel - echo::activeDbov(all));
    return all;
}

}  // namespace

Voices recordedVoices(const std::vector<std::string>& folders, double seconds) {
    constexpr std::size_t kBabble = 8;
    const auto length = static_cast<std::size_t>(seconds * kRate);
    Voices voices;
    std::vector<std::vector<std::string>> files;
    for (const std::string& folder : folders) files.push_back(prompts(folder));
    for (auto& list : files) voices.talkers.push_back(joined(list, length));
    for (std::size_t i = 0; i < kBabble; i++) {
        Signal other = joined(files[i % files.size()], length);
        std::rotate(other.begin(), other.begin() + static_cast<std::ptrdiff_t>((i + 1) * length / (kBabble + 1)),
                    other.end());
        voices.others.push_back(std::move(other));
    }
    return voices;
}

Signal makeNoise(const std::string& kind, std::size_t length, const Voices& voices) {
    Signal x = echo::whiteNoise(length, -30);
    if (kind == "pink") {  // poles and zeros that alternate along the frequency axis
        constexpr double kPoles[] = {0.99765, 0.963, 0.57}, kWeights[] = {0.099046, 0.2965164, 1.0526913};
        double low[3] = {};
        for (float& v : x) {
            double sum = 0.1848 * v;
            for (int i = 0; i < 3; i++) sum += low[i] = kPoles[i] * low[i] + kWeights[i] * v;
            v = static_cast<float>(sum);
        }
    } else if (kind == "babble") {
        std::fill(x.begin(), x.end(), 0.0f);
        for (const Signal& voice : voices.others)
            for (std::size_t n = 0; n < length; n++) x[n] += voice[n];
    } else if (kind == "hum") {
        for (std::size_t n = 0; n < length; n++) {
            double sum = 0;
            for (int h = 1; h <= 12; h++)
                sum += std::sin(2 * std::numbers::pi * 50 * h * double(n) / kRate + 0.7 * h * h) / h;
            x[n] = static_cast<float>(sum);
        }
    } else if (kind == "changing") {
        for (std::size_t n = 0; n < length; n++) x[n] *= n / (4 * kRate) % 2 == 1 ? 1.78f : 0.56f;
    }
    echo::scale(x, -echo::decibels(echo::power(x.data(), length)));
    return x;
}

Signal mix(const Signal& speech, const Signal& noise, double snr) {
    const double level = echo::activeDbov(speech) - snr;
    const auto gain = static_cast<float>(32768 * std::pow(10, level / 20));
    Signal sum(speech.size());
    for (std::size_t n = 0; n < sum.size(); n++)
        sum[n] = std::clamp(std::rint(speech[n] + gain * noise[n]), -32768.0f, 32767.0f);
    return sum;
}

}  // namespace noise
