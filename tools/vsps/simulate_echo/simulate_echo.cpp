// vsps simulate-echo: what the near end of a call sends back when it lets the far end through.
#include <cmath>
#include <iostream>
#include <memory>
#include <new>

#include "audio/audio_format.h"
#include "audio/audio_writer.h"
#include "audio/input_options.h"
#include "audio/recording.h"
#include "commands.h"
#include "console/error.h"
#include "console/output_file.h"
#include "console/report_format.h"
#include "simulate_echo/simulate_report.h"

namespace {

constexpr const char* kNobody = "none";  // as the name of NEAR

struct Options {
    std::string far, near, out;
    int rawRate = 0;
    SimulateSettings settings;
    bool json = false;
};

// Both begin at once and are made as long as the longer one.
void bringToOneLength(const Options& o, Samples& far, Samples& near) {
    const auto say = [](const std::string& file, std::size_t missing) {
        std::cerr << "vsps: " << file << format(": ends %.2f s early, silent from there on\n", double(missing) / kRate);
    };
    if (o.near == kNobody) near.clear();
    if (far.size() < near.size()) say(o.far, near.size() - far.size());
    if (near.size() < far.size() && o.near != kNobody) say(o.near, far.size() - near.size());
    const std::size_t length = std::max(far.size(), near.size());
    far.resize(length);
    near.resize(length);
}

Samples readOneChannel(const std::string& file, int rawRate) {
    Recording recording = readRecording(openOneChannel(file, {rawRate, 0}));
    printNotes(recording.notes);
    return std::move(recording.channels[0]);
}

void runSimulateEcho(const Options& o) {
    const SimulateSettings& s = o.settings;
    const int format = outputFormat(o.out, o.rawRate != 0);
    for (const std::string& in : {o.far, o.near, s.path})
        if (sameFile(o.out, in)) throw FileError(o.out, "is an input and the output at once");
    const EchoPath path = loadEchoPath(s.path, s.echoReturnLoss);
    printNotes(path.notes);
    Samples far = readOneChannel(o.far, o.rawRate), near;
    if (o.near != kNobody) {
        near = readOneChannel(o.near, o.rawRate);
        near.insert(near.begin(), std::size_t(std::lround(s.nearAt * kRate)), 0);
    }
    bringToOneLength(o, far, near);

    const auto delay = std::size_t(std::lround(s.delay * kRate / 1000));
    const auto noise = s.noise ? std::optional(NoiseSettings{*s.noise, s.seed}) : std::nullopt;
    const LineSignals line = simulateLine(far, near, path, delay, noise);
    const double loss = 10 * std::log10(line.farPower / line.echoPower);
    const SimulateReport report{o.far,
                                o.near == kNobody ? "" : o.near,
                                o.out,
                                s,
                                path.response.size(),
                                far.size(),
                                measure(far),
                                measure(near),
                                measure(line.echo),
                                measure(line.noise),
                                measure(line.out),
                                loss,
                                line.clipped};
    AudioWriter out(o.out, format, kRate, 1);
    out.write(line.out);
    out.commit();
    std::cout << (o.json ? toJson(report).text() : toText(report));
}

}  // namespace

void addSimulateEcho(CommandLine& vsps) {
    Command command =
        vsps.add("simulate-echo", "Makes the recording of a near end that sends back an echo of the far end.");
    const auto o = std::make_shared<Options>();
    SimulateSettings& s = o->settings;
    command.option("FAR", o->far, "Recording of what the far end says; one channel, any rate").required();
    command.option("NEAR", o->near, "Recording of the near-end talker; \"none\" if nobody talks").required();
    command.option("OUT", o->out, "Near end with echo and noise, at 8000 Hz; the extension says how: " + outputExtensions())
        .required();
    command.option("--path", s.path, "Echo path: a model of ITU-T G.168 Annex D, or a file with an impulse response")
        .takes("d2..d9|FILE")
        .showDefault();
    command.option("--erl", s.echoReturnLoss, "Echo return loss").takes("dB").within(-20, 100).showDefault();
    command.option("--delay", s.delay, "Delay of the echo besides that of the path")
        .takes("ms")
        .within(0, 5000)
        .showDefault();
    command.option("--noise", s.noise, "Add white noise of this level").takes("dBov").within(-120, 0);
    command.option("--seed", s.seed, "Which noise").takes("N").showDefault();
    command.option("--near-at", s.nearAt, "When NEAR begins").takes("s").within(0, 36000).showDefault();
    addRaw(command, o->rawRate, "FAR and NEAR have no header: see vsps level --help");
    command.flag("--json", o->json, "Print a JSON object instead of text");
    command.footer(
        "OUT is NEAR + echo of FAR + noise, rounded once, at 8000 Hz and as long as the longer recording. FAR is the\n"
        "reference for an echo canceller, OUT its input.\n\n"
        "With a model the impulse response is h[n] = tap[n] K 10^(-ERL/20), with taps and K as published; the loss of a\n"
        "particular signal is some decibels more or less, and is reported. A FILE is scaled so that white noise has that\n"
        "loss: a .txt or .csv lists the taps at 8000 Hz, between blanks, commas or line ends, # begins a comment; any\n"
        "other is a recording of one channel, converted to 8000 Hz. At most 4 s.\n\n"
        "Levels are active speech levels (ITU-T P.56) and mean levels, dB relative to full scale: a full-scale sine is\n"
        "at -3 dBov.\n\n"
        "Examples:\n"
        "  vsps simulate-echo far.wav none line.wav\n"
        "  vsps simulate-echo far.wav near.wav line.wav --near-at 8 --path d4 --erl 10 --noise -68\n"
        "  vsps simulate-echo far.flac near.flac room.wav --path kitchen.wav --erl 6 --delay 40");
    command.run([o] {
        try {
            runSimulateEcho(*o);
        } catch (const std::bad_alloc&) {
            throw FileError(o->far, "too long for the memory of this machine");
        }
    });
}
