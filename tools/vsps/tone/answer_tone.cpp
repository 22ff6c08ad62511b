#include "tone/answer_tone.h"

#include <algorithm>
#include <utility>

AnswerToneFinder::AnswerToneFinder(int rate, bool fixedPoint) : rate_(rate), detector_(rate, fixedPoint), extent_(rate) {}

void AnswerToneFinder::process(std::span<const std::int16_t> samples, std::vector<AnswerTone>& tones) {
    const std::size_t millisecond = std::size_t(rate_) / 1000;
    while (!samples.empty()) {
        const std::size_t count = std::min(heard_ + millisecond - block_.size(), samples.size());
        block_.insert(block_.end(), samples.begin(), samples.begin() + std::ptrdiff_t(count));
        samples = samples.subspan(count);
        position_ += count;
        if (block_.size() < heard_ + millisecond) return;

        const bool reversal = detector_.detect(std::span(block_).subspan(heard_));
        heard_ = block_.size();
        if (block_.size() == extent_.blockLength()) {
            if (const auto ended = extent_.process(block_)) append(*ended, tones);
            block_.clear();
            heard_ = 0;
        }
        if (reversal) addReversal();
    }
}

void AnswerToneFinder::finish(std::vector<AnswerTone>& tones) {
    const auto rest = std::span(block_).subspan(heard_);
    if (!rest.empty() && detector_.detect(rest)) addReversal();
    if (extent_.current()) append(*extent_.current(), tones);
}

void AnswerToneFinder::addReversal() {
    if (reversals_.empty()) extent_.claim();
    reversals_.push_back(double(position_) / rate_);
}

// Without a reversal it is no answer tone.
void AnswerToneFinder::append(const ToneStretch& s, std::vector<AnswerTone>& tones) {
    if (reversals_.empty()) return;
    const auto length = double(extent_.blockLength());
    tones.push_back({double(s.first) * length / rate_, double(s.last) * length / rate_,
                     s.energy / std::max(1.0, double(s.last - s.first) * length), std::exchange(reversals_, {})});
}
