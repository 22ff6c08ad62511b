#include "level_plot.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <sstream>

#include "active_level.h"

namespace {

constexpr std::size_t kPoints = 600;  // about as many as the picture can show
constexpr std::size_t kChannels = 8;  // more do not fit a picture
constexpr double kLowest = -90;       // dBov, for digital silence

// One line for every stretch of frames: time, level before and after, gain.
std::string dataBlock(const GainTrace& trace, const std::string& name) {
    const std::size_t stretch = std::max<std::size_t>(1, trace.size() / kPoints);
    std::ostringstream data;
    data << '$' << name << " << EOD\n";
    for (std::size_t i = 0; i < trace.size(); i += stretch) {
        const std::size_t count = std::min(stretch, trace.size() - i);
        double in = 0, out = 0;
        for (std::size_t j = i; j < i + count; j++) {
            in += trace[j].inPower / double(count);
            out += trace[j].outPower / double(count);
        }
        data << double((i + count) * kFrame) / kRate << ' ' << std::max(kLowest, toDbov(in)) << ' '
             << std::max(kLowest, toDbov(out)) << ' ' << 20 * std::log10(trace[i + count - 1].gain) << '\n';
    }
    data << "EOD\n";
    return data.str();
}

std::string levelPanel(const std::string& data, double target) {
    std::ostringstream panel;
    panel << "set ylabel 'level, dBov'\nset yrange [-80:0]\nset ytics 20\nset mytics 2\n"
          << "plot $" << data << " using 1:2 with filledcurves y=-90 lc rgb '#c9d3dc' title 'input', \\\n"
          << "  $" << data << " using 1:3 with lines lw 1.6 lc rgb '#0b62a4' title 'output', \\\n"
          << "  " << -target << " with lines lw 1.2 dt 2 lc rgb '#c0392b' title 'target'\n";
    return panel.str();
}

std::string gainPanel(const std::string& data, double maxGain) {
    std::ostringstream panel;
    panel << "set ylabel 'gain, dB'\nset yrange [-35:" << std::max(10.0, 5 * std::ceil((maxGain + 2) / 5))
          << "]\nset ytics 10\nset mytics 2\n"
          << "plot 0 with lines lw 1 lc rgb '#888888' notitle, \\\n"
          << "  " << maxGain << " with lines lw 1.2 dt 2 lc rgb '#c0392b' title 'maximum', \\\n"
          << "  $" << data << " using 1:4 with lines lw 1.8 lc rgb '#1e8449' title 'gain'\n";
    return panel.str();
}

}  // namespace

std::string drawLevels(const Gnuplot& gnuplot, const std::string& title, const std::vector<GainTrace>& channels,
                       const LevelSettings& settings) {
    const std::size_t count = std::min(channels.size(), kChannels);
    if (count < channels.size()) std::cerr << "vsps: the plot shows the first " << kChannels << " channels\n";
    std::ostringstream commands;
    commands << "set datafile missing 'nan'\nset grid xtics ytics lc rgb '#dddddd'\nset border 3 lc rgb '#555555'\n"
             << "set tics nomirror out\nset key top right horizontal\nset lmargin 9\nset rmargin 3\n"
             << "set xrange [0:" << double(channels.front().size() * kFrame) / kRate << "]\n";
    for (std::size_t i = 0; i < count; i++) commands << dataBlock(channels[i], "channel" + std::to_string(i));
    commands << "set multiplot layout " << 2 * count << ",1 title " << quoted(title) << " noenhanced\n";
    for (std::size_t i = 0; i < count; i++) {
        const std::string data = "channel" + std::to_string(i);
        if (channels.size() > 1) commands << "set title 'channel " << i + 1 << "'\n";
        commands << "unset xlabel\n" << levelPanel(data, settings.target);
        commands << "unset title\nset xlabel 'time, s'\n" << gainPanel(data, settings.maxGain);
    }
    commands << "unset multiplot\n";
    return gnuplot.draw(commands.str(), 1200, 60 + 640 * static_cast<int>(count));
}
