// vsps pitch: the pitch that a G.729 encoder finds in a recording.
#include <chrono>
#include <iostream>
#include <map>
#include <memory>
#include <new>

#include "audio/input_options.h"
#include "audio/recording.h"
#include "commands.h"
#include "console/error.h"
#include "console/output_file.h"
#include "console/report_format.h"
#include "pitch/pitch_plot.h"
#include "pitch/pitch_report.h"
#include "pitch/speech_analysis.h"

namespace {

struct Options {
    std::string in;
    InputSettings input;
    std::string search = "main", csv, plot;
    bool json = false;
};

const std::map<std::string, PitchSearch> kSearches = {
    {"main", PitchSearch::kMain}, {"a", PitchSearch::kAnnexA}, {"d", PitchSearch::kAnnexD}};

void checkNames(const Options& o) {
    for (const std::string& out : {o.csv, o.plot})
        if (!out.empty() && sameFile(out, o.in)) throw FileError(out, "is the input and an output at once");
    if (!o.csv.empty() && !o.plot.empty() && sameFile(o.csv, o.plot))
        throw FileError(o.csv, "is the table and the plot at once");
}

// Fills in the tracks and the time that they took.
void searchPitch(const Recording& recording, PitchReport& report) {
    const auto begin = std::chrono::steady_clock::now();
    for (const Samples& channel : recording.channels)
        report.channels.push_back(trackPitch(channel, kSearches.at(report.search)));
    report.searchSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void runPitch(const Options& o) {
    std::unique_ptr<Gnuplot> gnuplot;
    if (!o.plot.empty()) gnuplot = std::make_unique<Gnuplot>(o.plot);
    checkNames(o);
    const Recording recording = readRecording(openInput(o.in, o.input));
    printNotes(recording.notes);
    if (recording.length() < kPitchFrame) throw FileError(o.in, "too short: the pitch search needs a frame of 10 ms");
    if (recording.channels.size() > 1)
        std::cerr << "vsps: " << o.in << ": " << recording.channels.size() << " channels, each searched by itself\n";

    PitchReport report{o.in, o.csv, o.plot, recording.fileRate, recording.length(), o.search, 0, {}};
    searchPitch(recording, report);

    std::unique_ptr<OutputFile> table, picture;
    if (!o.csv.empty()) table = std::make_unique<OutputFile>(o.csv, toCsv(report.channels));
    if (gnuplot)
        picture = std::make_unique<OutputFile>(
            o.plot, drawPitch(*gnuplot, "Pitch of " + o.in, recording.channels, report.channels));
    if (table) table->commit();
    if (picture) picture->commit();
    std::cout << (o.json ? toJson(report).text() : toText(report));
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
        "Columns of the table: channel; time_s, the start of the subframe; open_loop_lag; lag; fraction, in thirds, to be\n"
        "added to lag; f0_hz; gain of the adaptive codebook; prediction_gain_db, what its contribution removes from the\n"
        "target; level_dbov of the subframe, -inf for silence; voiced.\n"
        "Voiced is a subframe with a gain of at least 0.5 that removes at least 3 dB, and a frame with two of them.\n\n"
        "The encoder's steps before the search (G.729 3.1 to 3.6) run in floating point and nothing is quantised: the\n"
        "fixed codebook is taken to be ideal, so that the excitation is the residual of the linear prediction.\n\n"
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
