#include "denoise/denoise_plot.h"

#include <sstream>

void SignalSpectrogram::add(std::span<const std::int16_t> samples) {
    pending_.insert(pending_.end(), samples.begin(), samples.end());
    std::size_t used = 0;
    for (; pending_.size() - used >= step(); used += step())
        spectrogram_.add(spectrum_.process(std::span(pending_).subspan(used, step())));
    pending_.erase(pending_.begin(), pending_.begin() + std::ptrdiff_t(used));
}

void SignalSpectrogram::finish() {
    if (!pending_.empty()) add(Samples(step() - pending_.size()));
}

std::string drawDenoise(const Gnuplot& gnuplot, const std::string& title,
                        const std::vector<std::unique_ptr<DenoiseSpectrograms>>& channels, int rate) {
    const SignalSpectrogram& first = channels.front()->before;
    const double stepSeconds = double(first.step()) / rate;
    std::ostringstream data, panels;
    const auto panel = [&](std::size_t channel, const char* what, const SignalSpectrogram& signal) {
        const std::string number = std::to_string(channel + 1), name = what + number;
        data << dataBlock(name, signal.spectrogram().data());
        panels << "set title '" << (channels.size() > 1 ? "channel " + number + ", " : "") << what
               << "' left offset 2,-0.6\nplot " << signal.spectrogram().image(name, stepSeconds, rate) << '\n';
    };
    for (std::size_t i = 0; i < channels.size(); i++) {
        panels << "unset xlabel\n";
        panel(i, "before", channels[i]->before);
        panels << "set xlabel 'time, s'\n";
        panel(i, "after", channels[i]->after);
    }
    std::ostringstream commands;
    commands << kPlotStyle << "set lmargin at screen 0.07\nset rmargin at screen 0.87\n"
             << data.str() << "set multiplot layout " << 2 * channels.size() << ",1 title " << quoted(title)
             << " noenhanced\nset xrange [0:" << double(first.spectrogram().steps()) * stepSeconds << "]\n"
             << spectrogramAxes(rate) << panels.str() << "unset multiplot\n";
    return gnuplot.draw(commands.str(), 1400, 60 + 640 * static_cast<int>(channels.size()));
}
