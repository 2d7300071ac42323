#include "thread_count.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace imagefile {

namespace {

constexpr int kMaxThreads = 64;
std::atomic<int> threadCount{0};

} // namespace

int ThreadCount()
{
    const int threads = threadCount.load(std::memory_order_relaxed);
    return std::clamp(threads > 0 ? threads : static_cast<int>(std::thread::hardware_concurrency()), 1, kMaxThreads);
}

void SetThreadCount(int threads)
{
    threadCount.store(threads, std::memory_order_relaxed);
}

} // namespace imagefile
