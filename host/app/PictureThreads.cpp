#include "PictureThreads.h"

#include "PluginLoader.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>

ThreadProcesses::ThreadProcesses(const PluginLoader &plugin, KIPluginOne2One *first, int count)
{
    if (!first)
        return;
    m_all.push_back(first);
    for (int i = 1; i < count; ++i) {
        m_made.push_back(plugin.MakeProcess());
        if (auto *process = qobject_cast<KIPluginOne2One *>(m_made.back().get()))
            m_all.push_back(process);
    }
}

int CorrectInTurn(const std::vector<KIPluginOne2One *> &processes, int count, const std::function<bool()> &isStopped,
                  const std::function<void(KIPluginOne2One *process, int index)> &correct)
{
    std::atomic<int> next{0};
    const auto takePictures = [&](KIPluginOne2One *process) {
        while (!isStopped()) {
            const int index = next++;
            if (index >= count)
                return;
            correct(process, index);
        }
    };
    std::vector<std::thread> others;
    try {
        for (std::size_t i = 1; i < processes.size(); ++i)
            others.emplace_back(takePictures, processes[i]);
    } catch (const std::system_error &) {
        // Continue with the threads that started; this one always works.
    }
    takePictures(processes.front());
    for (std::thread &other : others)
        other.join();
    return std::min<int>(next, count);
}
