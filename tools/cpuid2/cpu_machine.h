// Reading the processors: the CPUID instruction and the binding of a thread, apart from what the registers mean.
#pragma once

#include <array>

/// What one CPUID instruction answers.
struct CpuidRegisters {
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
};

/// One bit a logical processor, processor 0 in bit 0 of byte 0: 1024 processors, as sched_setaffinity's own type.
using AffinityBytes = std::array<unsigned char, 128>;

/// The processors that the topology is asked of. Recorded registers of another machine take its place in tests.
class CpuMachine {
public:
    virtual ~CpuMachine();

    /// Logical processors that the system is set up for, those that are switched off included.
    virtual unsigned ProcessorCount() = 0;
    /// Processors that the calling thread may run on; false if the system doesn't tell.
    virtual bool Affinity(AffinityBytes *mask) = 0;
    /// Pins the calling thread to the processors of @p mask; false if the system refuses.
    virtual bool Bind(const AffinityBytes &mask) = 0;
    /// What the processor that runs the calling thread answers.
    virtual CpuidRegisters Cpuid(unsigned leaf, unsigned subleaf) = 0;
};

/// The machine that all of cpu_topo.h asks: this one, unless SetCpuMachine() put another in its place.
CpuMachine &CurrentCpuMachine();
/// Null: this machine again. The caller keeps ownership. Not while a query runs.
void SetCpuMachine(CpuMachine *machine);
