// Man pages with the macros of man(7).
#include "HelpText.h"

#include <QStringList>

namespace {

/// Escapes text for roff: minus signs stay copyable, and nothing is read as a control line or an escape.
QString Escaped(const QString &text)
{
    QString escaped = text;
    escaped.replace(QLatin1Char('\\'), QLatin1String("\\e")).replace(QLatin1Char('-'), QLatin1String("\\-"));
    return escaped.startsWith(QLatin1Char('.')) || escaped.startsWith(QLatin1Char('\''))
        ? QLatin1String("\\&") + escaped
        : escaped;
}

QString Line(const QString &macro, const QString &text)
{
    return macro + QLatin1Char(' ') + Escaped(text) + QLatin1Char('\n');
}

/// Returns a page's name: "vitrelux-correct", "vitrelux".
QString PageName(const VerbRow *verb)
{
    return verb ? QStringLiteral("vitrelux-%1").arg(QLatin1String(verb->name)) : QStringLiteral("vitrelux");
}

QString Head(const VerbRow *verb, const QString &summary, const QString &usage)
{
    return QStringLiteral(".TH %1 1 " VITRELUX_DATE " \"vitrelux " VITRELUX_VERSION "\" \"User Commands\"\n")
               .arg(PageName(verb).toUpper())
        + QLatin1String(".nh\n") // an option broken by a hyphen can't be copied
        + QStringLiteral(".SH NAME\n%1 \\- %2\n").arg(Escaped(PageName(verb)), Escaped(summary))
        + QLatin1String(".SH SYNOPSIS\n") + Line(QStringLiteral(".B"), QStringLiteral("vitrelux ") + usage);
}

QString Options(const VerbRow &verb)
{
    QString text = QStringLiteral(".SH OPTIONS\n");
    const QVector<OptionGroup> groups = GroupsOf(verb.verb);
    for (const OptionGroup &group : groups) {
        text += Line(QStringLiteral(".SS"), group.title);
        for (const OptionRow &row : group.rows)
            text += QLatin1String(".TP\n") + Line(QStringLiteral(".B"), Spelling(row))
                + Escaped(QLatin1String(row.help)) + QLatin1Char('\n');
    }
    return text + QLatin1String(".SS Help\n.TP\n.B \\-h, \\-\\-help\nprint a summary of the options\n");
}

QString Examples(const QStringList &examples)
{
    QStringList lines;
    for (const QString &example : examples)
        lines << QLatin1String(".nf\n.RS\n") + Escaped(example) + QLatin1String("\n.RE\n.fi\n");
    return QLatin1String(".SH EXAMPLES\n") + lines.join(QLatin1String(".PP\n"));
}

/// Returns the last sections: the exit status, and references to the other pages.
QString Tail(const VerbRow *verb)
{
    QString text = QStringLiteral(".SH EXIT STATUS\n"
                                  ".TP\n.B 0\nall done\n"
                                  ".TP\n.B 1\nat least one failed\n"
                                  ".TP\n.B 2\nusage error\n"
                                  ".SH SEE ALSO\n");
    QStringList others = verb ? QStringList(PageName(nullptr)) : QStringList();
    const QVector<VerbRow> verbs = AllVerbs();
    for (const VerbRow &other : verbs) {
        if (!verb || other.verb != verb->verb)
            others << PageName(&other);
    }
    others.sort();
    for (const QString &other : qAsConst(others))
        text += QStringLiteral(".BR %1 (1)%2\n")
                    .arg(Escaped(other), other == others.last() ? QString() : QStringLiteral(","));
    return text;
}

QString ProgramPage()
{
    QString text =
        Head(nullptr, QStringLiteral("profile-based lens correction"), QStringLiteral("COMMAND [OPTION]... FILE..."));
    text += QLatin1String(".SH DESCRIPTION\n") + QLatin1String(kProgramSummary) + QLatin1String("\n.SH COMMANDS\n");
    QStringList examples;
    const QVector<VerbRow> verbs = AllVerbs();
    for (const VerbRow &verb : verbs) {
        text += QStringLiteral(".TP\n.B %1\n%2\n").arg(QLatin1String(verb.name), Escaped(QLatin1String(verb.summary)));
        examples << QLatin1String(verb.examples[0]);
    }
    text += QLatin1String(".SH OPTIONS\n"
                          ".TP\n.B \\-\\-version\nprint the version\n"
                          ".TP\n.B \\-h, \\-\\-help\nprint the commands; after a command, its options\n");
    return text + Examples(examples.mid(0, 2)) + Tail(nullptr);
}

} // namespace

QString ManPage(const VerbRow *verb)
{
    if (!verb)
        return ProgramPage();
    const QString usage =
        QStringLiteral("%1 [OPTION]... %2").arg(QLatin1String(verb->name), QLatin1String(verb->operand));
    QString text = Head(verb, QLatin1String(verb->summary), usage) + QLatin1String(".SH DESCRIPTION\n");
    QStringList paragraphs;
    for (const QString &paragraph : Paragraphs(*verb))
        paragraphs << Escaped(paragraph) + QLatin1Char('\n');
    text += paragraphs.join(QLatin1String(".PP\n"));
    return text + Options(*verb) + Examples({QLatin1String(verb->examples[0]), QLatin1String(verb->examples[1])})
        + Tail(verb);
}
