// Additional peak memory of a step. Linux only.
#pragma once

#include <malloc.h>

#include <cstdint>
#include <fstream>
#include <string>

/// Returns the number after a label in /proc/self/NAME, in the unit used there, usually KiB; 0 if the label is missing.
inline std::int64_t ProcessNumber(const char *name, const char *label)
{
    std::ifstream file(std::string("/proc/self/") + name);
    for (std::string word; file >> word;) {
        std::int64_t value = 0;
        if (word == label && file >> value)
            return value;
    }
    return 0;
}

/// Returns the peak resident memory during @p step minus the resident memory before it, in bytes.
template <typename Step> std::int64_t PeakBytes(Step step)
{
    malloc_trim(0);                                // freed blocks would hide the step's memory
    std::ofstream("/proc/self/clear_refs") << "5"; // resets VmHWM, the peak
    const std::int64_t before = ProcessNumber("status", "VmRSS:");
    step();
    return (ProcessNumber("status", "VmHWM:") - before) * 1024;
}
