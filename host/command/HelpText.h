// Texts generated from the command table: help, man pages, completion.
#pragma once

#include "CommandTable.h"

#include <QString>

/// Returns the program's help, which lists its commands.
QString ProgramHelp();
/// Returns a command's help, in lines of at most 80 characters.
/// @param onOneScreen  show only the first paragraph about the command, and list some options without a description.
QString VerbHelp(const VerbRow &verb, bool onOneScreen);

/// Returns a command's man page with the macros of man(7), or the program's if the command is null.
QString ManPage(const VerbRow *verb);

/// Returns the completion script for bash, zsh or fish; empty for another name.
QString Completion(const QString &shell);

/// Returns the names of all commands, one per line.
QString NamesOfCommands();

/// Returns the paragraphs of a command's description.
QStringList Paragraphs(const VerbRow &verb);

constexpr char kProgramSummary[] = "Removes lens distortion, color fringes and dark corners from photographs.";
constexpr char kExitCodes[] = "Exit code: 0 all done, 1 at least one failed, 2 usage error.";
