// The recording that a command reads, and its options on the command line.
#pragma once

#include <CLI/CLI.hpp>

#include "audio.h"

struct InputOptions {
    std::string file;
    int rawRate = 0;  // Hz; 0 if the file has a header

    Recording read() const { return readAudio(file, rawRate != 0 ? std::optional(RawInput{rawRate}) : std::nullopt); }
};

inline void addInput(CLI::App& command, InputOptions& in) {
    command
        .add_option("IN", in.file,
                    "Recording: WAV, FLAC, AU, AIFF, ...; 16-bit, A-law, mu-law, float; any rate, any channels")
        ->required();
    command
        .add_option("--raw", in.rawRate,
                    "IN has no header: one channel at RATE Hz, A-law in .al, mu-law in .ul, else 16-bit little-endian")
        ->type_name("RATE")
        ->check(CLI::Range(1000, 768000));
}
