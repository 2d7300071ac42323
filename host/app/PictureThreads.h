// Correction of several pictures in parallel, for the command line and the wizard.
#pragma once

#include "KIPluginOne2One.h"

#include <functional>
#include <memory>
#include <vector>

class PluginLoader;

/// The process objects of a run, one per thread: a given one, and others of the same kind. Destroy it before the
/// plug-in.
class ThreadProcesses {
public:
    /// Makes up to @p count in all; only @p first if the plug-in makes no others; none if @p first is null.
    ThreadProcesses(const PluginLoader &plugin, KIPluginOne2One *first, int count);

    /// The given one first.
    const std::vector<KIPluginOne2One *> &All() const { return m_all; }

private:
    std::vector<std::unique_ptr<QObject>> m_made;
    std::vector<KIPluginOne2One *> m_all;
};

/// Calls @p correct, which must not throw, for the pictures 0 to @p count - 1 in this order: each thread takes the next
/// one when it is free. There is one thread per process; the calling one has the first process. Threads that the system
/// doesn't start are done without. Returns when all calls have ended.
/// @param isStopped  any thread; once it is true, no more pictures are begun.
/// @return the number of pictures begun.
int CorrectInTurn(const std::vector<KIPluginOne2One *> &processes, int count, const std::function<bool()> &isStopped,
                  const std::function<void(KIPluginOne2One *process, int index)> &correct);
