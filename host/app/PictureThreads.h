// Correction of several pictures in parallel, for the command line and the wizard.
#pragma once

#include "KIPluginOne2One.h"

#include <functional>
#include <memory>
#include <vector>

class PluginLoader;

/// The process objects of a run, one per thread: a given one, and more of the same kind. Must be destroyed before the
/// plug-in.
class ThreadProcesses {
public:
    /// Provides up to @p count objects: only @p first if the plug-in cannot create more, none if @p first is null.
    ThreadProcesses(const PluginLoader &plugin, KIPluginOne2One *first, int count);

    /// Returns the process objects, the given one first.
    const std::vector<KIPluginOne2One *> &All() const { return m_all; }

private:
    std::vector<std::unique_ptr<QObject>> m_made;
    std::vector<KIPluginOne2One *> m_all;
};

/// Calls @p correct, which must not throw, for pictures 0 to @p count - 1 in this order: each thread takes the next
/// one when it is free. There is one thread per process object; the calling thread uses the first one. If the system
/// can't start some threads, continues without them. Returns when all calls have ended.
/// @param isStopped  called by any thread; once it returns true, no more pictures are started.
/// @return the number of pictures started.
int CorrectInTurn(const std::vector<KIPluginOne2One *> &processes, int count, const std::function<bool()> &isStopped,
                  const std::function<void(KIPluginOne2One *process, int index)> &correct);
