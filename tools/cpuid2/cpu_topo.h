// Packages, cores, logical processors and caches of the machine, read with CPUID on each processor in turn.
#pragma once

#include "cpu_decode.h"

#include <memory>
#include <string>
#include <vector>

// There is one global record without a lock, so the first query must finish before other threads query. The first query
// of the counts runs on all processors in turn and leaves its thread pinned to the last one, so run it on a short-lived
// thread. The result, or the failure, stays until CPUIDExit().

constexpr unsigned MAX_CACHE_SUBLEAFS = 6;
constexpr unsigned MAX_LEAFS = 30;
constexpr unsigned MAX_CORES = 512; // per package

// Bits of CpuTopology::error. With any of them set, queries return their error value.
constexpr unsigned kTopologyGeneralError = 0x80000000u;
constexpr unsigned kTopologyLegacyError = 0x88000000u;   // AMD, several cores, no leaf 4: unknown identifier layout
constexpr unsigned kTopologyAnalysisError = 0xC0800000u; // no identifier was read
constexpr unsigned kTopologyAffinityError = 0xC1000000u; // the process may not run on every processor
constexpr unsigned kTopologyBindError = 0xC2000000u;

/// Table of counters.
struct CounterTable {
    std::vector<unsigned> data;
    unsigned dim[2] = {0, 0};

    void Allocate(unsigned rows, unsigned columns);
    bool Holds(unsigned row, unsigned column) const { return row < dim[0] && column < dim[1]; }
    /// Returns the counter; valid only if Holds().
    unsigned &At(unsigned row, unsigned column) { return data[size_t(row) * dim[1] + column]; }
};

/// One logical processor: the parts of its identifier, and their ordinals from 0.
struct CpuThreadRecord {
    unsigned apicId = 0;
    unsigned cpu = 0;
    unsigned packageId = 0;
    unsigned coreId = 0;
    unsigned smtId = 0;
    unsigned packageOrdinal = 0;
    unsigned coreOrdinal = 0;   // within the package
    unsigned threadOrdinal = 0; // within the core
    unsigned cacheSmtId[MAX_CACHE_SUBLEAFS] = {};
    unsigned cacheId[MAX_CACHE_SUBLEAFS] = {};
};

/// A set of processors, one bit each, of any size.
struct GenericAffinityMask {
    unsigned maxByteLength = 0;
    std::unique_ptr<unsigned char[]> bits;
};

/// All registers of one leaf.
struct CpuidLeafSnapshot {
    CpuidRegisters subleaf[MAX_CACHE_SUBLEAFS];
    unsigned subleafCount = 0;
};

/// The global record that all functions here use.
struct CpuTopology {
    std::vector<CpuThreadRecord> threadRecords;
    CounterTable perPkg_detectedCoresCount;
    CounterTable perCore_detectedThreadsCount;
    CounterTable perEachCache_detectedThreadCount;
    unsigned error = 0;
    unsigned osProcessorCount = 0;
    unsigned hasLeafB = 0;
    unsigned maxCacheSubleaf = 0;
    unsigned packageCount = 0;
    unsigned coreCount = 0;
    unsigned threadCount = 0;
    unsigned eachCacheCount[MAX_CACHE_SUBLEAFS] = {};
    unsigned smtMask = 0;
    unsigned packageMask = 0;
    unsigned coreMask = 0;
    unsigned packageShift = 0;
    unsigned smtWidth = 0;
    unsigned cacheMask[MAX_CACHE_SUBLEAFS] = {};
    unsigned cacheWidth[MAX_CACHE_SUBLEAFS] = {};
    unsigned hwmtThreadsPerCore = 0;
    unsigned hwmtThreadsPerPackage = 0;
    CpuidLeafSnapshot cpuidSnapshot[MAX_LEAFS];
    GenericAffinityMask processAffinity;
    GenericAffinityMask systemAffinity;
    std::vector<CacheDescription> cacheRecords; // one per cache index, for display
};

/// Null before CPUIDInit() and after CPUIDExit(); every query then returns the same as after an error.
extern CpuTopology *glbl_ptr;

/// Returns the record; the first call creates it.
CpuTopology *CPUIDInit();
void CPUIDExit();
/// Reads the topology once. If the data is inconsistent, prints the reason to standard output and sets
/// CpuTopology::error.
void InitCpuTopology();

// --- Queries: read the topology first if needed; return 0 after an error unless documented otherwise ---

unsigned GetSysLogicalProcessorCount();
unsigned GetSysProcessorCoreCount();
unsigned GetSysProcessorPackageCount();
/// Returns the number of processors that the system is configured for.
unsigned GetOSLogicalProcessorCount();
/// Returns the number of instances of the cache with that index.
unsigned GetSysEachCacheCount(unsigned subleaf);
/// Returns the number of logical processors that share one instance of a cache.
unsigned GetCoreCountPerEachCache(unsigned subleaf, unsigned cacheOrdinal);
/// Returns the number of cores of a package; 0 if there is no such package.
unsigned GetcoreCount(unsigned package);
/// Returns the number of logical processors of a core; cores are numbered within their package.
unsigned GetthreadCount(unsigned package, unsigned core);
/// Returns the APIC identifier; 0xFFFFFFFF after an error or past GetOSLogicalProcessorCount().
unsigned getEnumerateAPICID(unsigned index);
/// Returns the index of the first logical processor with these ordinals; -1 matches any. Returns 0 if there is none.
unsigned SlectOrdfromPkg(int package, int core, int thread);
/// Reads the number of threads per core and per package from a processor of @p package into the record. Returns 0, or
/// -1 if the package doesn't exist or the thread can't be pinned to it. Leaves the thread pinned to that processor.
int GetHWMTConfig(unsigned package);
/// Returns the size of a cache in bytes; 0 if @p maxCPUID is below 4. Needs no topology and pins no thread.
unsigned long long GetCacheTotalLize(unsigned maxCPUID, unsigned subleaf);
/// Returns the processor's name; some names have leading spaces. Needs no topology and pins no thread.
const char *GetCpuDescription();

// --- Steps of InitCpuTopology() ---

/// Pins the calling thread. Returns 0 or -1.
int BindContext(unsigned cpu);
unsigned GetMaxCPUSupportedByOS();
void _CPUID(CpuidRegisters *registers, unsigned leaf, unsigned subleaf);
/// Assigns ordinals to the parts of the first @p count identifiers. Returns 0, or -1 if @p count is 0.
int numberPackagesAndCores(unsigned count);
int numberCaches(unsigned subleaf, unsigned count);

// --- Masks ---

/// Allocates an empty mask with room for @p cpuCount processors. Returns 0 or -1.
int AllocateGenericAffinityMask(GenericAffinityMask *mask, unsigned cpuCount);
void FreeGenericAffinityMask(GenericAffinityMask *mask);
// Both return 0, or -1 for a processor past the mask, after printing an error to standard output.
int SetGenericAffinityBit(GenericAffinityMask *mask, unsigned cpu);
int ClearGenericAffinityBit(GenericAffinityMask *mask, unsigned cpu);
void ClearGenericAffinityMask(GenericAffinityMask *mask);
/// Returns 1 if the bit is set and 0 if not; 255 for a processor past the mask.
unsigned char TestGenericAffinityBit(const GenericAffinityMask *mask, unsigned cpu);
/// Returns whether both have the same size and the same processors.
bool CompareEqualGenericAffinity(const GenericAffinityMask *a, const GenericAffinityMask *b);

unsigned countBits(unsigned long long word);
/// Replaces each run of 32 zeros in hexadecimal digits with "z32", then each run of 16 with "z16".
std::string CompressHexMask(const std::string &digits);
/// Formats the mask in hexadecimal, highest processor first, without leading zeros, compressed.
std::string FormatHexMask(const GenericAffinityMask *mask);
/// Formats the mask of one processor in hexadecimal: a digit, then up to two zeros or "z" and the number of zeros.
std::string FormatSingleBitMask(unsigned cpu);
