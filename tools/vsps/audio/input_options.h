// The recordings that a command reads, and their options on the command line.
#pragma once

#include <string>
#include <vector>

#include "audio/audio_reader.h"
#include "console/options.h"

struct InputSettings {
    int rawRate = 0;  // Hz; 0 if the files have headers
    int channel = 0;  // the only one that is wanted, from 1; 0: all
};

// The input, or several into a vector, --raw and --channel.
void addInput(Command& command, std::string& file, InputSettings& settings);
void addInput(Command& command, std::vector<std::string>& files, InputSettings& settings);
// For a command that names its inputs itself, which have one channel; "inputs" is what its help calls them.
void addInputSettings(Command& command, InputSettings& settings, const std::string& inputs);

AudioReader openInput(const std::string& file, const InputSettings& settings);
// A recording of one side of a telephone call: of several channels one has to be chosen.
AudioReader openOneChannel(const std::string& file, const InputSettings& settings);

// What reading has to say goes to stderr.
void printNotes(const std::vector<std::string>& notes);
