// Work on several threads, its results in order.
#pragma once

#include <algorithm>
#include <atomic>
#include <future>
#include <thread>
#include <vector>

// Calls work(0), ..., work(count - 1) on so many threads, and here take(i, the future of the result) for one after the
// other, as soon as it is there.
template <typename Work, typename Take>
void inOrder(std::size_t count, std::size_t threads, const Work& work, const Take& take) {
    using Result = decltype(work(std::size_t()));
    std::vector<std::packaged_task<Result()>> tasks;
    std::vector<std::future<Result>> results;
    for (std::size_t i = 0; i < count; i++) {
        tasks.emplace_back([&work, i] { return work(i); });
        results.push_back(tasks.back().get_future());
    }
    std::atomic<std::size_t> next = 0;
    std::vector<std::jthread> workers;
    for (std::size_t t = 0; t < std::min(threads, count); t++)
        workers.emplace_back([&] {
            for (std::size_t i; (i = next++) < count;) tasks[i]();
        });
    for (std::size_t i = 0; i < count; i++) take(i, results[i]);
}
