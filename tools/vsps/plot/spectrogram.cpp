#include "plot/spectrogram.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace {

constexpr double kDarkest = -100, kBrightest = -20;  // dB of overload
constexpr std::size_t kRows = 128;                   // at most

}  // namespace

void Spectrogram::Column::operator+=(const Column& next) {
    for (std::size_t k = 0; k < power.size(); k++) power[k] += next.power[k];
}

void Spectrogram::add(std::span<const float> power) { columns_.add({{power.begin(), power.end()}}); }

std::string Spectrogram::data() const {
    const std::vector<Column>& columns = columns_.points();
    const std::size_t stretch = std::max<std::size_t>(1, bins() / kRows);
    std::ostringstream data;
    data.precision(3);
    for (std::size_t k = 0; k < bins(); k += stretch) {
        for (std::size_t i = 0; i < columns.size(); i++) {
            const std::size_t steps = std::min(columns_.unitsPerPoint(), columns_.units() - i * columns_.unitsPerPoint());
            double power = 0;
            for (std::size_t j = k; j < k + stretch; j++) power += double(columns[i].power[j]);
            data << std::clamp(10 * std::log10(power / double(steps) + 1e-12), kDarkest, kBrightest) << ' ';
        }
        data << '\n';
    }
    return data.str();
}

std::string Spectrogram::image(const std::string& name, double stepSeconds, int rate) const {
    std::ostringstream curve;
    curve << '$' << name << " matrix using (($1+0.5)*" << double(columns_.unitsPerPoint()) * stepSeconds << "):(($2+0.5)*"
          << rate / 2000.0 / double(std::min(bins(), kRows)) << "):3 with image notitle";
    return curve.str();
}

std::string spectrogramAxes(int rate) {
    std::ostringstream commands;
    commands << "set ylabel 'frequency, kHz'\nset yrange [0:" << rate / 2000.0 << "]\nset cbrange [" << kDarkest << ':'
             << kBrightest
             << "]\nset cblabel 'dBov in a band'\nset palette defined (0 '#0b1026', 1 '#4b2a8c', 2 '#c0392b', 3 "
                "'#f6c453', 4 '#fffbe6')\n";
    return commands.str();
}
