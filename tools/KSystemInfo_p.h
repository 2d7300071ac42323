// Arithmetic and files behind KSystemInfo's queries, apart from the machine they are asked of.
#pragma once

/// See KSystemInfo::maxCacheSize(); in single precision.
unsigned long long CacheBytesAllowed(unsigned long long freeBytes);
/// @p bytes up to whole memory modules of 128 MiB: the system keeps a part to itself and doesn't count it.
unsigned long long InstalledBytes(unsigned long long bytes);
/// Bytes that a file like /proc/meminfo tells as free, buffers and cached; 0 without the file.
unsigned long long FreeBytesTold(const char *meminfo);
/// Whether the program answers to "--version": it is started, and what it says goes to our standard output.
enum class Runnable { Yes, No, Unknown };
Runnable IsRunnable(const char *program);
