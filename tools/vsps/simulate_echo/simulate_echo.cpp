// vsps simulate-echo: what the near end of a call sends back when it lets the far end through.
#include <cmath>
#include <iostream>
#include <memory>
#include <optional>

#include "audio/audio_format.h"
#include "audio/audio_writer.h"
#include "audio/input_options.h"
#include "audio/spool.h"
#include "commands.h"
#include "console/output_file.h"
#include "console/progress.h"
#include "console/report_format.h"
#include "simulate_echo/echo_path.h"
#include "simulate_echo/simulate_report.h"
#include "simulate_echo/simulation.h"

namespace {

constexpr const char* kNobody = "none";  // as the name of NEAR
constexpr int kWideband = 16000;         // Hz, the highest rate of an echo canceller

struct Options {
    std::string far, near, out, clipping = "soft";
    InputSettings input;
    SimulateSettings settings;
    bool json = false;
};

// A recording that begins some time after the simulation.
class Talker {
  public:
    Talker(AudioReader in, double beginSeconds) : in_(std::move(in)), seconds_(beginSeconds) {}

    void convertTo(int rate) {
        in_.convertTo(rate);
        begin_ = waiting_ = std::size_t(std::lround(seconds_ * rate));
    }

    // Hears the whole recording, which it keeps for reading.
    std::optional<ActiveLevel> activeLevel() {
        LevelMeter meter(in_.rate());
        kept_ = std::make_unique<Spool>();
        while (in_.read(kBlockLength, block_)) {
            meter.process(block_[0]);
            kept_->write(block_);
        }
        kept_->rewind();
        return meter.activeLevel();
    }

    // The next samples: so many, or fewer at the end; what has been kept comes in blocks of kBlockLength.
    void read(std::size_t count, Samples& samples) {
        const std::size_t silent = std::min(waiting_, count);
        waiting_ -= silent;
        samples.assign(silent, 0);
        if (silent == count) return;
        if (kept_ ? kept_->read(block_) : in_.read(count - silent, block_))
            samples.insert(samples.end(), block_[0].begin(), block_[0].end());
    }

    const AudioReader& recording() const { return in_; }
    std::size_t length() const { return begin_ + in_.length(); }
    std::size_t expected() const { return in_.expected() == 0 ? 0 : begin_ + in_.expected(); }

    void printNotes(std::size_t length) const {
        ::printNotes(in_.notes());
        if (this->length() < length)
            std::cerr << "vsps: " << in_.name()
                      << format(": ends %.2f s early, silent from there on\n",
                                double(length - this->length()) / in_.rate());
    }

  private:
    AudioReader in_;
    double seconds_;
    std::unique_ptr<Spool> kept_;
    std::size_t begin_ = 0, waiting_ = 0;  // samples of silence before it: all, and still to come
    Block block_;
};

struct Meters {
    explicit Meters(int rate) : far(rate), near(rate), echo(rate), noise(rate), out(rate) {}
    LevelMeter far, near, echo, noise, out;
};

std::optional<Loudspeaker> loudspeakerOf(const SimulateSettings& s, Talker& far) {
    if (!s.distortion) return {};
    const std::optional<ActiveLevel> level = far.activeLevel();
    return level ? std::optional(Loudspeaker(s.clipping, *s.distortion, level->dbov)) : std::nullopt;
}

// Both begin at once, and the line is as long as the longer one. Returns its length.
std::size_t simulate(Talker& far, Talker* near, LineSimulation& line, AudioWriter& out, Meters& meters) {
    Progress progress("making the echo", std::max(far.expected(), near != nullptr ? near->expected() : 0));
    std::size_t length = 0;
    for (Samples farEnd, nearEnd;;) {
        far.read(kBlockLength, farEnd);
        nearEnd.clear();
        if (near != nullptr) near->read(kBlockLength, nearEnd);
        const std::size_t count = std::max(farEnd.size(), nearEnd.size());
        if (count == 0) return length;
        farEnd.resize(count);
        nearEnd.resize(count);
        line.process(farEnd, nearEnd);
        out.write(line.out());
        meters.far.process(farEnd);
        meters.near.process(nearEnd);
        meters.echo.process(line.echo());
        meters.noise.process(line.noise());
        meters.out.process(line.out());
        progress.advance(count);
        length += count;
    }
}

void runSimulateEcho(Options& o) {
    SimulateSettings& s = o.settings;
    s.clipping = o.clipping == "soft" ? Clipping::soft : Clipping::hard;
    if (s.clipping == Clipping::hard && !s.distortion) throw UsageError{"--clipping", "needs --distortion"};
    const bool nobody = o.near == kNobody;
    const int format = outputFormat(o.out, o.input.rawRate != 0);
    refuseSameFiles({o.far, nobody ? "" : o.near, s.path}, {o.out});
    Talker far(openOneChannel(o.far, o.input), 0);
    std::optional<Talker> near;
    if (!nobody) near.emplace(openOneChannel(o.near, o.input), s.nearAt);
    const int rate = far.recording().fileRate() >= kWideband ? kWideband : kRate;
    far.convertTo(rate);
    if (near) near->convertTo(rate);
    const EchoPath path = loadEchoPath(s.path, s.echoReturnLoss, rate);
    printNotes(path.notes);

    const EchoFilter filter(path.response, std::size_t(std::lround(s.delay * rate / 1000)));
    LineSimulation line(filter, s.noise ? std::optional(NoiseSettings{*s.noise, s.seed}) : std::nullopt,
                        loudspeakerOf(s, far));
    AudioWriter out(o.out, format, rate, 1);
    Meters meters(rate);
    const std::size_t length = simulate(far, near ? &*near : nullptr, line, out, meters);
    far.printNotes(length);
    if (near) near->printNotes(length);
    const SimulateReport report{o.far,
                                nobody ? "" : o.near,
                                o.out,
                                s,
                                rate,
                                path.response.size(),
                                length,
                                measured(meters.far),
                                measured(meters.near),
                                measured(meters.echo),
                                measured(meters.noise),
                                measured(meters.out),
                                10 * std::log10(line.farEnergy() / line.echoEnergy()),
                                line.clipped()};
    out.commit();
    reportStream({o.out}) << (o.json ? toJson(report).text() : toText(report));
}

}  // namespace

void addSimulateEcho(CommandLine& vsps) {
    Command command =
        vsps.add("simulate-echo", "Makes the recording of a near end that sends back an echo of the far end.");
    const auto o = std::make_shared<Options>();
    SimulateSettings& s = o->settings;
    command.option("FAR", o->far, "Recording of what the far end says; one channel, any rate").required();
    command.option("NEAR", o->near, "Recording of the near-end talker; \"none\" if nobody talks").required();
    command
        .option("OUT", o->out,
                "Near end with echo and noise, at 16000 Hz if FAR has that rate or a higher one, else at 8000 Hz; the "
                "extension says how: " +
                    outputExtensions())
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
    command
        .option("--distortion", s.distortion,
                "Play FAR over a loudspeaker that distorts: total harmonic distortion of a sine of FAR's active level")
        .takes("%")
        .within(0.001, 40);
    command.option("--clipping", o->clipping, "How the loudspeaker distorts: y = a tanh(x/a), or cut off at a")
        .takes("soft|hard")
        .oneOf({"soft", "hard"})
        .showDefault();
    command.option("--near-at", s.nearAt, "When NEAR begins").takes("s").within(0, 36000).showDefault();
    addInputSettings(command, o->input, "FAR and NEAR");
    command.flag("--json", o->json, "Print a JSON object instead of text");
    command.footer(
        "OUT is NEAR + echo of FAR + noise, rounded once, and as long as the longer recording. FAR is the reference for "
        "an\n"
        "echo canceller, OUT its input. One of FAR and NEAR can be - for standard input. OUT can be - for standard "
        "output,\n"
        "a WAV file or, with --raw, 16-bit little-endian samples without a header; the report goes to standard error "
        "then.\n\n"
        "With a model the impulse response is h[n] = tap[n] K 10^(-ERL/20), with taps and K as published; the loss of a\n"
        "particular signal is some decibels more or less, and is reported. A FILE is scaled so that white noise has that\n"
        "loss: a .txt or .csv lists the taps at 8000 Hz, between blanks, commas or line ends, # begins a comment; any\n"
        "other is a recording of one channel. At most 4 s; all are converted to the rate of the line.\n\n"
        "Levels are active speech levels (ITU-T P.56) and mean levels, dB relative to full scale: a full-scale sine is\n"
        "at -3 dBov.\n\n"
        "Examples:\n"
        "  vsps simulate-echo far.wav none line.wav\n"
        "  vsps simulate-echo far.wav near.wav line.wav --near-at 8 --path d4 --erl 10 --noise -68\n"
        "  vsps simulate-echo far.flac near.flac room.wav --path kitchen.wav --erl 6 --delay 40 --distortion 5");
    command.run([o] { runSimulateEcho(*o); });
}
