// The recordings that a command reads, and their options on the command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "audio/audio.h"
#include "console/options.h"

std::optional<RawInput> rawInput(int rate);

// What reading has to say goes to stderr.
void printNotes(const std::vector<std::string>& notes);

// A recording of one side of a telephone call.
Samples readOneChannel(const std::string& file, int rawRate);

struct InputOptions {
    std::string file;
    int rawRate = 0;  // Hz; 0 if the file has a header

    Recording read() const;
};

void addInput(Command& command, InputOptions& in);
void addInput(Command& command, std::vector<std::string>& files, int& rawRate);
// For a command that has its own options for its inputs: whether they have no header.
void addRaw(Command& command, int& rawRate, const std::string& help);
