#include "simulate_echo/echo_path.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>

#include "audio/extension.h"
#include "audio/input_options.h"
#include "audio/resampler.h"
#include "console/error.h"
#include "simulate_echo/g168_paths.h"

namespace {

constexpr double kLongest = 4;  // s; a longer file is taken for a mistake

bool isSeparator(char c) { return std::strchr(" \t\r\n,;", c) != nullptr && c != '\0'; }

// Numbers between blanks, line ends, commas or semicolons; # begins a comment.
std::vector<double> readNumbers(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    std::vector<double> numbers;
    std::size_t line = 1;
    for (std::string text; std::getline(in, text); line++) {
        text.erase(std::min(text.find('#'), text.size()));
        for (auto at = text.begin(); (at = std::find_if_not(at, text.end(), isSeparator)) != text.end();) {
            const auto end = std::find_if(at, text.end(), isSeparator);
            double value = 0;
            const auto [stop, error] = std::from_chars(&*at, &*at + (end - at), value);
            if (error != std::errc() || stop != &*at + (end - at) || !std::isfinite(value))
                throw FileError(file, "line " + std::to_string(line) + ": '" + std::string(at, end) + "' is no number");
            numbers.push_back(value);
            at = end;
        }
    }
    if (in.bad() || !in.eof()) throw FileError(file, "cannot be read");
    return numbers;
}

// The same echo at another rate.
std::vector<double> resampled(const std::vector<double>& response, int rate) {
    if (rate == kRate) return response;
    Resampler resampler(kRate, rate, 1);
    std::vector<double> result;
    const auto append = [&](const std::vector<float>& taps) {
        for (const float tap : taps) result.push_back(double(tap) * kRate / rate);
    };
    append(resampler.process(std::vector<float>(response.begin(), response.end())));
    append(resampler.finish());
    return result;
}

void readFile(const std::string& file, int rate, EchoPath& path) {
    std::error_code error;
    if (!std::filesystem::exists(file, error)) throw FileError(file, "is neither an echo path from d2 to d9 nor a file");
    const std::string extension = extensionOf(file);
    if (extension == ".txt" || extension == ".csv") {
        path.response = resampled(readNumbers(file), rate);
    } else {
        AudioReader in = openOneChannel(file, {});
        in.convertTo(rate);
        for (Block block; double(path.response.size()) <= kLongest * rate && in.read(kBlockLength, block);)
            path.response.insert(path.response.end(), block[0].begin(), block[0].end());
        path.notes = in.notes();
    }
    if (double(path.response.size()) > kLongest * rate) throw FileError(file, "too long for an echo path: more than 4 s");
}

}  // namespace

EchoPath loadEchoPath(const std::string& nameOrFile, double echoReturnLoss, int rate) {
    EchoPath path{nameOrFile, {}, {}};
    double scale = std::pow(10, -echoReturnLoss / 20);
    const auto models = g168Paths();
    const auto model = std::find_if(models.begin(), models.end(), [&](const G168Path& m) { return nameOrFile == m.name; });
    if (model != models.end()) {
        path.response = resampled({model->taps.begin(), model->taps.end()}, rate);
        scale *= model->k;
    } else {
        readFile(nameOrFile, rate, path);
        const auto& h = path.response;
        const double energy = std::inner_product(h.begin(), h.end(), h.begin(), 0.0);
        if (!std::isnormal(energy)) throw FileError(nameOrFile, "an impulse response without energy or out of range");
        scale /= std::sqrt(energy);
    }
    for (double& tap : path.response) tap *= scale;
    return path;
}
