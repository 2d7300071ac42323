// Decoding of CPUID registers: how an APIC identifier splits into package, core and thread, and the properties of a
// cache. Sources: Intel SDM volume 2A, CPUID; AMD APM volume 3, appendix E. Only reads registers; binds no thread.
#pragma once

#include "cpu_machine.h"

#include <string>

/// How an APIC identifier splits. Masks apply to the identifier; shifts are in bits.
struct ApicFields {
    unsigned smtMask = 0;
    unsigned coreMask = 0;
    unsigned packageMask = ~0u;
    unsigned packageShift = 0;
    unsigned smtWidth = 0;
    unsigned error = 0; // 0 or one of the error bits of cpu_topo.h
};

/// One entry of the cache leaf.
struct CacheDescription {
    unsigned level = 0;
    unsigned type = 0; // 0 none, 1 data, 2 instruction, 3 unified
    unsigned sizeKb = 0;
    unsigned sharingCount = 0; // number of identifiers reserved for the processors that share the cache, at least 1
    std::string shortName;     // "L1D"
    std::string longName;      // "Level 1 Data cache, size(KBytes)= 32"
};

/// Returns bits @p from to @p to, both inclusive, counted from 0; 0 for an invalid range.
unsigned getBitsFromDWORD(unsigned value, unsigned from, unsigned to);
/// Returns 1 and the index of the highest set bit; 0 and index 0 if there is none.
unsigned char myBitScanReverse(unsigned *index, unsigned value);
/// Returns the number of bits needed to number @p count items: the index of the highest set bit of 2 * count - 1.
unsigned WidthOf(unsigned count);

unsigned MaxLeaf(CpuMachine &machine);
/// Returns whether leaf 11 exists and is not empty.
bool HasLeafB(CpuMachine &machine);
/// Returns whether leaf 1 flags several logical processors per package.
bool HasMultiThreading(CpuMachine &machine);
/// Returns the identifier of the processor that runs the calling thread: 32 bits with leaf 11, 8 bits without.
unsigned ApicId(CpuMachine &machine, bool hasLeafB);

/// Reads the fields from leaf 11.
ApicFields LeafBFields(CpuMachine &machine);
/// Reads the fields from leaves 1 and 4, or from the extended leaves on AMD processors, whose leaf 4 is empty.
ApicFields LegacyFields(CpuMachine &machine);

/// Returns the leaf that lists the caches: 4, or 0x8000001D, in the same form, on AMD processors with topology
/// extensions.
unsigned CacheLeaf(CpuMachine &machine);
/// Decodes entry @p subleaf of the cache leaf; type 0 after the last one.
CacheDescription DescribeCache(CpuMachine &machine, unsigned subleaf);
/// Returns the size in bytes: sets x ways x partitions x line size.
unsigned long long CacheBytes(const CpuidRegisters &cacheLeaf);
