// Times a pixel operation and a plain copy of the same number of bytes alternately in one run.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include <time.h>

/// Returns the CPU time of the calling thread, in seconds. Time spent waiting for a processor doesn't count.
inline double ThreadSeconds()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// Copies row by row, as image code does: a single memcpy of this size would bypass the caches.
inline void CopyRows(unsigned char *dst, const unsigned char *src, std::size_t bytes)
{
    constexpr std::size_t kRowBytes = 6000 * 16; // one row of a 24-megapixel float RGBA image
    for (std::size_t i = 0; i < bytes; i += kRowBytes)
        std::memcpy(dst + i, src + i, std::min(kRowBytes, bytes - i));
}

/// Times @p operation and a copy alternately, on the calling thread. The operation reads one part of @p block and
/// writes the rest; the copy, of the block's first half to its second, reads and writes as many bytes in all. Both use
/// the same memory, because its address affects times by up to 15 %. The copy may overwrite part of the operation's
/// source, so its time must not depend on the values there.
///
/// Reports megapixels per second over all runs and, as "ratio", the shortest time of the operation divided by that of
/// the copy, because other load on the machine affects the shortest times least.
template <typename Operation>
void MeasureAgainstCopy(benchmark::State &state, std::int64_t pixels, std::vector<unsigned char> &block,
                        Operation operation)
{
    const std::size_t half = block.size() / 2;
    double bestOperation = 1e9, bestCopy = 1e9;
    for (auto _ : state) {
        const double start = ThreadSeconds();
        CopyRows(block.data() + half, block.data(), half);
        benchmark::ClobberMemory();
        const double copied = ThreadSeconds();
        operation();
        benchmark::ClobberMemory();
        const double taken = ThreadSeconds() - copied;
        bestCopy = std::min(bestCopy, copied - start);
        bestOperation = std::min(bestOperation, taken);
        state.SetIterationTime(taken);
    }
    state.counters["ratio"] = bestOperation / bestCopy;
    state.counters["Mpixel/s"] =
        benchmark::Counter(static_cast<double>(pixels) * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
}
