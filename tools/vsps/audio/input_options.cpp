#include "audio/input_options.h"

#include <iostream>

#include "console/error.h"

namespace {

constexpr const char* kInput =
    "Recording: WAV, FLAC, AU, AIFF, ...; 16-bit, A-law, mu-law, float; any rate, any channels; - is standard input";

void addRaw(Command& command, int& rawRate, const std::string& inputs) {
    command
        .option("--raw", rawRate,
                inputs + " no header: one channel at RATE Hz, A-law in .al, mu-law in .ul, else 16-bit little-endian")
        .takes("RATE:INT in [1000 - 768000]")
        .within(1000, 768000);
}

void addChannel(Command& command, int& channel, const std::string& help) {
    command.option("--channel", channel, help).takes("N").within(1, 1024, "the number of a channel");
}

void addSettings(Command& command, InputSettings& settings) {
    addRaw(command, settings.rawRate, "IN has");
    addChannel(command, settings.channel, "Only channel N of IN, from 1");
}

}  // namespace

void addInput(Command& command, std::string& file, InputSettings& settings) {
    command.option("IN", file, kInput).required();
    addSettings(command, settings);
}

void addInput(Command& command, std::vector<std::string>& files, InputSettings& settings) {
    command.option("IN", files, kInput).required();
    addSettings(command, settings);
}

void addInputSettings(Command& command, InputSettings& settings, const std::string& inputs) {
    addRaw(command, settings.rawRate, inputs + " have");
    addChannel(command, settings.channel, "Of " + inputs + " with several channels, take channel N, from 1");
}

AudioReader openInput(const std::string& file, const InputSettings& settings) {
    AudioReader in({file, settings.rawRate});
    if (settings.channel != 0) in.select(settings.channel);
    return in;
}

AudioReader openOneChannel(const std::string& file, const InputSettings& settings) {
    AudioReader in({file, settings.rawRate});
    if (in.channels() == 1) return in;
    if (settings.channel == 0)
        throw FileError(in.name(), "has " + std::to_string(in.channels()) +
                                       " channels; a telephone line has one: choose it with --channel N");
    in.select(settings.channel);
    return in;
}

void printNotes(const std::vector<std::string>& notes) {
    for (const std::string& note : notes) std::cerr << "vsps: " << note << '\n';
}
