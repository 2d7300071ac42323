#include "HelpText.h"

#include "gfl.h"

#include <QStringList>

namespace {

constexpr int kColumns = 80;
constexpr int kLeft = 22; // width of the option and command column

QString Latin(const char *text)
{
    return QString::fromLatin1(text);
}

/// Wraps the words into lines of at most kColumns characters, each indented.
QString Wrapped(const QStringList &words, int indent)
{
    const QString left(indent, QLatin1Char(' '));
    QString text, line;
    for (const QString &word : words) {
        if (!line.isEmpty() && indent + line.size() + 1 + word.size() > kColumns) {
            text += left + line + QLatin1Char('\n');
            line.clear();
        }
        line += line.isEmpty() ? word : QLatin1Char(' ') + word;
    }
    return text + left + line + QLatin1Char('\n');
}

QString HelpLine(const QString &left, const char *right)
{
    const QString text = Wrapped(Latin(right).split(QLatin1Char(' ')), 2 + kLeft + 2);
    const QString first = QStringLiteral("  %1  ").arg(left, -kLeft);
    return left.size() > kLeft ? first.trimmed().prepend(QLatin1String("  ")) + QLatin1Char('\n') + text
                               : first + text.mid(first.size());
}

QString GroupHelp(const OptionGroup &group, bool onOneScreen)
{
    QString text = group.title + QLatin1Char('\n');
    QStringList brief;
    for (const OptionRow &row : group.rows) {
        if (onOneScreen && row.isBrief)
            brief << Spelling(row);
        else
            text += HelpLine(Spelling(row), row.help);
    }
    if (brief.isEmpty())
        return text;
    // Keep an option and its value on the same line.
    const QString all = brief.join(QLatin1String(",\n")).replace(QLatin1Char(' '), QChar::Nbsp);
    return text + Wrapped(all.split(QLatin1Char('\n')), 2).replace(QChar::Nbsp, QLatin1Char(' '));
}

/// Returns the formats that can be read: "Camera raw, TIFF, JPEG ...".
QString KnownFormats()
{
    QStringList names;
    for (std::int32_t i = 0; const GFL_FORMAT *format = gflGetFormat(i); ++i)
        names << Latin(format->Label);
    return names.join(QLatin1String(", "));
}

} // namespace

QStringList Paragraphs(const VerbRow &verb)
{
    return Latin(verb.details).replace(QLatin1String("%1"), KnownFormats()).split(QLatin1String("\n\n"));
}

QString NamesOfCommands()
{
    QString names;
    const QVector<VerbRow> verbs = AllVerbs();
    for (const VerbRow &verb : verbs)
        names += Latin(verb.name) + QLatin1Char('\n');
    return names;
}

QString ProgramHelp()
{
    QString text =
        QStringLiteral("Usage: vitrelux COMMAND [OPTION]... FILE...\n\n%1\n\nCommands\n").arg(Latin(kProgramSummary));
    const QVector<VerbRow> verbs = AllVerbs();
    for (const VerbRow &verb : verbs)
        text += HelpLine(Latin(verb.name), verb.summary);
    text += QLatin1String("Options\n") + HelpLine(QStringLiteral("--version"), "print the version");
    text += HelpLine(QStringLiteral("-h, --help"), "print this; COMMAND --help describes a command");
    text += QLatin1String("Examples\n");
    for (const VerbRow &verb : verbs.mid(0, 2))
        text += QStringLiteral("  %1\n").arg(Latin(verb.examples[0]));
    return text + QLatin1Char('\n') + Latin(kExitCodes) + QLatin1Char('\n');
}

QString VerbHelp(const VerbRow &verb, bool onOneScreen)
{
    QString text = QStringLiteral("Usage: vitrelux %1 [OPTION]... %2\n").arg(Latin(verb.name), Latin(verb.operand));
    const QStringList paragraphs = Paragraphs(verb).mid(0, onOneScreen ? 1 : -1);
    for (const QString &paragraph : paragraphs)
        text += (onOneScreen ? QString() : QStringLiteral("\n")) + Wrapped(paragraph.split(QLatin1Char(' ')), 0);
    text += QLatin1Char('\n');
    const QVector<OptionGroup> groups = GroupsOf(verb.verb);
    for (const OptionGroup &group : groups)
        text += GroupHelp(group, onOneScreen);
    text += QLatin1String("Examples\n");
    for (const char *example : verb.examples)
        text += QStringLiteral("  %1\n").arg(Latin(example));
    if (onOneScreen && verb.verb != Verb::Help)
        text += QStringLiteral("'vitrelux help %1' describes everything.\n").arg(Latin(verb.name));
    return text + Latin(kExitCodes) + QLatin1Char('\n');
}
