// Texts made from the table of commands and options: help, man pages, completion.
#pragma once

#include "CommandTable.h"

#include <QString>

/// Returns the help of the program: its commands.
QString ProgramHelp();
/// Returns the help of a command, in lines of at most 80 characters. On one screen, some options are only named, and
/// the description is its first paragraph.
QString VerbHelp(const VerbRow &verb, bool onOneScreen);

/// Returns the man page of a command, in the macros of man(7); null: that of the program.
QString ManPage(const VerbRow *verb);

/// Returns the completion script for bash, zsh or fish; empty for another name.
QString Completion(const QString &shell);

/// Returns the names of all commands, one per line.
QString NamesOfCommands();

/// Returns the paragraphs of a command's description.
QStringList Paragraphs(const VerbRow &verb);

constexpr char kProgramSummary[] = "Removes lens distortion, color fringes and dark corners from photographs.";
constexpr char kExitCodes[] = "Exit code: 0 all done, 1 at least one failed, 2 wrong usage.";
