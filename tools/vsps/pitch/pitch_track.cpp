#include "pitch/pitch_track.h"

PitchTracker::PitchTracker(Vsp32s search) { checkVoice(vspvPitchTrackerInit(tracker_.get(), search)); }

void PitchTracker::process(std::span<const std::int16_t> samples, std::vector<VspvPitchPoint>& points) {
    if (samples.empty()) return;
    const std::size_t before = points.size();
    points.resize(before + 2 * ((samples.size() + vspvPitchFrame - 1) / vspvPitchFrame));
    Vsp32s count = 0;
    checkVoice(vspvPitchTrackerProcess(tracker_.get(), samples.data(), static_cast<Vsp32s>(samples.size()),
                                       points.data() + before, &count));
    points.resize(before + std::size_t(count));
}

void PitchTracker::finish(std::vector<VspvPitchPoint>& points) {
    VspvPitchPoint last[2];
    Vsp32s count = 0;
    checkVoice(vspvPitchTrackerFinish(tracker_.get(), last, &count));
    points.insert(points.end(), last, last + count);
}
