#include "vad/vad_plot.h"

#include <algorithm>
#include <sstream>

#include "console/standard_streams.h"

namespace {

constexpr double kLowest = -10, kHighest = 60;  // dB

// Start and end of the speech; outside the picture if there is none, so that there is something to draw.
std::string speechData(const std::vector<Segment>& segments) {
    std::ostringstream data;
    for (const Segment& s : segments) data << s.start << ' ' << s.end << '\n';
    if (segments.empty()) data << "-2 -1\n";
    return data.str();
}

// Time, highest ratio in a stretch of frames, reference.
std::string ratioData(const BoundedTrace<ActivityCurves::Ratio>& ratios) {
    const std::size_t stretch = ratios.unitsPerPoint();
    std::ostringstream data;
    for (std::size_t i = 0; i < ratios.points().size(); i++) {
        const std::size_t begin = i * stretch, end = std::min(begin + stretch, ratios.units());
        const ActivityCurves::Ratio& r = ratios.points()[i];
        data << double(begin + end) / 2 * kActivityFrameSeconds << ' ' << std::max(kLowest, r.highest) << ' ' << r.reference
             << '\n';
    }
    return data.str();
}

std::string shading(const std::string& number, double low, double high) {
    std::ostringstream curve;
    curve << "$speech" << number << " using 1:(0):1:2:(" << low << "):(" << high
          << ") with boxxyerror fs solid noborder lc rgb '#cdebd3' title 'speech', \\\n  ";
    return curve.str();
}

std::string waveformPanel(const std::string& number, double height) {
    std::ostringstream panel;
    panel << "set ylabel 'amplitude, full scale = 1'\nset yrange [" << -height << ':' << height
          << "]\nset ytics autofreq\nplot " << shading(number, -height, height)
          << waveformCurves("waveform" + number, "#8da2b5", "#7288a0") << '\n';
    return panel.str();
}

std::string ratioPanel(const std::string& number, int option) {
    std::ostringstream panel;
    panel << "set ylabel 'signal to noise, dB'\nset yrange [" << kLowest << ':' << kHighest << "]\nset ytics 10\nplot "
          << shading(number, kLowest, kHighest) << "$ratios" << number
          << " using 1:2 with lines lw 1.4 lc rgb '#0b62a4' title 'in the frame', \\\n  $ratios" << number
          << " using 1:3 with lines lw 1.4 dt 2 lc rgb '#c0392b' title '" << (option == 1 ? "threshold" : "long-term")
          << "'\n";
    return panel.str();
}

}  // namespace

std::string drawActivity(const Gnuplot& gnuplot, const VadReport& report, const std::vector<ActivityCurves>& channels) {
    const bool wide = report.option == vspvSpeechWide;
    const std::size_t count = channels.size(), panels = wide ? 1 : 2;
    std::ostringstream commands;
    commands << kPlotStyle << "set lmargin 11\nset xrange [0:" << report.seconds << "]\n";
    for (std::size_t i = 0; i < count; i++) {
        const std::string number = std::to_string(i);
        commands << dataBlock("waveform" + number, channels[i].waveform().data(wide ? kWideActivityRate : kRate))
                 << dataBlock("speech" + number, speechData(report.channels[i].segments()))
                 << dataBlock("ratios" + number, ratioData(channels[i].ratios()));
    }
    commands << "set multiplot layout " << panels * count << ",1 title "
             << quoted("Speech in " + inputName(report.inFile) + ", " + detectorName(report.option)) << " noenhanced\n";
    for (std::size_t i = 0; i < count; i++) {
        if (report.channels.size() > 1) commands << "set title 'channel " << i + 1 << "' left offset 2,0\n";
        const std::string number = std::to_string(i), waveform = waveformPanel(number, channels[i].waveform().height());
        if (wide)
            commands << "set xlabel 'time, s'\n" << waveform;
        else
            commands << "unset xlabel\n"
                     << waveform << "unset title\nset xlabel 'time, s'\n"
                     << ratioPanel(number, report.option);
    }
    commands << "unset multiplot\n";
    return gnuplot.draw(commands.str(), 1400, 60 + 320 * static_cast<int>(panels * count));
}
