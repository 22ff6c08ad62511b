// The tests of ITU-T G.168 clause 6 that can be made without a telephone line, and those of its tone disabler.
#pragma once

#include <span>

#include "g168/test_call.h"

enum class Origin { quoted, ours };  // of a limit: as the Recommendation's is generally quoted, or chosen here

struct G168Test {
    const char* clause;  // number of the test, as in "2B"
    const char* what;
    const char* unit;
    double least, most;  // what passes; infinite if it has no such limit
    Origin origin;
    bool suppresses;  // the suppressor is on
    double (*measure)(const TestLine& line);

    bool passes(double measured) const { return measured >= least && measured <= most; }
};

std::span<const G168Test> g168Tests();
