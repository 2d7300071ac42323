// Runs the program vitrelux for a test, and tells what it did.
#pragma once

#include <QProcess>
#include <QStringList>

#include <functional>

/// What came of one run.
struct ProgramResult {
    int exitCode = -1; // -1: did not start, did not end in time, or ended by a signal
    int signal = 0;    // that ended it
    QByteArray output;
    QByteArray error;
    QStringList errorLines;
};

/// One run of the program, in an environment without display and home folder unless set otherwise.
class ProgramRun : public QProcess {
public:
    ProgramRun();

    /// What is started; another program may start vitrelux in its turn.
    QString program;

    /// To be called in the child before the program starts: limits, dropped rights. Plain system calls only.
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

/// For ProgramRun::beforeStart: takes root's right to write everywhere away; others never had it.
void RespectPermissions();
