// The way of the far-end signal back into the near-end line.
#pragma once

#include <string>
#include <vector>

struct EchoPath {
    std::string name;
    std::vector<double> response;    // impulse response at the rate of the line
    std::vector<std::string> notes;  // what the user should know, a line each
};

// A model of G.168 by its name (d2 to d9), with the echo return loss, dB, as Annex D defines it; else a file, scaled so
// that white noise has that loss. The file is a list of numbers at 8 kHz (.txt, .csv) or a recording of one channel. All
// are converted to the rate of the line, Hz.
EchoPath loadEchoPath(const std::string& nameOrFile, double echoReturnLoss, int rate);
