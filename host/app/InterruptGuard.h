// Removes work folders when the user interrupts the program.
#pragma once

#include <QStringList>

#include <atomic>
#include <csignal>
#include <functional>
#include <mutex>
#include <thread>

/// Signal handler: while it exists, SIGINT, SIGTERM, SIGHUP and SIGPIPE first remove the protected folders and then end
/// the program in the usual way, so that a shell sees the reason. A signal that was ignored at startup stays ignored.
/// Create it before any other thread, because threads inherit the signal mask that it sets. One object at a time.
///
/// SIGPIPE goes to the thread that wrote, which has it blocked and only sees EPIPE: that thread must send the signal to
/// the process.
class InterruptGuard {
public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard &) = delete;
    InterruptGuard &operator=(const InterruptGuard &) = delete;

    /// Calls @p makeFolder, which creates a folder and returns its path, and protects that folder from then on.
    /// Whenever an interruption happens, the folder either does not exist yet or is protected. An empty path protects
    /// nothing.
    void Protect(const std::function<QString()> &makeFolder);
    /// Stops protecting a folder that was removed or should be kept.
    void Release(const QString &folder);
    /// Calls @p start with the signal mask from before the guard: a program started by it inherits the mask, and one
    /// that blocks SIGTERM would outlive its session.
    void StartProgram(const std::function<void()> &start);
    /// Makes the first SIGINT only call @p onInterrupt, on the guard's thread, and set IsAskedToStop(), so that work in
    /// progress can finish. The second SIGINT ends the program. Call it before other threads start.
    void FinishOnInterrupt(std::function<void()> onInterrupt);
    bool IsAskedToStop() const { return m_askedToStop; }
    /// Ends the program by SIGINT, so that a shell's loop ends too. Doesn't remove the protected folders.
    void EndAsInterrupted();
    /// Removes the protected folders of the existing guard, for a program that ends immediately. Does nothing while
    /// another thread creates or releases one.
    static void RemoveFolders() noexcept;

private:
    void Watch();
    bool TakeFirstInterrupt();
    void RemoveAll();

    std::mutex m_mutex; // guards m_folders; never unlocked after an interruption
    QStringList m_folders;
    sigset_t m_signals;
    sigset_t m_oldMask;
    std::atomic<bool> m_stop{false}, m_askedToStop{false};
    std::mutex m_onInterruptMutex;       // guards m_onInterrupt
    std::function<void()> m_onInterrupt; // empty: the first SIGINT ends the program
    std::thread m_watch;                 // last member, because it uses the others
};
