// The program vitrelux: corrects photographs through the plug-in, from the command line or in a window.
#include "command/CommandLine.h"
#include "command/Console.h"
#include "command/CorrectCommand.h"
#include "command/InfoCommand.h"
#include "command/ProfileCommand.h"
#include "command/WizardCommand.h"

#include <QTextCodec>

#include <csignal>
#include <cstdio>

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
    switch (line.action) {
    case CommandLine::Action::Correct:
        return RunCorrect(line.correct, console);
    case CommandLine::Action::ShowInfo:
        return RunInfo(line.info, console);
    case CommandLine::Action::ShowProfiles:
        return RunProfile(line.profiles, console);
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

} // namespace

int main(int argc, char **argv)
{
    // File names are UTF-8 whatever the locale says: under the "C" of a cron job Qt would lose every other letter.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    // A limit on file sizes is then an error of one picture and not the end of the program.
    std::signal(SIGXFSZ, SIG_IGN);

    Console console;
    const int result = Run(ParseCommandLine(ReadArguments(argc, argv)), &console);
    if (!std::ferror(stdout))
        return result;
    console.Failure(QString(), QStringLiteral("cannot write to standard output")); // what a script waits for is missing
    return kSomeFailed;
}
