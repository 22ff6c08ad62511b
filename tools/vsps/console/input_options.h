// The recordings that a command reads, and their options on the command line.
#pragma once

#include <CLI/CLI.hpp>
#include <iostream>

#include "audio/audio.h"

inline std::optional<RawInput> rawInput(int rate) { return rate != 0 ? std::optional(RawInput{rate}) : std::nullopt; }

// What reading has to say goes to stderr.
inline void printNotes(const std::vector<std::string>& notes) {
    for (const std::string& note : notes) std::cerr << "vsps: " << note << '\n';
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
