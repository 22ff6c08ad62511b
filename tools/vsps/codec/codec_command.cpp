#include "codec/codec_command.h"

#include <new>
#include <ostream>

#include "codec/codec_choice.h"
#include "console/error.h"
#include "console/many_files.h"
#include "console/report_format.h"
#include "console/standard_streams.h"

namespace {

// No output may be an input or another output.
std::vector<CodecFiles> placeFiles(const CodecOptions& o) {
    std::vector<CodecFiles> all;
    std::vector<std::string> read, written;
    for (std::size_t i = 0; i + 1 < o.files.size(); i++) {
        const std::string& in = o.files[i];
        all.push_back({in, nameFor(o.files.back(), in), nameFor(o.against, in), nameFor(o.plot, in)});
        read.push_back(in);
        if (all.back().original != in) read.push_back(all.back().original);
        written.insert(written.end(), {all.back().out, all.back().plot});
    }
    refuseSameFiles(read, written);
    return all;
}

void checkOptions(const CodecOptions& o) {
    if (!o.plot.empty() && o.against.empty()) throw UsageError{"--plot", "draws a comparison: it needs --against"};
    if (o.files.size() < 3) return;
    for (const auto& [option, pattern] : {std::pair("OUT", o.files.back()), std::pair("--plot", o.plot)})
        if (!pattern.empty() && !hasNamePlace(pattern))
            throw UsageError{option, "with several inputs it needs a {}, which stands for the input's name"};
}

std::string title(const CodecReport& r) {
    std::string text = inputName(r.inFile) + format(", %s, %d bit/s", r.codec->name, r.bitRate);
    if (r.lost && *r.lost > 0) text += format(", %.1f %% of the frames lost", 100.0 * double(*r.lost) / double(r.frames));
    return text;
}

}  // namespace

void addCodecOptions(Command& command, CodecOptions& o, const std::string& files) {
    command.option("FILES", o.files, files).atLeast(2).takes("IN... OUT");
    command.option("--codec", o.codec, "The codec, whatever the extension says").oneOf(codecNames());
    command.option("--rate", o.bitRate, "Bit rate of a codec that has several").takes("BITS").within(1, 1e6);
    command.option("--against", o.against, "Compare what is decoded with the original recording").takes("ORIGINAL");
    command.option("--plot", o.plot, "With --against: draw both spectrograms and their distance; needs gnuplot")
        .takes("FILE.png|svg|pdf");
    command.flag("--json", o.json, "Print a JSON object instead of text");
    command.option("--jobs", o.jobs, "Files processed at a time").takes("N").within(1, 1024).showDefault();
}

void processCoded(const CodecOptions& o, const std::string& what,
                  const std::function<CodecResult(const CodecFiles&)>& work) {
    checkOptions(o);
    if (!o.plot.empty()) Gnuplot(o.plot);  // ends here if there is none
    const std::vector<CodecFiles> files = placeFiles(o);
    std::ostream& out = reportStream({o.files.back(), o.plot});
    Json reports = Json::array();
    const auto one = [&](std::size_t i) {
        try {
            return work(files[i]);
        } catch (const std::bad_alloc&) {
            throw FileError(inputName(files[i].in), "out of memory");
        }
    };
    const auto show = [&](const CodecResult& result) {
        printNotes(result.notes);
        if (!o.json)
            out << toText(result.report) << std::flush;
        else if (files.size() == 1)
            out << toJson(result.report).text();
        else
            reports.append(toJson(result.report));
    };
    const bool good = processFiles(files.size(), o.jobs, what, one, show);
    if (o.json && files.size() > 1) out << Json{{"files", reports}}.text();
    if (!good) throw ErrorsReported();
}

OriginalComparison::OriginalComparison(const CodecFiles& files, const InputSettings& settings, int rate) : files_(files) {
    if (files.original.empty()) return;
    original_ = std::make_unique<AudioReader>(openOneChannel(files.original, settings));
    original_->convertTo(rate);
    comparison_ = std::make_unique<Comparison>(rate, [this](const FidelityStep& step) {
        if (!files_.plot.empty()) curves_.add(step);
    });
}

void OriginalComparison::add(const Samples& heard) {
    if (!comparison_) return;
    comparison_->addHeard(heard);
    Block block;
    if (original_->read(heard.size(), block)) comparison_->addOriginal(block[0]);
}

void OriginalComparison::finish(CodecResult& result) {
    if (!comparison_) return;
    comparison_->finish();
    const FidelityMeter& meter = comparison_->meter();
    if (meter.steps() == 0) throw FileError(original_->name(), "is too short to compare with");
    result.report.comparison = {files_.original, comparison_->seconds(), comparison_->delay(), meter.segmentalSnr(),
                                meter.spectralDistance()};
    if (files_.original != files_.in)
        for (const std::string& note : original_->notes()) result.notes.push_back(note);
    if (files_.plot.empty()) return;
    result.report.plot = files_.plot;
    const std::string picture = drawFidelity(Gnuplot(files_.plot), title(result.report), curves_, meter.stepSeconds(),
                                             result.report.codec->samplingRate);
    picture_ = std::make_unique<OutputFile>(files_.plot, picture);
}

void OriginalComparison::commitPlot() {
    if (picture_) picture_->commit();
}
