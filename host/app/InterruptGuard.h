// Lets the user break the program off without leaving its work folders behind.
#pragma once

#include <QStringList>

#include <atomic>
#include <csignal>
#include <functional>
#include <mutex>
#include <thread>

/// While it lives, SIGINT, SIGTERM, SIGHUP and SIGPIPE first remove the protected folders and then end the program as
/// they always do, so that a shell sees why it ended. A signal that was ignored at the start stays ignored. To be made
/// before any other thread: threads inherit the signal mask that it sets. One at a time.
///
/// SIGPIPE is for the thread that wrote, which has it blocked and only sees EPIPE: it has to send the signal to the
/// process.
class InterruptGuard {
public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard &) = delete;
    InterruptGuard &operator=(const InterruptGuard &) = delete;

    /// Calls @p makeFolder, which gives the path of the folder that it made, and protects that folder too from then on.
    /// An interruption finds the folder either not yet made or protected. An empty path protects nothing.
    void Protect(const std::function<QString()> &makeFolder);
    /// The folder is gone, or is to stay.
    void Release(const QString &folder);
    /// Calls @p start with the signals as they were before the guard: a program that it starts inherits them, and one
    /// that is deaf to SIGTERM would outlive its session.
    void StartProgram(const std::function<void()> &start);
    /// Removes the protected folders of the guard that lives, for a program that ends here and now. Does nothing while
    /// another thread makes or releases one.
    static void RemoveFolders() noexcept;

private:
    void Watch();
    void RemoveAll();

    std::mutex m_mutex; // of m_folders; an interruption keeps it until the end
    QStringList m_folders;
    sigset_t m_signals;
    sigset_t m_oldMask;
    std::atomic<bool> m_stop{false};
    std::thread m_watch; // the last member: it uses the others
};
