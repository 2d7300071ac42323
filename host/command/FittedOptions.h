// Options of the command line that only fitted corrections have.
#pragma once

#include "FitOptions.h"

#include <QPair>
#include <QString>
#include <QVector>

struct FittedOptions {
    QVector<QPair<QString, QString>> attributes; // of the record's XML element, for the plug-in
    FitOptions fit;                              // of these what decides on the profile: source, again, typed facts
};

struct FittedOptionRow {
    const char *name;  // without dashes
    const char *value; // null: a switch
    const char *help;
    bool isFact = false; // of the picture, typed by the user
};

/// In the order of the help text.
QVector<FittedOptionRow> FittedOptionRows();

/// Takes an option over.
/// @param name  of a row.
/// @return what is wrong with its value; empty if nothing is.
QString TakeFittedOption(const QString &name, const QString &value, FittedOptions *options);
