// vsps pitch: the pitch that a G.729 encoder finds in a recording.
#include <algorithm>
#include <iostream>
#include <map>
#include <memory>

#include "audio/input_options.h"
#include "commands.h"
#include "console/error.h"
#include "console/output_file.h"
#include "console/progress.h"
#include "console/stopwatch.h"
#include "pitch/pitch_plot.h"
#include "pitch/pitch_report.h"
#include "pitch/pitch_table.h"

namespace {

struct Options {
    std::string in;
    InputSettings input;
    std::string search = "main", csv, plot;
    bool json = false;
};

const std::map<std::string, Vsp32s> kSearches = {{"main", vspvPitchMain}, {"a", vspvPitchAnnexA}, {"d", vspvPitchAnnexD}};

// What is made of the points of a recording while it is searched.
struct Results {
    PitchReport report;
    std::unique_ptr<PitchTable> table;
    std::vector<PitchCurves> curves;  // of the channels that are plotted

    void add(std::vector<std::vector<VspvPitchPoint>>& points) {
        for (std::size_t c = 0; c < points.size(); c++)
            for (const VspvPitchPoint& point : points[c]) {
                report.channels[c].add(point);
                if (c < curves.size()) curves[c].add(point);
            }
        if (table) table->add(points);
        for (auto& channel : points) channel.clear();
    }
};

void searchPitch(AudioReader& in, Vsp32s search, Results& results) {
    std::vector<PitchTracker> trackers;
    for (std::size_t c = 0; c < in.channels(); c++) trackers.emplace_back(search);
    std::vector<std::vector<VspvPitchPoint>> points(in.channels());
    Progress progress("searching the pitch", in.expected());
    for (Block block; in.read(kBlockLength, block); progress.advance(block[0].size())) {
        for (std::size_t c = 0; c < trackers.size(); c++) trackers[c].process(block[c], points[c]);
        for (std::size_t c = 0; c < results.curves.size(); c++) results.curves[c].add(block[c]);
        results.add(points);
    }
    for (std::size_t c = 0; c < trackers.size(); c++) trackers[c].finish(points[c]);
    results.add(points);
    results.report.seconds = in.seconds();
    if (results.report.channels[0].frames() == 0)
        throw FileError(in.name(), "too short: the pitch search needs a frame of 10 ms");
}

void runPitch(const Options& o) {
    const Stopwatch stopwatch;
    std::unique_ptr<Gnuplot> gnuplot;
    if (!o.plot.empty()) gnuplot = std::make_unique<Gnuplot>(o.plot);
    refuseSameFiles({o.in}, {o.csv, o.plot});
    AudioReader in = openInput(o.in, o.input);
    const std::size_t channels = in.channels();
    Results results;
    results.report = {o.in, o.csv, o.plot, in.fileRate(), 0, o.search, 0, std::vector<PitchSummary>(channels)};
    if (!o.csv.empty()) results.table = std::make_unique<PitchTable>(o.csv);
    if (gnuplot) results.curves.resize(std::min(channels, kPlottedPitches));
    searchPitch(in, kSearches.at(o.search), results);
    printNotes(in.notes());
    if (channels > 1) std::cerr << "vsps: " << in.name() << ": " << channels << " channels, each searched by itself\n";
    if (gnuplot && channels > kPlottedPitches)
        std::cerr << "vsps: the plot shows the first " << kPlottedPitches << " channels\n";

    std::unique_ptr<OutputFile> picture;
    PitchReport& report = results.report;
    if (gnuplot)
        picture = std::make_unique<OutputFile>(
            o.plot, drawPitch(*gnuplot, "Pitch of " + in.name(), report.seconds, results.curves));
    if (results.table) results.table->commit();
    if (picture) picture->commit();
    report.elapsedSeconds = stopwatch.seconds();
    reportStream({o.csv, o.plot}) << (o.json ? toJson(report).text() : toText(report));
}

}  // namespace

void addPitch(CommandLine& vsps) {
    Command command = vsps.add("pitch", "Finds the pitch of speech as an ITU-T G.729 encoder does.");
    const auto o = std::make_shared<Options>();
    addInput(command, o->in, o->input);
    command.option("--search", o->search, "Whose search: of G.729 (main), its Annex A (a, fast) or D (d, 6.4 kbit/s)")
        .takes("main|a|d")
        .oneOf({"main", "a", "d"})
        .showDefault();
    command.option("--csv", o->csv, "Write a table with a line for every 5 ms").takes("FILE");
    command.option("--plot", o->plot, "Draw the waveform with the F0 contour; needs gnuplot").takes("FILE.png|svg|pdf");
    command.flag("--json", o->json, "Print a JSON object instead of text");
    command.footer(
        "For every frame of 10 ms the open-loop lag is searched in the weighted speech, for every subframe of 5 ms the\n"
        "lag, in thirds of a sample, with which the past excitation predicts the target best. Lags are samples at\n"
        "8000 Hz, F0 is 8000 / lag, from 56 to 400 Hz; a pitch outside comes out as a multiple or a fraction.\n\n"
        "Columns of the table: channel, by turns; time_s, the start of the subframe; open_loop_lag; lag; fraction, in\n"
        "thirds, to be added to lag; f0_hz; gain of the adaptive codebook; prediction_gain_db, what its contribution\n"
        "removes from the target; level_dbov of the subframe, -inf for silence; voiced.\n"
        "Voiced is a subframe with a gain of at least 0.5 that removes at least 3 dB, and a frame with two of them.\n\n"
        "The encoder's steps before the search (G.729 3.1 to 3.6) run without its quantisation: the fixed codebook is "
        "taken\n"
        "to be ideal, so that the excitation is the residual of the linear prediction.\n\n"
        "The table or the plot can be - for standard output; the report goes to standard error then.\n\n"
        "Examples:\n"
        "  vsps pitch call.wav\n"
        "  vsps pitch --plot pitch.png --csv pitch.csv call.flac\n"
        "  vsps pitch --search a --raw 8000 --json trunk.al");
    command.run([o] {
        try {
            runPitch(*o);
        } catch (const std::bad_alloc&) {
            throw FileError(o->in, "too long for the memory of this machine");
        }
    });
}
