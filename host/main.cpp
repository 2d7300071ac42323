// The program vitrelux: corrects photographs through the plug-in, from the command line or in a window.
#include "app/FileNames.h"
#include "app/InterruptGuard.h"
#include "app/PictureRun.h"
#include "command/CommandLine.h"
#include "command/Console.h"
#include "command/CorrectCommand.h"
#include "command/InfoCommand.h"
#include "command/LensesCommand.h"
#include "command/ProfileCommand.h"
#include "command/ReportCommand.h"
#include "command/WizardCommand.h"
#include "gfl.h"

#include <QTextCodec>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>

#include <fcntl.h>
#include <unistd.h>

namespace {

QStringList ReadArguments(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    return arguments;
}

int Run(const CommandLine &line, Console *console)
{
    gflSetMaxPixels(line.maxPixels);
    switch (line.action) {
    case CommandLine::Action::Correct:
        return RunCorrect(line.correct, console);
    case CommandLine::Action::ShowInfo:
        return RunInfo(line.info, console);
    case CommandLine::Action::ShowProfiles:
        return RunProfile(line.profile, console);
    case CommandLine::Action::ShowLenses:
        return RunLenses(line.lenses, console);
    case CommandLine::Action::ShowReport:
        return RunReport(line.report, console);
    case CommandLine::Action::ShowWizard:
        return RunWizard(line.wizard, console);
    case CommandLine::Action::PrintText:
        console->Print(line.text);
        return kAllDone;
    case CommandLine::Action::RefuseUsage:
        break;
    }
    console->PrintError(line.text);
    return kUsageError;
}

/// Returns the names of files and folders on the command line.
QStringList NamesIn(const CommandLine &line)
{
    QStringList names =
        line.correct.pictures.named + line.info.files + line.profile.files + line.report.files + line.wizard.files;
    for (const QString &name :
         {line.correct.pictures.listFile, line.correct.profile, line.correct.lensPath, line.correct.outputs.folder,
          line.correct.plugin, line.info.lensPath, line.info.plugin, line.lenses.lensPath, line.lenses.plugin,
          line.profile.picture, line.profile.plot, line.wizard.lensPath, line.wizard.plugin}) {
        if (!name.isEmpty())
            names << name;
    }
    return names;
}

int RunChecked(const CommandLine &line, Console *console)
{
    for (const QString &name : NamesIn(line)) {
        if (!LacksCurrentFolder(name))
            continue;
        console->Failure(name, QStringLiteral("is in the current folder, which no longer exists"));
        return kSomeFailed;
    }
    return Run(line, console);
}

/// Opens missing standard streams. Otherwise the first files opened would get their descriptors, and printed text would
/// end up in pictures. Reading and writing these streams fails, as with missing ones.
void OccupyStandardStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) == -1 && open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) != stream)
            std::_Exit(kSomeFailed);
    }
}

[[noreturn]] void PrintAndExit(const char *why)
{
    std::fflush(stdout);
    std::fprintf(stderr, "vitrelux: %s\n", why);
    std::_Exit(kSomeFailed);
}

/// Handles exceptions that nothing catches, such as those in Qt slots.
[[noreturn]] void HandleTermination() noexcept
{
    InterruptGuard::RemoveFolders();
    try {
        if (std::current_exception())
            std::rethrow_exception(std::current_exception());
    } catch (const std::bad_alloc &) { // caught first, because the other messages need memory
        PrintAndExit("not enough memory");
    } catch (...) {
        PrintAndExit(qUtf8Printable(OneLine(TextOfCurrentException())));
    }
    std::abort();
}

/// Runs before the constructors of static objects, which allocate and may open files.
[[gnu::constructor(101)]] void PrepareProcess()
{
    OccupyStandardStreams();
    std::set_terminate(HandleTermination);
}

} // namespace

int main(int argc, char **argv)
{
    // File names are UTF-8 in any locale: under the "C" locale of a cron job Qt would lose all non-ASCII letters.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    // Makes exceeding a file size limit an error for one picture instead of ending the program.
    std::signal(SIGXFSZ, SIG_IGN);
    // A library may end the program, as libgomp does if it has no memory for its threads. At a normal exit there is no
    // folder to remove.
    std::atexit([] { InterruptGuard::RemoveFolders(); });
    // Nothing catches exceptions here, so that the terminate handler runs where they are thrown: many Qt objects
    // crash in their destructors if memory runs out while they are constructed.
    Console console;
    const int result = RunChecked(ParseCommandLine(ReadArguments(argc, argv)), &console);
    if (!std::ferror(stdout))
        return result;
    console.Failure(QString(), QStringLiteral("cannot write to standard output")); // the output is incomplete
    return kSomeFailed;
}
