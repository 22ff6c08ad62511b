#include "plot/waveform_plot.h"

#include <algorithm>
#include <cmath>
#include <sstream>

std::string waveformData(const Samples& x) {
    constexpr std::size_t kColumns = 2400;  // two for each pixel
    const std::size_t stretch = std::max<std::size_t>(1, x.size() / kColumns);
    std::ostringstream data;
    for (std::size_t i = 0; i < x.size(); i += stretch) {
        const auto begin = x.begin() + std::ptrdiff_t(i);
        const auto [low, high] = std::minmax_element(begin, begin + std::ptrdiff_t(std::min(stretch, x.size() - i)));
        data << double(i) / kRate << ' ' << *low / 32768.0 << ' ' << *high / 32768.0 << '\n';
    }
    return data.str();
}

double waveformHeight(const Samples& x) {
    double peak = 0;
    for (const std::int16_t sample : x) peak = std::max(peak, std::abs(double(sample)));
    return std::max(0.1, std::ceil(10.5 * peak / 32768) / 10);
}

std::string waveformCurves(const std::string& name, const char* fill, const char* outline) {
    const std::string line = "$" + name + " using 1:",
                      style = " with lines lw 0.5 lc rgb '" + std::string(outline) + "' notitle";
    return line + "2:3 with filledcurves lc rgb '" + fill + "' title 'waveform', \\\n  " + line + "2" + style + ", \\\n  " +
           line + "3" + style;
}
