#include "audio/input_options.h"

#include <iostream>

#include "console/error.h"

namespace {
constexpr const char* kInput = "Recording: WAV, FLAC, AU, AIFF, ...; 16-bit, A-law, mu-law, float; any rate, any channels";
constexpr const char* kRaw =
    "IN has no header: one channel at RATE Hz, A-law in .al, mu-law in .ul, else 16-bit little-endian";
}  // namespace

std::optional<RawInput> rawInput(int rate) { return rate != 0 ? std::optional(RawInput{rate}) : std::nullopt; }

void printNotes(const std::vector<std::string>& notes) {
    for (const std::string& note : notes) std::cerr << "vsps: " << note << '\n';
}

Samples readOneChannel(const std::string& file, int rawRate) {
    Recording recording = readAudio(file, rawInput(rawRate));
    if (recording.channels.size() > 1)
        throw FileError(file, "has " + std::to_string(recording.channels.size()) + " channels; a telephone line has one");
    printNotes(recording.notes);
    return std::move(recording.channels[0]);
}

Recording InputOptions::read() const {
    Recording recording = readAudio(file, rawInput(rawRate));
    printNotes(recording.notes);
    return recording;
}

void addInput(Command& command, InputOptions& in) {
    command.option("IN", in.file, kInput).required();
    addRaw(command, in.rawRate, kRaw);
}

void addInput(Command& command, std::vector<std::string>& files, int& rawRate) {
    command.option("IN", files, kInput).required();
    addRaw(command, rawRate, kRaw);
}

void addRaw(Command& command, int& rawRate, const std::string& help) {
    command.option("--raw", rawRate, help).takes("RATE:INT in [1000 - 768000]").within(1000, 768000);
}
