// Runs the program vitrelux for a test and returns its results.
#pragma once

#include <QProcess>
#include <QStringList>

#include <functional>

/// Result of one run.
struct ProgramResult {
    int exitCode = -1; // -1: did not start, did not end in time, or was ended by a signal
    int signal = 0;    // the signal that ended it
    QByteArray output;
    QByteArray error;
    QStringList errorLines; // without the summary of several pictures
    QString summary;
};

/// One run of the program, in an environment without a display or home folder unless set otherwise.
class ProgramRun : public QProcess {
public:
    ProgramRun();

    /// The program to start; it may in turn start vitrelux.
    QString program;

    /// Called in the child process before the program starts, to set limits or drop rights. May only make system calls.
    std::function<void()> beforeStart;

    void Set(const char *variable, const QString &value);
    void Begin(const QStringList &arguments);
    ProgramResult Wait();
    ProgramResult Run(const QStringList &arguments);

protected:
    void setupChildProcess() override;

private:
    QProcessEnvironment m_environment;
};

/// Makes root subject to file permissions, like other users; for ProgramRun::beforeStart.
void RespectPermissions();
