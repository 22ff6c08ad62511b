#include "echo/bulk_delay.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace vspv {

namespace {

constexpr double kLowest = 500;      // Hz, the lowest band
constexpr double kNoiseTime = 0.05;  // s, smoothing of the error power
constexpr double kEvidenceTime = 1;  // s over which it is judged what the search explains
constexpr double kEnough = 0.25;     // s for which a new delay must be the best, if it explained everything
constexpr double kDriftTime = 30;    // s in which an echo path becomes another one
constexpr double kRestTime = 5;      // s of far-end signal without anything new, after which the search becomes slow
constexpr double kMemory = 5;        // s for which a canceller that was useful is taken to be so still
constexpr float kCorrelated = 0.4f;  // taps are correlated: a frame teaches less than if they were not
constexpr float kClear = 0.85f;      // share left unexplained that makes an echo outside
constexpr float kSlight = 0.9f;      // the same, where the canceller loses nothing if it moves
constexpr float kNone = 0.95f;       // share left unexplained where there is none
constexpr float kGained = 0.5f;      // share of the echo outside that a new delay must bring inside
constexpr float kLost = 0.003f;      // share of the echo inside that counts as nothing
constexpr float kFaint = 0.005f;     // of the largest energy of a frame inside: what is below is noise
constexpr float kSure = 0.8f;        // share of the near end removed that shows where most of the path lies
constexpr int kRoom = 2, kEnd = 2;   // frames by which a path begins late, and frames where it is cut off
constexpr float kCut = 0.01f;        // share of the response that a first guess may leave outside
constexpr float kChance = 2;         // energy of the search's coefficients that comes about by chance, of its expectation
constexpr float kFade = 0.9f;        // of coefficients that make it worse
constexpr int kLead = 1;             // frames that had better be inside before the path begins
constexpr int kMaxTaps = 255;        // of the library's filters
constexpr float kNothing = 1;        // power of a band

float smoothing(double time, double frameRate) { return static_cast<float>(1 - std::exp(-1 / (time * frameRate))); }

}  // namespace

BulkDelay::BulkDelay(const Shape& s, Memory& memory)
    : maxFrames_(std::min(s.maxFrames, kMaxTaps - s.covered)),
      covered_(s.covered),
      firstBand_(static_cast<int>(kLowest / s.spacing)),
      length_(maxFrames_ + covered_),
      enough_(static_cast<float>(kEnough * s.frameRate / kDecide)),
      noiseShare_(smoothing(kNoiseTime, s.frameRate)),
      evidenceShare_(smoothing(kEvidenceTime, s.frameRate)),
      drift_(smoothing(kDriftTime, s.frameRate)),
      restAfter_(static_cast<float>(kRestTime * s.frameRate)),
      usefulDecay_(1 - smoothing(kMemory, s.frameRate / kDecide)),
      far_(length_ + 1, kBands, memory),
      response_(length_, kBands, memory),
      upTo_(memory.take<float>(length_ + 1)) {
    uncertainty_.fill(1 / static_cast<float>(length_));
}

// The step follows from what is unknown of the coefficients, as in the controllers of libvspscy8, with one uncertainty: of
// a path that is as loud as the far end at most.
void BulkDelay::adapt() {
    std::array<float, kBands> before;
    for (std::size_t k = 0; k < kBands; k += 4) store(powersOf(&left_[k]), &before[k]);
    forBothParts([this](int first, int count) {
        FloatArithmetic::filter(far_.at(first), response_.at(first), estimate_.data(), count, kBands);
        FloatArithmetic::subtract(left_.data(), estimate_.data(), left_.data(), kBands);
    });
    float learned = 0, left = 0, unexplained = 0;
    for (std::size_t k = 0; k < kBands; k++) {
        const float error = powerOf(left_[k]), far = static_cast<float>(std::max(power_.far[k], 0.0));
        float &noise = power_.noise[k], &u = uncertainty_[k];
        noise += noiseShare_ * (error - noise);
        const float gain = 1 / (u * far + std::max(noise, error) + kNothing), share = u * far * gain;
        steps_[k] = u * gain;
        u *= 1 - kCorrelated / static_cast<float>(length_) * share;
        u += drift_ * (1 / static_cast<float>(length_) - u);
        learned += share / kBands;
        left += share * gain * before[k];
        unexplained += share * gain * error;
    }
    weigh(learned, left, unexplained);
    forBothParts([this](int first, int count) {
        FloatArithmetic::adapt(steps_.data(), far_.at(first), left_.data(), response_.at(first), count, kBands);
    });
}

// Frames count as far as there is something to learn from them, not as they are loud: what is heard in the pauses of a
// near-end talker is not lost.
void BulkDelay::weigh(float learned, float left, float unexplained) {
    leftPower_ += evidenceShare_ * (left - leftPower_);
    unexplained_ += evidenceShare_ * (unexplained - unexplained_);
    if (unexplained_ < kSlight * leftPower_)
        nothingNew_ = 0;
    else if (unexplained_ > kNone * leftPower_)
        nothingNew_ += learned;
}

// Noise is in all coefficients of the search alike; what it explains little of is mostly noise.
void BulkDelay::measureEnergies(std::span<const float> covered) {
    float outside = 0;
    for (int t = 0; t < length_; t++) {
        float& e = upTo_[static_cast<std::size_t>(t + 1)];
        e = powerOf(std::span<const Vsp32fc>(response_.at(t)[0], kBands)) / kBands;
        if (t < delay_ || t >= delay_ + covered_) outside += e;
    }
    const float chance =
        leftPower_ > 0 ? kChance * std::min(1.0f, unexplained_ / leftPower_) * outside / static_cast<float>(length_) : 0;
    const float faint = kFaint * *std::max_element(covered.begin(), covered.end());
    const auto clearly = [faint](float e) { return e > faint ? e : 0.0f; };
    float* const ofCovered = &upTo_[static_cast<std::size_t>(delay_ + 1)];
    for (float& e : upTo_) e = std::max(e - chance, 0.0f);
    std::transform(covered.begin(), covered.end(), ofCovered, [&](float e) { return useful_ * clearly(e); });
    std::partial_sum(upTo_.begin(), upTo_.end(), upTo_.begin());
}

// The longest delay that keeps nearly all of the response inside, but for the lead.
int BulkDelay::find() const {
    float best = 0;
    for (int d = 0; d <= maxFrames_; d++) best = std::max(best, inside(d));
    const float enough = best - kCut * upTo_.back();
    int found = maxFrames_;
    while (found > 0 && inside(found) < enough) found--;
    for (int i = 0; i < kLead && found > 0 && inside(found - 1) >= enough; i++) found--;
    return found;
}

float BulkDelay::evidence(int found) const {
    if (found == delay_) return 0;
    const int end = delay_ + covered_;
    const float now = inside(delay_), outside = upTo_.back() - now;
    const float kept = energy(std::clamp(found, delay_, end), std::clamp(found + covered_, delay_, end));
    const float lost = now - kept, gained = inside(found) - kept;
    const bool free = useful() && lost < kLost * now, gains = gained >= kGained * outside;
    // The path reaches the end of what is covered, and begins late: there is room for more of it.
    if (free && useful_ > kSure && found >= delay_ + kRoom && energy(end - kEnd, end) > kLost * now) return 1;
    const float share = leftPower_ > 0 ? unexplained_ / leftPower_ : 1;
    return gains && (free || gained > lost) && share < (free ? kSlight : kClear) ? 1 - share : 0;
}

bool BulkDelay::decide(std::span<const float> coveredEnergy, float leftShare) {
    useful_ = std::max(std::clamp(1 - leftShare, 0.0f, 1.0f), useful_);
    measureEnergies(coveredEnergy);
    const int found = find();
    if (unexplained_ > leftPower_)
        for (int t = 0; t < length_; t++)
            for (int k = 0; k < kBands; k += 2) {
                Vsp32fc* const h = response_.at(t)[0] + k;
                store(kFade * fourOf(h), &h->re);
            }
    const float now = evidence(found);
    evidence_ = now == 0 ? 0 : std::abs(found - candidate_) <= 1 ? evidence_ + now : now;
    candidate_ = found;
    if (evidence_ < enough_) return false;
    delay_ = found;
    evidence_ = 0;
    for (int t = delay_; t < delay_ + covered_; t++) std::fill_n(response_.at(t)[0], kBands, Vsp32fc{});
    unexplained_ = leftPower_;
    return true;
}

SignalBulkDelay::SignalBulkDelay(const BankShape& shape, int maxFrames, int covered, int rate, Memory& memory)
    : shape_(shape),
      farBank_(shape, farWindow(shape), memory),
      leftBank_(shape, farWindow(shape), memory),
      farIn_(memory.take<float>(shape.frame)),
      leftIn_(memory.take<float>(shape.frame)),
      far_(memory.take<Vsp32fc>(shape.bands())),
      left_(memory.take<Vsp32fc>(shape.bands())),
      delay_({.maxFrames = maxFrames,
              .covered = covered,
              .spacing = double(rate) / shape.transform(),
              .frameRate = double(rate) / shape.frame},
             memory) {}

bool SignalBulkDelay::update(float far, float left) {
    farIn_[filled_] = far;
    leftIn_[filled_] = left;
    if (++filled_ < farIn_.size()) return false;
    filled_ = 0;
    farBank_.analyse(farIn_.data(), far_.data());
    leftBank_.analyse(leftIn_.data(), left_.data());
    return delay_.update(far_.data(), left_.data());
}

}  // namespace vspv
