#include "pitch/pitch_plot.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <sstream>

#include "plot/waveform_plot.h"

namespace {

constexpr std::size_t kMostPoints = 6000;  // of the contour
constexpr std::size_t kChannels = 8;       // more do not fit a picture
constexpr double kLeap = 1.25;             // ratio that no voice does from one point to the next
constexpr double kSubframeSeconds = 0.005;

// Time and F0; an empty line leaves a gap where it is not voiced or leaps. In long recordings a point is the median of the
// voiced subframes in a stretch, if they are at least half of it.
std::string contourData(const PitchTrack& track) {
    const std::size_t stretch = track.size() / kMostPoints + 1;
    std::ostringstream data;
    std::vector<double> f0;
    double last = 0;
    for (std::size_t i = 0; i < track.size(); i += stretch) {
        const std::size_t end = std::min(i + stretch, track.size());
        f0.clear();
        for (std::size_t j = i; j < end; j++)
            if (track[j].voiced()) f0.push_back(track[j].f0());
        if (2 * f0.size() < end - i) {
            data << '\n';
            continue;
        }
        const auto median = f0.begin() + std::ptrdiff_t(f0.size() / 2);
        std::nth_element(f0.begin(), median, f0.end());
        if (*median > kLeap * last || last > kLeap * *median) data << '\n';
        last = *median;
        data << double(i + end) / 2 * kSubframeSeconds << ' ' << *median << '\n';
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

std::string drawPitch(const Gnuplot& gnuplot, const std::string& title, const std::vector<Samples>& channels,
                      const std::vector<PitchTrack>& tracks) {
    const std::size_t count = std::min(channels.size(), kChannels);
    if (count < channels.size()) std::cerr << "vsps: the plot shows the first " << kChannels << " channels\n";
    std::ostringstream commands;
    commands << kPlotStyle
             << "set border 11\nset lmargin 11\nset rmargin 9\nset xrange [0:" << double(channels.front().size()) / kRate
             << "]\nset xlabel 'time, s'\nset ylabel 'amplitude, full scale = 1'\nset y2label 'F0, Hz'\n"
             << "set y2range [50:400]\nset y2tics 50\nset grid noytics y2tics\n";
    for (std::size_t i = 0; i < count; i++)
        commands << dataBlock("waveform" + std::to_string(i), waveformData(channels[i]))
                 << dataBlock("contour" + std::to_string(i), contourData(tracks[i]));
    commands << "set multiplot layout " << count << ",1 title " << quoted(title) << " noenhanced\n";
    for (std::size_t i = 0; i < count; i++) {
        if (channels.size() > 1) commands << "set title 'channel " << i + 1 << "' left offset 2,0\n";
        const bool anyVoiced =
            std::any_of(tracks[i].begin(), tracks[i].end(), [](const PitchPoint& p) { return p.voiced(); });
        commands << panel(std::to_string(i), waveformHeight(channels[i]), anyVoiced);
    }
    commands << "unset multiplot\n";
    return gnuplot.draw(commands.str(), 1400, 60 + 480 * static_cast<int>(count));
}
