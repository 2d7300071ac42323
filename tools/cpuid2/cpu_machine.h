// Access to the processors: the CPUID instruction and the binding of a thread. cpu_decode.h decodes the registers.
#pragma once

#include <array>

/// Result of one CPUID instruction.
struct CpuidRegisters {
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
};

/// One bit per logical processor, processor 0 in bit 0 of byte 0: 1024 processors, like cpu_set_t.
using AffinityBytes = std::array<unsigned char, 128>;

/// The machine whose topology is read. Tests substitute recorded registers of another machine.
class CpuMachine {
public:
    virtual ~CpuMachine();

    /// Returns the number of logical processors that the system is configured for, including those that are offline.
    virtual unsigned ProcessorCount() = 0;
    /// Reads the processors that the calling thread may run on; false if unknown.
    virtual bool Affinity(AffinityBytes *mask) = 0;
    /// Pins the calling thread to the processors of @p mask; false if the system refuses.
    virtual bool Bind(const AffinityBytes &mask) = 0;
    /// Runs CPUID on the processor of the calling thread.
    virtual CpuidRegisters Cpuid(unsigned leaf, unsigned subleaf) = 0;
};

/// Returns the machine that cpu_topo.h reads: the one we run on, unless SetCpuMachine() replaced it.
CpuMachine &CurrentCpuMachine();
/// Replaces the machine; null restores the one we run on. The caller keeps ownership. Don't call it while a query runs.
void SetCpuMachine(CpuMachine *machine);
