#include "vad/vad_tables.h"

#include "audio/active_level.h"
#include "console/report_format.h"

VadTables::VadTables(const VadOutputs& outputs, int option, std::size_t channels) : segments_(channels) {
    if (!outputs.csv.empty())
        csv_ = std::make_unique<OutputFile>(outputs.csv, std::string("channel,time_s,speech,level_dbov,snr_db,") +
                                                             (option == 1 ? "threshold_db\n" : "long_term_snr_db\n"));
    if (!outputs.labels.empty()) labels_ = std::make_unique<OutputFile>(outputs.labels);
}

void VadTables::addFrames(const std::vector<std::vector<VspvSpeechDecision>>& frames) {
    if (!csv_) return;
    std::string lines;
    for (std::size_t i = 0; i < frames[0].size(); i++, frames_++)
        for (std::size_t c = 0; c < frames.size(); c++) {
            const VspvSpeechDecision& f = frames[c][i];
            lines += format("%zu,%.2f,%d,%.1f,%.2f,%.2f\n", c + 1, kActivityFrameSeconds * double(frames_), f.speech,
                            toDbov(f.power), f.snr, f.reference);
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
