// The files of a command that takes several.
#pragma once

#include <iostream>
#include <optional>
#include <string>

#include "console/in_order.h"
#include "console/progress.h"

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
