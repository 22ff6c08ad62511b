#include "pitch/pitch_plot.h"

#include <sstream>

namespace {

constexpr double kLeap = 1.25;  // ratio that no voice does from one point to the next

// Time and F0; an empty line leaves a gap where less than half is voiced or F0 leaps.
std::string contourData(const BoundedTrace<PitchCurves::Contour>& contour) {
    std::ostringstream data;
    double last = 0;
    for (std::size_t i = 0; i < contour.points().size(); i++) {
        const PitchCurves::Contour& c = contour.points()[i];
        const double middle = double(i * contour.unitsPerPoint()) + double(c.subframes) / 2;
        const bool voiced = 2 * c.voiced >= c.subframes;
        if (!voiced || c.f0 > kLeap * last || last > kLeap * c.f0) data << '\n';
        if (!voiced) continue;
        last = c.f0;
        data << middle * kPitchPointSeconds << ' ' << c.f0 << '\n';
    }
    return data.str();
}

std::string panel(const std::string& number, double height, bool anyVoiced) {
    std::ostringstream commands;
    commands << "set yrange [" << -height << ':' << height << "]\nplot "
             << waveformCurves("waveform" + number, "#c9d3dc", "#aab7c4");
    if (anyVoiced)
        commands << ", \\\n  $contour" << number
                 << " using 1:2 axes x1y2 with linespoints lw 1.4 pt 7 ps 0.25 lc rgb '#c0392b' title 'F0'";
    commands << '\n';
    return commands.str();
}

}  // namespace

void PitchCurves::Contour::operator+=(const Contour& next) {
    if (next.voiced > 0 && (voiced == 0 || next.predictionGain > predictionGain)) {
        f0 = next.f0;
        predictionGain = next.predictionGain;
    }
    subframes += next.subframes;
    voiced += next.voiced;
}

void PitchCurves::add(const VspvPitchPoint& point) { contour_.add({1, point.voiced != 0, point.f0, point.predictionGain}); }

std::string drawPitch(const Gnuplot& gnuplot, const std::string& title, double seconds,
                      const std::vector<PitchCurves>& channels) {
    const std::size_t count = channels.size();
    std::ostringstream commands;
    commands << kPlotStyle << "set border 11\nset lmargin 11\nset rmargin 9\nset xrange [0:" << seconds
             << "]\nset xlabel 'time, s'\nset ylabel 'amplitude, full scale = 1'\nset y2label 'F0, Hz'\n"
             << "set y2range [50:400]\nset y2tics 50\nset grid noytics y2tics\n";
    std::vector<std::string> contours;
    for (std::size_t i = 0; i < count; i++) {
        contours.push_back(contourData(channels[i].contour()));
        commands << dataBlock("waveform" + std::to_string(i), channels[i].waveform().data())
                 << dataBlock("contour" + std::to_string(i), contours[i]);
    }
    commands << "set multiplot layout " << count << ",1 title " << quoted(title) << " noenhanced\n";
    for (std::size_t i = 0; i < count; i++) {
        if (channels.size() > 1) commands << "set title 'channel " << i + 1 << "' left offset 2,0\n";
        const bool anyVoiced = contours[i].find_first_not_of('\n') != std::string::npos;
        commands << panel(std::to_string(i), channels[i].waveform().height(), anyVoiced);
    }
    commands << "unset multiplot\n";
    return gnuplot.draw(commands.str(), 1400, 60 + 480 * static_cast<int>(count));
}
