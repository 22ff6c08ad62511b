// The picture of a run of vsps vad.
#pragma once

#include "plot/gnuplot.h"
#include "plot/waveform_plot.h"
#include "vad/vad_report.h"

constexpr std::size_t kPlottedChannels = 8;  // more do not fit a picture

// What is drawn of a channel, gathered block by block.
class ActivityCurves {
  public:
    struct Ratio {
        double highest, reference;  // dB; of the first frame

        void operator+=(const Ratio& next) { highest = highest > next.highest ? highest : next.highest; }
    };

    void add(std::span<const std::int16_t> samples) { waveform_.add(samples); }
    void add(const VspvSpeechDecision& frame) { ratios_.add({frame.snr, frame.reference}); }

    const WaveformOutline& waveform() const { return waveform_; }
    const BoundedTrace<Ratio>& ratios() const { return ratios_; }

  private:
    WaveformOutline waveform_;
    BoundedTrace<Ratio> ratios_{6000};
};

// For every channel the waveform with the speech shaded, and below it the detector's signal-to-noise ratio if it tells
// one. Returns the bytes of the picture.
std::string drawActivity(const Gnuplot& gnuplot, const VadReport& report, const std::vector<ActivityCurves>& channels);
