// `vitrelux report`: sums up the records of `correct --json`.
#pragma once

#include "CommandLine.h"
#include "PictureReport.h"

#include <QVector>

class Console;

/// Reads the records of one file, one JSON object per line; empty lines are ignored.
/// @param problems  gets "LINE: text" for each line that is no record, and a text if the file cannot be read.
QVector<PictureReport> ReadReports(const QString &file, QStringList *problems);

/// The sum of several runs over the same pictures, as text: a picture counts once, by its last record, except that a
/// corrected picture stays corrected when a later run skips it.
QString SumOfReports(const QVector<PictureReport> &reports);

ExitCode RunReport(const ReportOptions &options, Console *console);
