// The recorded calls of described functions.
#pragma once

#include <ostream>

#include "support/call.h"

namespace vsp::test {

struct RecordedCall {
    Call call;
    int start = 0;  // of a stream: not 0 where its state is to be initialised
    VspStatus status = vspStsNoErr;

    // What an array is to hold afterwards, from an element on.
    struct Expected {
        Bytes bytes;
        std::size_t first = 0;
        double absolute = 0, relative = 0;  // tolerance of floats; relative to the largest
    };
    std::vector<std::optional<Expected>> expected;
    std::string label;
};

// A file with the functions that its calls are of.
struct RecordedFile {
    std::string name;
    std::vector<std::pair<const Function*, const Recording*>> users;

    bool stream() const { return users[0].second->stream; }
    std::vector<RecordedCall> calls() const;
};

std::vector<RecordedFile> recordedFiles();

inline std::ostream& operator<<(std::ostream& stream, const RecordedFile& file) { return stream << file.name; }

// What differs from the recording, or nothing.
std::string differenceOf(const RecordedCall& recorded, const Result& result);

}  // namespace vsp::test
