// How a program of comparisons ends.
#pragma once

#include <cstdio>
#include <exception>

// The result of run(), or 1 after a message if it throws.
inline int runProgram(int (*run)(int, char**), int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s: %s\n", argv[0], e.what());
        return 1;
    }
}
