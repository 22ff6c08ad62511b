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
#include "audio/recording.h"
#include "console/error.h"
#include "console/progress.h"
#include "simulate_echo/g168_paths.h"

namespace {

constexpr std::size_t kLongest = 4 * kRate;  // samples; a longer file is taken for a mistake

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

void readFile(const std::string& file, EchoPath& path) {
    std::error_code error;
    if (!std::filesystem::exists(file, error)) throw FileError(file, "is neither an echo path from d2 to d9 nor a file");
    const std::string extension = extensionOf(file);
    if (extension == ".txt" || extension == ".csv") {
        path.response = readNumbers(file);
    } else {
        const Recording recording = readRecording(AudioReader({file}));
        if (recording.channels.size() > 1)
            throw FileError(file, "has " + std::to_string(recording.channels.size()) + " channels; an echo path has one");
        path.response.assign(recording.channels[0].begin(), recording.channels[0].end());
        path.notes = recording.notes;
    }
    if (path.response.size() > kLongest) throw FileError(file, "too long for an echo path: more than 4 s");
}

}  // namespace

EchoPath loadEchoPath(const std::string& nameOrFile, double echoReturnLoss) {
    EchoPath path{nameOrFile, {}, {}};
    double scale = std::pow(10, -echoReturnLoss / 20);
    const auto models = g168Paths();
    const auto model = std::find_if(models.begin(), models.end(), [&](const G168Path& m) { return nameOrFile == m.name; });
    if (model != models.end()) {
        path.response.assign(model->taps.begin(), model->taps.end());
        scale *= model->k;
    } else {
        readFile(nameOrFile, path);
        const auto& h = path.response;
        const double energy = std::inner_product(h.begin(), h.end(), h.begin(), 0.0);
        if (!std::isnormal(energy)) throw FileError(nameOrFile, "an impulse response without energy or out of range");
        scale /= std::sqrt(energy);
    }
    for (double& tap : path.response) tap *= scale;
    return path;
}

std::vector<double> echoOf(const std::vector<double>& x, const EchoPath& path, std::size_t delay) {
    constexpr std::size_t kBlock = 4096;
    std::vector<double> echo(x.size());
    Progress progress("making the echo", x.size());
    for (std::size_t begin = 0; begin < x.size(); begin += kBlock) {
        const std::size_t end = std::min(begin + kBlock, x.size());
        for (std::size_t k = 0; k < path.response.size() && k + delay < end; k++) {
            const double tap = path.response[k];
            for (std::size_t n = std::max(begin, k + delay); n < end; n++) echo[n] += tap * x[n - k - delay];
        }
        progress.advance(end - begin);
    }
    return echo;
}
