// Parts of KSystemInfo's queries that take their input as arguments, so that tests can call them.
#pragma once

/// Computes KSystemInfo::maxCacheSize() in single precision.
unsigned long long CacheBytesAllowed(unsigned long long freeBytes);
/// Rounds @p bytes up to whole memory modules of 128 MiB, because the system doesn't report the memory that it
/// reserves.
unsigned long long InstalledBytes(unsigned long long bytes);
/// Returns the free, buffer and cached bytes in a file like /proc/meminfo; 0 without the file.
unsigned long long FreeBytesReported(const char *meminfo);
/// Whether a program can be started. IsRunnable() runs it with "--version", which prints to our standard output.
enum class Runnable { Yes, No, Unknown };
Runnable IsRunnable(const char *program);
