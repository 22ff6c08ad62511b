// What vsps encode and vsps decode have in common: the files and options, and how several files are worked on.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "audio/input_options.h"
#include "codec/codec_plot.h"
#include "codec/codec_report.h"
#include "codec/comparison.h"
#include "console/options.h"
#include "console/output_file.h"

struct CodecOptions {
    std::vector<std::string> files;  // inputs and, the last one, the output
    std::string codec, against, plot;
    int bitRate = 0;
    std::size_t jobs = 1;
    bool json = false;
};

// With {} replaced; the original and the plot are empty if they are not asked for.
struct CodecFiles {
    std::string in, out, original, plot;
};

struct CodecResult {
    CodecReport report;
    std::vector<std::string> notes;  // for stderr
};

void addCodecOptions(Command& command, CodecOptions& options, const std::string& files);

// Works on all inputs, reports each, and ends with an exception if any has failed. `what` names the work while it takes
// long.
void processCoded(const CodecOptions& options, const std::string& what,
                  const std::function<CodecResult(const CodecFiles&)>& work);

// Compares what is decoded with an original, if there is one to compare with.
class OriginalComparison {
  public:
    OriginalComparison(const CodecFiles& files, const InputSettings& settings, int rate);

    void add(const Samples& heard);
    // Fills in the report, appends to the notes and draws the plot, which appears with commitPlot().
    void finish(CodecResult& result);
    void commitPlot();

  private:
    const CodecFiles& files_;
    std::unique_ptr<AudioReader> original_;
    std::unique_ptr<Comparison> comparison_;
    FidelityCurves curves_;
    std::unique_ptr<OutputFile> picture_;
};
