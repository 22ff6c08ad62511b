// The files of a command that takes several.
#pragma once

#include <filesystem>
#include <iostream>
#include <optional>
#include <string>

#include "console/in_order.h"
#include "console/progress.h"

// In the name of an output it stands for the name of the input without folder and extension.
inline constexpr const char* kNamePlace = "{}";

inline bool hasNamePlace(const std::string& pattern) { return pattern.find(kNamePlace) != std::string::npos; }

inline std::string nameFor(std::string pattern, const std::string& input) {
    const std::string name = std::filesystem::path(input).stem();
    for (std::size_t at = 0; (at = pattern.find(kNamePlace, at)) != std::string::npos; at += name.size())
        pattern.replace(at, 2, name);
    return pattern;
}

// Calls work(0), ..., work(count - 1) on so many threads and here show(result) for one after the other. What fails is
// reported and the rest goes on. Tells whether all went well. `what` names the work while it takes long.
template <typename Work, typename Show>
bool processFiles(std::size_t count, std::size_t threads, const std::string& what, const Work& work, const Show& show) {
    std::optional<Progress> progress;  // over the files; a single one has its own
    if (count > 1) progress.emplace(what, count);
    bool good = true;
    inOrder(count, threads, work, [&](std::size_t, auto& future) {
        try {
            const auto result = future.get();
            if (progress) progress->hide();
            show(result);
        } catch (const std::exception& e) {
            if (progress) progress->hide();
            std::cerr << "vsps: " << e.what() << '\n';
            good = false;
        }
        if (progress) progress->advance(1);
    });
    return good;
}
