// CPUID registers of processors that we don't have, built field by field from the published documentation.
#pragma once

#include "cpuid2/cpu_machine.h"

#include <map>
#include <utility>
#include <vector>

/// One entry of leaf 4 or 0x8000001D.
struct RecordedCache {
    unsigned level;
    unsigned type; // 1 data, 2 instruction, 3 unified
    unsigned sharing;
    unsigned sets;
    unsigned ways;
    unsigned lineBytes = 64;
};

/// One level of leaf 11.
struct RecordedLevel {
    unsigned type; // 1 thread, 2 core, then module and die
    unsigned shift;
    unsigned processors;
};

/// A machine whose processors differ only in their identifiers. By default any thread may run on any of them.
class RecordedMachine : public CpuMachine {
public:
    enum Vendor { Intel, Amd };

    RecordedMachine(Vendor vendor, unsigned maxLeaf, std::vector<unsigned> apicIds);

    /// Sets leaf 1: the multithreading flag, which is clear by default, and the number of identifiers reserved for a
    /// package.
    RecordedMachine &PerPackage(unsigned identifiers);
    /// Sets leaf 4, including the number of identifiers reserved for cores.
    RecordedMachine &Caches(unsigned coreIdentifiers, const std::vector<RecordedCache> &caches);
    RecordedMachine &Levels(const std::vector<RecordedLevel> &levels);
    /// Sets the extended leaves with the topology of an AMD processor without leaf 11.
    RecordedMachine &AmdCores(unsigned family, unsigned threads, unsigned idWidth);
    /// Sets the topology extensions: leaf 0x8000001D, and the threads per core in 0x8000001E.
    RecordedMachine &AmdExtensions(unsigned threadsPerCore, const std::vector<RecordedCache> &caches);
    RecordedMachine &Set(unsigned leaf, unsigned subleaf, const CpuidRegisters &registers);

    unsigned ProcessorCount() override { return static_cast<unsigned>(m_apicIds.size()); }
    bool Affinity(AffinityBytes *mask) override;
    bool Bind(const AffinityBytes &mask) override;
    CpuidRegisters Cpuid(unsigned leaf, unsigned subleaf) override;

    int forbiddenCpu = -1;  // the process may not run there
    int unbindableCpu = -1; // allowed, but binding fails
    int bindings = 0;
    unsigned current = 0;

private:
    CpuidRegisters &At(unsigned leaf, unsigned subleaf) { return m_leaves[{leaf, subleaf}]; }
    void ListCaches(unsigned leaf, const std::vector<RecordedCache> &caches);

    std::vector<unsigned> m_apicIds;
    bool m_hasLeafB = false;
    std::map<std::pair<unsigned, unsigned>, CpuidRegisters> m_leaves;
};
