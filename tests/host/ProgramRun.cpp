#include "ProgramRun.h"

#include "TestFiles.h"

#include <QRegularExpression>

#include <sys/prctl.h>
#include <sys/wait.h>

namespace {

constexpr int kCapDacOverride = 1; // linux/capability.h
constexpr int kCapDacReadSearch = 2;

} // namespace

ProgramRun::ProgramRun() : program(QStringLiteral(VITRELUX_PROGRAM))
{
    const QProcessEnvironment system = QProcessEnvironment::systemEnvironment();
    for (const char *kept : {"PATH", "LD_LIBRARY_PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS",
                             "GCOV_ERROR_FILE"}) {
        const QString name = QString::fromLatin1(kept);
        if (system.contains(name))
            m_environment.insert(name, system.value(name));
    }
    // Otherwise the leak checker lists Qt's suppressed leaks on standard error, which tests check.
    const QString leaks = QStringLiteral("LSAN_OPTIONS");
    m_environment.insert(leaks, m_environment.value(leaks) + QStringLiteral(":print_suppressions=0"));
    // A locale with a decimal comma: nothing that the program writes may depend on it.
    m_environment.insert(QStringLiteral("LOCPATH"), QStringLiteral(VITRELUX_LOCALES));
    m_environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("de_DE.UTF-8"));
    setWorkingDirectory(QStringLiteral("/"));
}

void ProgramRun::Set(const char *variable, const QString &value)
{
    m_environment.insert(QString::fromLatin1(variable), value);
}

void ProgramRun::Begin(const QStringList &arguments)
{
    setProcessEnvironment(m_environment);
    start(program, arguments);
    waitForStarted();
}

ProgramResult ProgramRun::Wait()
{
    constexpr int kLimitMs = 120000;
    ProgramResult result;
    if (!waitForFinished(kLimitMs))
        return result;
    if (exitStatus() == QProcess::NormalExit)
        result.exitCode = exitCode();
    else
        result.signal = exitCode();
    result.output = readAllStandardOutput();
    result.error = readAllStandardError();
    result.errorLines = QString::fromUtf8(result.error).split(QLatin1Char('\n'));
    if (result.errorLines.last().isEmpty())
        result.errorLines.removeLast();
    static const QRegularExpression kSummary("^\\d+ corrected, .* in [0-9.]+ s"_s);
    if (!result.errorLines.isEmpty() && kSummary.match(result.errorLines.last()).hasMatch())
        result.summary = result.errorLines.takeLast();
    return result;
}

ProgramResult ProgramRun::Run(const QStringList &arguments)
{
    Begin(arguments);
    return Wait();
}

void ProgramRun::setupChildProcess()
{
    if (beforeStart)
        beforeStart();
}

void RespectPermissions()
{
    prctl(PR_CAPBSET_DROP, kCapDacOverride, 0, 0, 0);
    prctl(PR_CAPBSET_DROP, kCapDacReadSearch, 0, 0, 0);
}
