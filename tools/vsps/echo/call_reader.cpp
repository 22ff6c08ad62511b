#include "echo/call_reader.h"

#include "console/error.h"
#include "console/report_format.h"

namespace {

constexpr int kWideband = 16000;  // Hz, the highest rate of the canceller

AudioReader openBoth(const std::string& file, int rawRate) {
    AudioReader in({file, rawRate});
    if (in.channels() != 2)
        throw FileError(in.name(), format("has %zu channel%s and not two, far end and near end", in.channels(),
                                          in.channels() == 1 ? "" : "s"));
    return in;
}

}  // namespace

CallReader::CallReader(const CallFiles& files)
    : near_(files.both.empty() ? openOneChannel(files.near, files.input) : openBoth(files.both, files.input.rawRate)),
      swap_(files.swap) {
    if (near_.fileRate() >= kWideband) near_.convertTo(kWideband);
    if (!files.both.empty()) return;
    far_.emplace(openOneChannel(files.far, files.input));
    far_->convertTo(near_.rate());
}

bool CallReader::read(std::size_t samples, Samples& far, Samples& near) {
    const bool any = near_.read(samples, nearBlock_);
    if (far_) {
        const bool anyFar = far_->read(any ? nearBlock_[0].size() : samples, farBlock_);
        farIsLonger_ = !any && anyFar;
        std::swap(far, farBlock_[0]);
        std::swap(near, nearBlock_[0]);
        far.resize(near.size());
    } else {
        std::swap(far, nearBlock_[swap_ ? 1 : 0]);
        std::swap(near, nearBlock_[swap_ ? 0 : 1]);
    }
    return any;
}

std::vector<std::string> CallReader::notes() const {
    std::vector<std::string> notes = near_.notes();
    if (!far_) return notes;
    for (const std::string& note : far_->notes()) notes.push_back(note);
    const std::string comparison = compareLengths();
    if (!comparison.empty()) notes.push_back(comparison);
    return notes;
}

// A pipe may have any amount left.
std::string CallReader::compareLengths() const {
    const std::uint64_t far = std::max(far_->length(), far_->expected()), near = near_.length();
    const auto difference = [&] { return format("%.2f s ", std::abs(double(far) - double(near)) / rate()); };
    if (farIsLonger_)
        return far_->name() + ": " + (far_->expected() > 0 ? difference() : "") + "longer than " + near_.name() +
               ", the rest is left out";
    if (far_->length() < near)
        return far_->name() + format(": %.2f s shorter than ", double(near - far_->length()) / rate()) + near_.name() +
               ", silent from there on";
    return {};
}
