#include "vad/voice_activity.h"

#include <algorithm>

#include "console/progress.h"
#include "vad/vad_detector.h"

ActivityTrack detectActivity(const Samples& samples, int option) {
    const auto detector = makeVadDetector(option);
    AmrPreProcessing preProcessing;
    AmrWeighting weighting;
    AmrOpenLoop openLoop;
    std::array<Vsp16s, kAmrLookAhead + kAmrFrame> speech{};  // pre-processed: the end of the last frame, then the frame
    ActivityTrack track;
    track.reserve(samples.size() / kAmrFrame + 1);
    Progress progress("detecting speech", samples.size());
    for (std::size_t begin = 0; begin < samples.size(); begin += kAmrFrame) {
        const std::size_t count = std::min(kAmrFrame, samples.size() - begin);
        AmrFrame frame{};
        std::copy_n(samples.begin() + std::ptrdiff_t(begin), count, frame.begin());
        double energy = 0;
        for (const std::int16_t x : frame) energy += double(x) * x;

        const AmrFrame processed = preProcessing.process(frame);
        std::shift_left(speech.begin(), speech.end(), kAmrFrame);
        std::copy(processed.begin(), processed.end(), speech.end() - kAmrFrame);
        const bool flag = detector->detect(speech.data(), openLoop.result());
        openLoop.process(weighting.process(processed));
        track.push_back({flag, energy / double(count), detector->snr(), detector->reference()});
        progress.advance(count);
    }
    return track;
}

std::vector<Segment> speechSegments(const ActivityTrack& track, double seconds) {
    constexpr double kFrameSeconds = double(kAmrFrame) / kRate;
    std::vector<Segment> segments;
    for (std::size_t i = 0; i < track.size(); i++) {
        if (!track[i].speech) continue;
        if (i == 0 || !track[i - 1].speech) segments.push_back({double(i) * kFrameSeconds, 0});
        segments.back().end = std::min(double(i + 1) * kFrameSeconds, seconds);
    }
    return segments;
}
