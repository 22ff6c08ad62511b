// What vsps g168 has to say.
#pragma once

#include "console/json.h"
#include "g168/g168_tests.h"

struct G168Result {
    const G168Test* test;
    std::vector<double> measured;  // one for each path
};

struct G168Report {
    VspvEchoSettings canceller;
    double echoReturnLoss, delay;  // dB, ms
    std::vector<std::string> paths;
    std::vector<G168Result> results;
    double elapsedSeconds;
};

std::string toText(const G168Report& report);
Json toJson(const G168Report& report);
