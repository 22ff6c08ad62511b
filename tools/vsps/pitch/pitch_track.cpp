#include "pitch/pitch_track.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

#include "audio/active_level.h"
#include "pitch/speech_analysis.h"
#include "vspsc.h"

namespace {

constexpr std::size_t kLongestLag = 143;
constexpr std::size_t kPast = 154;  // samples of excitation that the searches read

void check(VspStatus status) {
    if (status != vspStsNoErr) throw std::logic_error("pitch search: status " + std::to_string(status));
}

// A frame of weighted speech after the past that the longest lag needs.
class OpenLoop {
  public:
    Vsp16s search(const std::array<Vsp16s, kPitchFrame>& frame, PitchSearch search) {
        std::shift_left(weighted_.begin(), weighted_.end(), kPitchFrame);
        std::copy(frame.begin(), frame.end(), weighted_.begin() + kLongestLag);
        Vsp16s lag = 0;
        check((search == PitchSearch::kAnnexA ? vspsOpenLoopPitchSearch_G729A_16s : vspsOpenLoopPitchSearch_G729_16s)(
            weighted_.data() + kLongestLag, &lag));
        return lag;
    }

  private:
    std::array<Vsp16s, kLongestLag + kPitchFrame> weighted_{};
};

// The excitation so far and the adaptive codebook made of it.
class ClosedLoop {
  public:
    explicit ClosedLoop(PitchSearch search) : search_(search) {}

    // Fills in lag, fraction, gain and prediction gain.
    void search(const SubframeSignals& signals, Vsp16s aroundLag, Vsp16s subframe, PitchPoint& point) {
        SubframeSamples vector, filtered;
        std::array<Vsp16s, 2> delay;
        const Vsp16s *x = signals.target.data(), *h = signals.impulse.data();
        // Lags shorter than the subframe read the residual in the place of the excitation to come.
        std::copy(signals.residual.begin(), signals.residual.end(), excitation_.begin() + kPast);
        if (search_ == PitchSearch::kAnnexD) {
            check(vspsAdaptiveCodebookSearch_G729D_16s(aroundLag, x, h, excitation_.data(), subframe, delay.data()));
            check(vspsDecodeAdaptiveVector_G729_16s(delay.data(), excitation_.data(), vector.data()));
        } else {
            const auto codebookSearch = search_ == PitchSearch::kAnnexA ? vspsAdaptiveCodebookSearch_G729A_16s
                                                                        : vspsAdaptiveCodebookSearch_G729_16s;
            check(codebookSearch(aroundLag, x, h, excitation_.data(), delay.data(), vector.data(), subframe));
        }
        Vsp16s gain = 0;
        if (search_ == PitchSearch::kAnnexA)
            check(vspsAdaptiveCodebookGain_G729A_16s(x, signals.weightedFilter.data(), vector.data(), filtered.data(),
                                                     &gain));
        else
            check(vspsAdaptiveCodebookGain_G729_16s(x, h, vector.data(), filtered.data(), &gain));
        point.lag = delay[0];
        point.fraction = delay[1];
        point.gain = static_cast<float>(gain) / 16384.0f;
        point.predictionGain = predictionGain(signals.target, filtered, point.gain);
        moveOn(signals.residual);
    }

  private:
    // 10 log10(|x|^2 / |x - g y|^2); a remainder below one unit counts as one.
    static float predictionGain(const SubframeSamples& x, const SubframeSamples& y, double gain) {
        double energy = 0, remainder = 0;
        for (std::size_t n = 0; n < x.size(); n++) {
            const double e = x[n] - gain * y[n];
            energy += double(x[n]) * x[n];
            remainder += e * e;
        }
        return energy == 0 ? 0 : float(10 * std::log10(energy / std::max(1.0, remainder)));
    }

    // An ideal fixed codebook adds all that the adaptive one lacks: the excitation becomes the residual.
    void moveOn(const SubframeSamples& residual) {
        std::copy(residual.begin(), residual.end(), excitation_.begin() + kPast);
        std::shift_left(excitation_.begin(), excitation_.end(), kPitchSubframe);
    }

    const PitchSearch search_;
    std::array<Vsp16s, kPast + kPitchSubframe> excitation_{};
};

double meanSquare(const std::int16_t* x) {
    double energy = 0;
    for (std::size_t n = 0; n < kPitchSubframe; n++) energy += double(x[n]) * x[n];
    return energy / kPitchSubframe;
}

}  // namespace

struct PitchTracker::Coder {
    explicit Coder(PitchSearch s)
        : search(s),
          analysis(s == PitchSearch::kAnnexA ? SpeechAnalysis::Kind::kAnnexA : SpeechAnalysis::Kind::kMain),
          closedLoop(s) {}

    // Takes a frame and the samples that the analysis looks ahead.
    void code(std::span<const std::int16_t> samples, std::vector<PitchPoint>& points) {
        if (!started) analysis.read(samples.first(kPitchLookAhead));
        started = true;
        analysis.read(samples.subspan(kPitchLookAhead, kPitchFrame));
        const FrameSignals signals = analysis.frame();
        PitchPoint point{};
        point.openLoopLag = openLoop.search(signals.weighted, search);
        Vsp16s aroundLag = point.openLoopLag;
        for (const Vsp16s subframe : {Vsp16s(0), Vsp16s(1)}) {
            const auto number = std::size_t(subframe);
            point.level = float(toDbov(meanSquare(samples.data() + kPitchSubframe * number)));
            closedLoop.search(signals.subframes[number], aroundLag, subframe, point);
            aroundLag = point.lag;
            points.push_back(point);
        }
    }

    PitchSearch search;
    SpeechAnalysis analysis;
    OpenLoop openLoop;
    ClosedLoop closedLoop;
    bool started = false;
};

PitchTracker::PitchTracker(PitchSearch search) : coder_(std::make_unique<Coder>(search)) {}
PitchTracker::~PitchTracker() = default;
PitchTracker::PitchTracker(PitchTracker&&) noexcept = default;

void PitchTracker::process(std::span<const std::int16_t> samples, std::vector<PitchPoint>& points) {
    constexpr std::size_t kNeeded = kPitchFrame + kPitchLookAhead;
    samples_.insert(samples_.end(), samples.begin(), samples.end());
    std::size_t done = 0;
    for (; done + kNeeded <= samples_.size(); done += kPitchFrame)
        coder_->code(std::span(samples_).subspan(done, kNeeded), points);
    samples_.erase(samples_.begin(), samples_.begin() + std::ptrdiff_t(done));
}

void PitchTracker::finish(std::vector<PitchPoint>& points) {
    if (samples_.size() < kPitchFrame) return;
    samples_.resize(kPitchFrame + kPitchLookAhead);
    coder_->code(samples_, points);
    samples_.clear();
}
