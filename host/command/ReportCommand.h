// `vitrelux report`: summarizes the records of `correct --json`.
#pragma once

#include "CommandLine.h"
#include "PictureReport.h"

#include <QVector>

class Console;

/// Reads the records of one file, one JSON object per line; empty lines are ignored.
/// @param problems  receives a text per line that isn't a record (after 20 of them, only the number of the others), and
///                  one if the file can't be read or a line is too long, which ends the reading.
QVector<PictureReport> ReadReports(const QString &file, QStringList *problems);

/// Returns the summary of several runs over the same pictures. Each picture counts once, by its last record, but a
/// corrected picture stays corrected if a later run skips it.
QString SummaryOfReports(const QVector<PictureReport> &reports);

ExitCode RunReport(const ReportOptions &options, Console *console);
