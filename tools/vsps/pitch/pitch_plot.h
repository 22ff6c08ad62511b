// The picture of a run of vsps pitch.
#pragma once

#include "pitch/pitch_track.h"
#include "plot/gnuplot.h"
#include "plot/waveform_plot.h"

constexpr std::size_t kPlottedPitches = 8;  // more do not fit a picture

// What is drawn of a channel, gathered block by block.
class PitchCurves {
  public:
    // Of a stretch of subframes: the F0 of the voiced one that is predicted best.
    struct Contour {
        std::size_t subframes, voiced;
        double f0, predictionGain;

        void operator+=(const Contour& next);
    };

    void add(std::span<const std::int16_t> samples) { waveform_.add(samples); }
    void add(const VspvPitchPoint& point);

    const WaveformOutline& waveform() const { return waveform_; }
    const BoundedTrace<Contour>& contour() const { return contour_; }

  private:
    WaveformOutline waveform_;
    BoundedTrace<Contour> contour_{12000};
};

// The waveform with the F0 contour over it, a panel for every channel. Returns the bytes of the picture.
std::string drawPitch(const Gnuplot& gnuplot, const std::string& title, double seconds,
                      const std::vector<PitchCurves>& channels);
