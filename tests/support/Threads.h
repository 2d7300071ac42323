// Runs several threads at once.
#pragma once

#include <thread>
#include <vector>

/// Runs work(0) to work(count - 1), each on a separate thread, and waits for all.
template <typename Work> void InThreads(int count, Work work)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back(work, i);
    for (std::thread &thread : threads)
        thread.join();
}
