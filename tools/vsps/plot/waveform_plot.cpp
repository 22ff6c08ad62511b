#include "plot/waveform_plot.h"

#include <algorithm>
#include <cmath>
#include <sstream>

void WaveformOutline::Extremes::operator+=(const Extremes& next) {
    low = std::min(low, next.low);
    high = std::max(high, next.high);
}

void WaveformOutline::add(std::span<const std::int16_t> samples) {
    for (const std::int16_t x : samples) extremes_.add({x, x});
}

std::string WaveformOutline::data(int rate) const {
    std::ostringstream data;
    for (std::size_t i = 0; i < extremes_.points().size(); i++) {
        const Extremes& e = extremes_.points()[i];
        data << double(i * extremes_.unitsPerPoint()) / rate << ' ' << e.low / 32768.0 << ' ' << e.high / 32768.0 << '\n';
    }
    return data.str();
}

double WaveformOutline::height() const {
    int peak = 0;
    for (const Extremes& e : extremes_.points()) peak = std::max({peak, int(e.high), -int(e.low)});
    return std::max(0.1, std::ceil(10.5 * peak / 32768) / 10);
}

std::string waveformCurves(const std::string& name, const char* fill, const char* outline) {
    const std::string line = "$" + name + " using 1:",
                      style = " with lines lw 0.5 lc rgb '" + std::string(outline) + "' notitle";
    return line + "2:3 with filledcurves lc rgb '" + fill + "' title 'waveform', \\\n  " + line + "2" + style + ", \\\n  " +
           line + "3" + style;
}
