// Command-line options that apply only to fitted corrections.
#pragma once

#include "FitOptions.h"

#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

struct FittedOptions {
    QVector<QPair<QString, QString>> attributes; // for the record's XML element, read by the plug-in
    FitOptions fit;                              // options that affect the fit, for fits by the host, as in dry runs
};

struct FittedOptionRow {
    const char *name;  // without dashes
    const char *value; // null: a switch
    const char *help;
    bool isFact = false;         // a fact about the picture, typed by the user
    const char *words = nullptr; // accepted values, separated by spaces; a row may accept others too
    bool isBrief = false;        // listed without its description in the short help
};

/// Returns the options in the order of the help text.
QVector<FittedOptionRow> FittedOptionRows();

/// Stores the value of the option @p name, one of the rows, in @p options.
/// @return a message if the value is invalid; empty otherwise.
QString TakeFittedOption(const QString &name, const QString &value, FittedOptions *options);
