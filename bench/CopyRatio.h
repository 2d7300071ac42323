// Times a pixel operation against a plain copy of as many bytes, turn by turn in one run.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <vector>

/// Runs @p operation, which reads and writes @p bytesMoved bytes together, and beside it a memcpy that moves the same:
/// half of them read, half written. Reported are megapixels a second over all runs, and as "ratio" the shortest time of
/// the operation over the shortest of the copy, which other load on the machine disturbs least.
template <typename Operation>
void MeasureAgainstCopy(benchmark::State &state, std::int64_t pixels, std::int64_t bytesMoved, Operation operation)
{
    using Clock = std::chrono::steady_clock;
    const auto seconds = [](Clock::time_point from) {
        return std::chrono::duration<double>(Clock::now() - from).count();
    };
    std::vector<unsigned char> from(static_cast<std::size_t>(bytesMoved / 2), 1), to(from.size(), 2); // pages touched
    double bestOperation = 1e9, bestCopy = 1e9;
    for (auto _ : state) {
        const Clock::time_point copyStart = Clock::now();
        std::memcpy(to.data(), from.data(), to.size());
        benchmark::ClobberMemory();
        bestCopy = std::min(bestCopy, seconds(copyStart));

        const Clock::time_point operationStart = Clock::now();
        operation();
        benchmark::ClobberMemory();
        const double taken = seconds(operationStart);
        bestOperation = std::min(bestOperation, taken);
        state.SetIterationTime(taken);
    }
    state.counters["ratio"] = bestOperation / bestCopy;
    state.counters["Mpixel/s"] =
        benchmark::Counter(static_cast<double>(pixels) * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
}
