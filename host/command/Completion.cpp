// Shell completion of commands, options, their values, and file names.
#include "HelpText.h"

#include <QStringList>

namespace {

enum class Kind { None, Files, Folders, Words };

struct Value {
    Kind kind;
    QString words;
};

Value ValueOf(const OptionRow &row)
{
    const QString name = QLatin1String(row.value);
    if (row.words)
        return {Kind::Words, QLatin1String(row.words)};
    if (name == QLatin1String("DIR"))
        return {Kind::Folders, QString()};
    return {name == QLatin1String("FILE") || name == QLatin1String("PICTURE") ? Kind::Files : Kind::None, QString()};
}

/// Returns how the operands of a command are completed.
Value OperandOf(const VerbRow &verb)
{
    const QString operand = QLatin1String(verb.operand);
    if (operand.contains(QLatin1String("COMMAND")))
        return {Kind::Words, NamesOfCommands().trimmed().replace(QLatin1Char('\n'), QLatin1Char(' '))};
    return {operand.contains(QLatin1String("WORD")) ? Kind::None : Kind::Files, QString()};
}

/// Puts text into single quotes for bash and zsh.
QString Quoted(QString text)
{
    return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QLatin1String("'\\''")) + QLatin1Char('\'');
}

QString BashAction(const Value &value)
{
    switch (value.kind) {
    case Kind::Words:
        return QStringLiteral("_vitrelux_words '%1'").arg(value.words);
    case Kind::Folders:
        return QStringLiteral("compopt -o dirnames +o default");
    case Kind::None:
        return QStringLiteral("compopt +o default");
    case Kind::Files:
        break;
    }
    return QStringLiteral(":");
}

QString Bash()
{
    QString values, options, operands;
    const QVector<VerbRow> verbs = AllVerbs();
    for (const VerbRow &verb : verbs) {
        const QString name = QLatin1String(verb.name);
        QStringList spelled{QStringLiteral("--help")};
        const QVector<OptionRow> rows = OptionsOf(verb.verb);
        for (const OptionRow &row : rows) {
            const QStringList names = SpelledNames(row);
            spelled << names;
            QStringList patterns;
            for (const QString &one : names)
                patterns << QStringLiteral("'%1 %2'").arg(name, one);
            if (row.value)
                values += QStringLiteral("    %1) %2; return ;;\n")
                              .arg(patterns.join(QLatin1String(" | ")), BashAction(ValueOf(row)));
        }
        options += QStringLiteral("    '%1 -'*) _vitrelux_words '%2' ;;\n").arg(name, spelled.join(QLatin1Char(' ')));
        operands += QStringLiteral("    '%1 '*) %2 ;;\n").arg(name, BashAction(OperandOf(verb)));
    }
    return QStringLiteral(R"(# bash completion for vitrelux
_vitrelux_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$word"); }

_vitrelux() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        _vitrelux_words '%1 --help --version'
        return
    fi
    if [ "$word" = = ]; then # bash splits --option=value into three words
        word=
    elif [ "$before" = = ]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    case "$command $before" in
%2    esac
    case "$command $word" in
%3%4    esac
}
complete -o default -F _vitrelux vitrelux
)")
        .arg(OperandOf(*FindVerb(QStringLiteral("help"))).words, values, options, operands);
}

QString ZshAction(const Value &value)
{
    switch (value.kind) {
    case Kind::Words:
        return QStringLiteral("(%1)").arg(value.words);
    case Kind::Folders:
        return QStringLiteral("_files -/");
    case Kind::Files:
        return QStringLiteral("_files");
    case Kind::None:
        break;
    }
    return QStringLiteral(" ");
}

/// Escapes text for a description in zsh's _arguments.
QString ZshText(QString text)
{
    for (const char special : {'\\', '[', ']', ':'})
        text.replace(QLatin1Char(special), QLatin1Char('\\') + QString(QLatin1Char(special)));
    return text;
}

QString ZshOption(const OptionRow &row)
{
    const QStringList names = SpelledNames(row);
    QString spec = QStringLiteral("[%1]").arg(ZshText(QLatin1String(row.help)));
    if (row.value)
        spec += QStringLiteral(":%1:%2").arg(QLatin1String(row.value), ZshAction(ValueOf(row)));
    QString text;
    for (const QString &name : names) {
        const bool isLong = name.startsWith(QLatin1String("--"));
        text += QStringLiteral(" \\\n            ")
            + Quoted(QStringLiteral("(%1)%2%3%4")
                         .arg(names.join(QLatin1Char(' ')), name,
                              row.value ? QLatin1String(isLong ? "=" : "+") : QLatin1String(), spec));
    }
    return text;
}

QString Zsh()
{
    QString commands, cases;
    const QVector<VerbRow> verbs = AllVerbs();
    for (const VerbRow &verb : verbs) {
        const QString name = QLatin1String(verb.name);
        commands += QStringLiteral("        ") + Quoted(name + QLatin1Char(':') + QLatin1String(verb.summary))
            + QLatin1Char('\n');
        cases +=
            QStringLiteral("    %1)\n        _arguments -s -S '(- *)'{-h,--help}'[print a summary of the options]'")
                .arg(name);
        const QVector<OptionRow> rows = OptionsOf(verb.verb);
        for (const OptionRow &row : rows)
            cases += ZshOption(row);
        cases += QStringLiteral(" \\\n            '*:%1:%2' ;;\n")
                     .arg(ZshText(QLatin1String(verb.operand)), ZshAction(OperandOf(verb)));
    }
    return QStringLiteral(R"(#compdef vitrelux
_vitrelux() {
    local curcontext=$curcontext state line
    local -a commands=(
%1    )
    _arguments -C '(- *)'{-h,--help}'[print the commands]' '(- *)--version[print the version]' \
        '1:command:->command' '*::argument:->arguments' && return
    case $state in
    command) _describe command commands; return ;;
    esac
    case $words[1] in
%2    esac
}
_vitrelux "$@"
)")
        .arg(commands, cases);
}

QString FishValue(const Value &value)
{
    switch (value.kind) {
    case Kind::Words:
        return QStringLiteral(" -x -a '%1'").arg(value.words);
    case Kind::Folders:
        return QStringLiteral(" -x -a '(__fish_complete_directories)'");
    case Kind::Files:
        return QStringLiteral(" -r -F");
    case Kind::None:
        break;
    }
    return QStringLiteral(" -x");
}

/// Puts text into single quotes for fish.
QString FishQuoted(QString text)
{
    return QLatin1Char('\'')
        + text.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('\''), QLatin1String("\\'"))
        + QLatin1Char('\'');
}

QString FishOption(const OptionRow &row)
{
    QString text;
    for (const char *name : row.names) {
        if (name)
            text += QLatin1String(qstrlen(name) == 1 ? " -s " : " -l ") + QLatin1String(name);
    }
    return text + (row.value ? FishValue(ValueOf(row)) : QString()) + QLatin1String(" -d ")
        + FishQuoted(QLatin1String(row.help)) + QLatin1Char('\n');
}

QString Fish()
{
    QString text = QStringLiteral("# fish completion for vitrelux\n");
    const QString first = QStringLiteral("complete -c vitrelux -n __fish_use_subcommand ");
    text += first + QLatin1String("-f -l version -d 'print the version'\n");
    const QVector<VerbRow> verbs = AllVerbs();
    for (const VerbRow &verb : verbs) {
        const QString name = QLatin1String(verb.name);
        text += first + QStringLiteral("-f -a %1 -d %2\n").arg(name, FishQuoted(QLatin1String(verb.summary)));
        const QString within = QStringLiteral("complete -c vitrelux -n '__fish_seen_subcommand_from %1'").arg(name);
        const QVector<OptionRow> rows = OptionsOf(verb.verb);
        for (const OptionRow &row : rows)
            text += within + FishOption(row);
        const Value operand = OperandOf(verb);
        if (operand.kind == Kind::Words)
            text += within + QStringLiteral(" -f -a '%1'\n").arg(operand.words);
        else if (operand.kind == Kind::None)
            text += within + QLatin1String(" -f\n");
    }
    return text + QLatin1String("complete -c vitrelux -s h -l help -d 'print a summary of the options'\n");
}

} // namespace

QString Completion(const QString &shell)
{
    if (shell == QLatin1String("bash"))
        return Bash();
    if (shell == QLatin1String("zsh"))
        return Zsh();
    return shell == QLatin1String("fish") ? Fish() : QString();
}
