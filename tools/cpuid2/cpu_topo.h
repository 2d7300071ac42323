// Packages, cores, logical processors and caches of the machine, by CPUID on each processor in turn.
#pragma once

#include "cpu_decode.h"

#include <memory>
#include <string>
#include <vector>

// Neither locks nor copies: one global record, one thread that asks first. The first query of the counts walks through
// all processors and leaves its thread pinned to the last one, so ask it on a thread that ends soon; what it found, or
// that it failed, stays until CPUIDExit().

constexpr unsigned MAX_CACHE_SUBLEAFS = 6;
constexpr unsigned MAX_LEAFS = 30;
constexpr unsigned MAX_CORES = 512; // of a package

// Bits of CpuTopology::error. Any of them makes all queries answer 0.
constexpr unsigned kTopologyGeneralError = 0x80000000u;
constexpr unsigned kTopologyLegacyError = 0x88000000u;   // a processor older than leaf 4 that numbers in its own way
constexpr unsigned kTopologyAnalysisError = 0xC0800000u; // identifiers that can't be numbered
constexpr unsigned kTopologyAffinityError = 0xC1000000u; // the process may not run on every processor
constexpr unsigned kTopologyBindError = 0xC2000000u;

/// Rows of counters.
struct CounterTable {
    std::vector<unsigned> data;
    unsigned dim[2] = {0, 0};

    void Allocate(unsigned rows, unsigned columns);
    bool Holds(unsigned row, unsigned column) const { return row < dim[0] && column < dim[1]; }
    /// The counter; only where Holds().
    unsigned &At(unsigned row, unsigned column) { return data[size_t(row) * dim[1] + column]; }
};

/// One logical processor: its identifier in parts, and the parts as ordinals from 0.
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

/// All answers of one leaf.
struct CpuidLeafSnapshot {
    CpuidRegisters subleaf[MAX_CACHE_SUBLEAFS];
    unsigned subleafCount = 0;
};

/// The one record behind all functions here.
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
    std::vector<CacheDescription> cacheRecords; // one a cache index, for display
};

/// Null before CPUIDInit() and after CPUIDExit(); every query then answers as after an error.
extern CpuTopology *glbl_ptr;

/// The record, made on the first call.
CpuTopology *CPUIDInit();
void CPUIDExit();
/// Does the work, once. An inconsistency is told on standard output and ends in CpuTopology::error.
void InitCpuTopology();

// --- Queries: ask for the topology if nobody has yet; 0 after an error ---

unsigned GetSysLogicalProcessorCount();
unsigned GetSysProcessorCoreCount();
unsigned GetSysProcessorPackageCount();
/// Processors that the system is set up for.
unsigned GetOSLogicalProcessorCount();
/// Instances of the cache with that index.
unsigned GetSysEachCacheCount(unsigned subleaf);
/// Logical processors that share one instance of a cache.
unsigned GetCoreCountPerEachCache(unsigned subleaf, unsigned cacheOrdinal);
/// Cores of a package; 0 if there is no such package.
unsigned GetcoreCount(unsigned package);
/// Logical processors of a core, which is counted within its package.
unsigned GetthreadCount(unsigned package, unsigned core);
/// 0xFFFFFFFF after an error or past GetOSLogicalProcessorCount().
unsigned getEnumerateAPICID(unsigned index);
/// Index of the first logical processor with these ordinals, -1 for any; 0 if there is none.
unsigned SlectOrdfromPkg(int package, int core, int thread);
/// Reads, on a processor of @p package, what the hardware says of threads in a core and in a package, into the record.
/// 0, or -1 for a package that isn't there or can't be reached. Leaves the thread pinned to that processor.
int GetHWMTConfig(unsigned package);
/// Bytes; 0 below leaf 4.
unsigned long long GetCacheTotalLize(unsigned maxCPUID, unsigned subleaf);
/// The processor's own name, with the leading blanks that some store. Needs no topology, binds nothing.
const char *GetCpuDescription();

// --- Steps of InitCpuTopology() ---

/// Pins the calling thread; 0, or -1.
int BindContext(unsigned cpu);
unsigned GetMaxCPUSupportedByOS();
void _CPUID(CpuidRegisters *registers, unsigned leaf, unsigned subleaf);
/// Ordinals out of the parts of the first @p count identifiers: 0, or -1 if there are none.
int numberPackagesAndCores(unsigned count);
int numberCaches(unsigned subleaf, unsigned count);

// --- Masks ---

/// A mask of no processors with room for @p cpuCount: 0, or -1.
int AllocateGenericAffinityMask(GenericAffinityMask *mask, unsigned cpuCount);
void FreeGenericAffinityMask(GenericAffinityMask *mask);
/// 0, or -1 for a processor past the mask, which is told on standard output; the same for clearing.
int SetGenericAffinityBit(GenericAffinityMask *mask, unsigned cpu);
int ClearGenericAffinityBit(GenericAffinityMask *mask, unsigned cpu);
void ClearGenericAffinityMask(GenericAffinityMask *mask);
/// 1, 0, or 255 for a processor past the mask.
unsigned char TestGenericAffinityBit(const GenericAffinityMask *mask, unsigned cpu);
/// Whether both have the same size and the same processors.
bool CompareEqualGenericAffinity(const GenericAffinityMask *a, const GenericAffinityMask *b);

unsigned countBits(unsigned long long word);
/// Hexadecimal digits with each run of 32, then of 16, zeros written as "z32" and "z16".
std::string CompressHexMask(const std::string &digits);
/// The mask in hexadecimal, highest processor first, without leading zeros, compressed.
std::string FormatHexMask(const GenericAffinityMask *mask);
/// The same for the one processor: its digit and up to two zeros, or "z" and how many zeros follow.
std::string FormatSingleBitMask(unsigned cpu);
