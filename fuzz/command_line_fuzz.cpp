// Parses arbitrary words, one per line, as a command line, and plans the outputs for the pictures that it names.
#include "Target.h"
#include "command/CommandLine.h"

namespace {

/// Checks that each output path is absolute.
void CheckOutputs(const CorrectOptions &correct)
{
    const QVector<NamedPicture> pictures = Named(correct.pictures.named);
    const QVector<PlannedPicture> planned = PlanOutputs(pictures, correct.outputs);
    Require(planned.size() == pictures.size());
    for (const PlannedPicture &one : planned)
        Require(one.output.startsWith(QLatin1Char('/')));
}

} // namespace

FUZZ_TARGET(command_line)
{
    Input input(data, size);
    QStringList words;
    while (!input.IsEmpty())
        words.append(QString::fromUtf8(input.Line()).remove(QChar(0))); // arguments can't contain NUL
    const CommandLine line = ParseCommandLine(words);
    const bool isRefused = line.action == CommandLine::Action::RefuseUsage;
    Require(!isRefused || !line.text.isEmpty());
    if (line.action == CommandLine::Action::Correct && !line.correct.pictures.named.isEmpty())
        CheckOutputs(line.correct);
}
