// Commands and options of the program: the one source of the parser, the help, the man pages and the completion.
#pragma once

#include <QString>
#include <QVector>

enum class Verb { Correct, Info, Profile, Lenses, Report, Wizard, Help };

struct VerbRow {
    Verb verb;
    const char *name;
    const char *operand; // what follows the options, as in the usage line
    const char *summary; // for lists of commands
    // Paragraphs separated by empty lines. The help on one screen shows the first one. "%1" stands for the formats that
    // can be read.
    const char *details;
    const char *examples[2]; // run by a test
};

struct OptionRow {
    Verb verb;
    const char *names[2];        // as on the command line, without dashes; the second may be null
    const char *value;           // null: a switch. FILE, PICTURE and DIR are completed
    const char *help;            // one line
    const char *words = nullptr; // values to complete, separated by blanks; others may be valid too
    bool isBrief = false;        // listed without its help in the help on one screen
};

struct OptionGroup {
    QString title;
    QVector<OptionRow> rows;
};

/// Returns all commands, in the order of the help.
QVector<VerbRow> AllVerbs();
/// Returns the command of a name; null if there is none.
const VerbRow *FindVerb(const QString &name);

/// Returns the options of a verb in groups, in the order of its help, without --help.
QVector<OptionGroup> GroupsOf(Verb verb);
/// Returns the options of all groups of a verb.
QVector<OptionRow> OptionsOf(Verb verb);
/// Returns the options of a verb that only fitted corrections have; those of `info` are facts about the picture.
QVector<OptionRow> FittedRows(Verb verb);

/// Returns the names of an option with their dashes: "-o", "--output".
QStringList SpelledNames(const OptionRow &row);
/// Returns an option as in the help: "-o, --output DIR".
QString Spelling(const OptionRow &row);
