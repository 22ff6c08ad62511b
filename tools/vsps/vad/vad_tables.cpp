#include "vad/vad_tables.h"

#include "audio/active_level.h"
#include "console/report_format.h"

VadTables::VadTables(const VadOutputs& outputs, int option, std::size_t channels)
    : ratios_(option != vspvSpeechWide), segments_(channels) {
    const std::string ratios = option == 1 ? ",snr_db,threshold_db" : ",snr_db,long_term_snr_db";
    if (!outputs.csv.empty())
        csv_ =
            std::make_unique<OutputFile>(outputs.csv, "channel,time_s,speech,level_dbov" + (ratios_ ? ratios : "") + '\n');
    if (!outputs.labels.empty()) labels_ = std::make_unique<OutputFile>(outputs.labels);
}

void VadTables::addFrames(const std::vector<std::vector<VspvSpeechDecision>>& frames) {
    if (!csv_) return;
    std::string lines;
    for (std::size_t i = 0; i < frames[0].size(); i++, frames_++)
        for (std::size_t c = 0; c < frames.size(); c++) {
            const VspvSpeechDecision& f = frames[c][i];
            lines += format("%zu,%.2f,%d,%.1f", c + 1, kActivityFrameSeconds * double(frames_), f.speech, toDbov(f.power));
            lines += ratios_ ? format(",%.2f,%.2f\n", f.snr, f.reference) : "\n";
        }
    csv_->write(lines);
}

void VadTables::addSegments(const std::vector<ActivitySummary>& channels) {
    if (!labels_) return;
    std::string lines;
    for (std::size_t c = 0; c < channels.size(); c++) {
        const std::string text = channels.size() == 1 ? "speech" : "speech " + std::to_string(c + 1);
        for (; segments_[c] < channels[c].segments().size(); segments_[c]++) {
            const Segment& s = channels[c].segments()[segments_[c]];
            lines += format("%.6f\t%.6f\t%s\n", s.start, s.end, text.c_str());
        }
    }
    labels_->write(lines);
}

void VadTables::commit() {
    if (csv_) csv_->commit();
    if (labels_) labels_->commit();
}
