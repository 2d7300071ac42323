#include "InterruptGuard.h"

#include "PrivateFolder.h"

#include <system_error>

#include <unistd.h>

namespace {

/// Removes a folder. Worker threads continue and may add files, so this repeats until the folder is removed;
/// after that nothing can be created in it.
void RemoveForGood(const QString &folder)
{
    constexpr int kAttempts = 100;
    QString why = RemoveFolder(folder);
    for (int i = 1; i < kAttempts && !why.isEmpty(); ++i) {
        usleep(1000);
        why = RemoveFolder(folder);
    }
    if (!why.isEmpty())
        PrintNotRemoved(folder, why);
}

sigset_t SignalsNotIgnored()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        struct sigaction current;
        if (sigaction(number, nullptr, &current) == 0 && current.sa_handler != SIG_IGN)
            sigaddset(&signals, number);
    }
    return signals;
}

std::atomic<InterruptGuard *> g_guard{nullptr}; // the existing guard, if any

} // namespace

InterruptGuard::InterruptGuard() : m_signals(SignalsNotIgnored())
{
    sigaddset(&m_signals, SIGUSR1); // for internal use: wakes the guard's thread
    pthread_sigmask(SIG_BLOCK, &m_signals, &m_oldMask);
    try {
        m_watch = std::thread(&InterruptGuard::Watch, this);
    } catch (const std::system_error &) { // without a thread, an interruption leaves the folders behind
        pthread_sigmask(SIG_SETMASK, &m_oldMask, nullptr);
        sigemptyset(&m_signals);
    }
    g_guard = this;
}

InterruptGuard::~InterruptGuard()
{
    g_guard = nullptr;
    if (!m_watch.joinable())
        return;
    m_stop = true;
    pthread_kill(m_watch.native_handle(), SIGUSR1);
    m_watch.join();
    pthread_sigmask(SIG_SETMASK, &m_oldMask, nullptr);
}

void InterruptGuard::Protect(const std::function<QString()> &makeFolder)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_folders.append(makeFolder());
}

void InterruptGuard::Release(const QString &folder)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_folders.removeAll(folder);
}

void InterruptGuard::StartProgram(const std::function<void()> &start)
{
    pthread_sigmask(SIG_SETMASK, &m_oldMask, nullptr);
    start();
    pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
}

void InterruptGuard::FinishOnInterrupt(std::function<void()> onInterrupt)
{
    const std::lock_guard<std::mutex> lock(m_onInterruptMutex);
    m_onInterrupt = std::move(onInterrupt);
}

/// Calls the callback for the first SIGINT. @return whether this is the first one, which must not end the program.
bool InterruptGuard::TakeFirstInterrupt()
{
    const std::lock_guard<std::mutex> lock(m_onInterruptMutex);
    if (!m_onInterrupt || m_askedToStop.exchange(true))
        return false;
    m_onInterrupt();
    return true;
}

void InterruptGuard::EndAsInterrupted()
{
    std::signal(SIGINT, SIG_DFL);
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    pthread_sigmask(SIG_UNBLOCK, &interrupt, nullptr);
    std::raise(SIGINT);
}

void InterruptGuard::RemoveAll()
{
    for (const QString &folder : qAsConst(m_folders)) {
        if (!folder.isEmpty())
            RemoveForGood(folder);
    }
}

void InterruptGuard::RemoveFolders() noexcept
{
    InterruptGuard *const guard = g_guard;
    if (!guard || !guard->m_mutex.try_lock()) // never unlocked: no new folder from here on
        return;
    try {
        guard->RemoveAll();
    } catch (...) { // out of memory: the next run in the same output folder removes the rest
    }
}

void InterruptGuard::Watch()
{
    int number = 0;
    while (sigwait(&m_signals, &number) == 0 && !m_stop) {
        if (number == SIGUSR1)
            continue; // sent by another process
        if (number == SIGINT && TakeFirstInterrupt())
            continue;
        m_mutex.lock(); // never unlocked: no new folder from here on
        RemoveAll();
        std::signal(number, SIG_DFL);
        pthread_sigmask(SIG_UNBLOCK, &m_signals, nullptr);
        std::raise(number); // goes to this thread, which no longer blocks it: ends the program
    }
}
