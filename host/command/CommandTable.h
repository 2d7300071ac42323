// The program's commands and options: the single source for the parser, help, man pages and completion.
#pragma once

#include <QString>
#include <QVector>

enum class Verb { Correct, Info, Profile, Lenses, Report, Wizard, Help };

struct VerbRow {
    Verb verb;
    const char *name;
    const char *operand; // operands, as in the usage line
    const char *summary; // for lists of commands
    // Paragraphs separated by empty lines. The short help shows the first one. "%1" is replaced by the formats that can
    // be read.
    const char *details;
    const char *examples[2]; // run by a test
};

struct OptionRow {
    Verb verb;
    const char *names[2];        // as on the command line, without dashes; the second may be null
    const char *value;           // null: a switch. Shells complete FILE, PICTURE and DIR
    const char *help;            // one line
    const char *words = nullptr; // values that shells suggest, separated by spaces; others may be valid too
    bool isBrief = false;        // listed without its description in the short help
};

struct OptionGroup {
    QString title;
    QVector<OptionRow> rows;
};

/// Returns all commands, in help order.
QVector<VerbRow> AllVerbs();
/// Returns the command with that name; null if there is none.
const VerbRow *FindVerb(const QString &name);

/// Returns a verb's options in groups, in help order, without --help.
QVector<OptionGroup> GroupsOf(Verb verb);
/// Returns a verb's options from all groups.
QVector<OptionRow> OptionsOf(Verb verb);
/// Returns a verb's options that apply only to fitted corrections; those of `info` are facts about the picture.
QVector<OptionRow> FittedRows(Verb verb);

/// Returns an option's names with dashes: "-o", "--output".
QStringList SpelledNames(const OptionRow &row);
/// Returns an option as the help shows it: "-o, --output DIR".
QString Spelling(const OptionRow &row);
