// Recordings in files: everything that libsndfile reads and writes, as 16-bit samples at 8000 Hz.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

constexpr int kRate = 8000;  // Hz, the rate of telephone speech and, unless it says otherwise, of what vsps processes

using Samples = std::vector<std::int16_t>;

struct Recording {
    int fileRate = kRate;  // Hz, before conversion
    int rate = kRate;      // Hz
    std::vector<Samples> channels;
    std::vector<std::string> notes;  // what the user should know, a line each

    std::size_t length() const { return channels.front().size(); }
    double seconds() const { return static_cast<double>(length()) / rate; }
};

// Headerless input: the encoding follows the name (.al .alaw .ul .ulaw, else 16-bit little-endian), one channel.
struct RawInput {
    int rate;  // Hz
};

// Reads and, unless the file has the other rate that will do, converts to 8000 Hz; clips samples beyond full scale. Both
// give a note.
Recording readAudio(const std::string& file, std::optional<RawInput> raw, int otherRate = kRate);

// The libsndfile format of an output, from the extension of its name.
int outputFormat(const std::string& file);
// The libsndfile format of headerless audio, from the extension of its name.
int rawFormat(const std::string& file);
// The extensions that outputFormat knows, for messages.
std::string outputExtensions();

// The bytes of a file that holds the channels at 8000 Hz. "file" names it in errors.
std::string encodeAudio(const std::vector<Samples>& channels, int format, const std::string& file);
