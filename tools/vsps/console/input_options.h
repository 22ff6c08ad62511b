// The recordings that a command reads, and their options on the command line.
#pragma once

#include <CLI/CLI.hpp>
#include <iostream>

#include "audio/audio.h"
#include "console/error.h"
#include "console/report_format.h"

inline std::optional<RawInput> rawInput(int rate) { return rate != 0 ? std::optional(RawInput{rate}) : std::nullopt; }

// What reading has to say goes to stderr.
inline void printNotes(const std::vector<std::string>& notes) {
    for (const std::string& note : notes) std::cerr << "vsps: " << note << '\n';
}

// A recording of one side of a telephone call.
inline Samples readOneChannel(const std::string& file, int rawRate) {
    Recording recording = readAudio(file, rawInput(rawRate));
    if (recording.channels.size() > 1)
        throw FileError(file, "has " + std::to_string(recording.channels.size()) + " channels; a telephone line has one");
    printNotes(recording.notes);
    return std::move(recording.channels[0]);
}

// For numbers. NaN is within no bounds, unlike with CLI::Range.
inline CLI::Validator within(double lowest, double highest) {
    return CLI::Validator(
        [=](std::string& text) {
            double value = 0;
            if (CLI::detail::lexical_cast(text, value) && value >= lowest && value <= highest) return std::string();
            return format("'%s' is not a number from %g to %g", text.c_str(), lowest, highest);
        },
        "");
}

struct InputOptions {
    std::string file;
    int rawRate = 0;  // Hz; 0 if the file has a header

    Recording read() const {
        Recording recording = readAudio(file, rawInput(rawRate));
        printNotes(recording.notes);
        return recording;
    }
};

// One file or, into a vector, several.
template <typename Files>
void addInput(CLI::App& command, Files& files, int& rawRate) {
    command
        .add_option("IN", files,
                    "Recording: WAV, FLAC, AU, AIFF, ...; 16-bit, A-law, mu-law, float; any rate, any channels")
        ->required();
    command
        .add_option("--raw", rawRate,
                    "IN has no header: one channel at RATE Hz, A-law in .al, mu-law in .ul, else 16-bit little-endian")
        ->type_name("RATE")
        ->check(CLI::Range(1000, 768000));
}

inline void addInput(CLI::App& command, InputOptions& in) { addInput(command, in.file, in.rawRate); }
