// `vitrelux report`: summarizes the records of `correct --json`.
#pragma once

#include "CommandLine.h"
#include "PictureReport.h"

#include <QVector>

class Console;

/// Reads the records of one file, one JSON object per line; empty lines are ignored.
/// @param problems  receives a message for each line that isn't a record (beyond 20, only their number), and one if the
///                  file can't be read or a line is too long; reading stops at that line.
QVector<PictureReport> ReadReports(const QString &file, QStringList *problems);

/// Returns the summary of several runs over the same pictures. Each picture counts once, by its last record, but a
/// corrected picture stays corrected if a later run skips it.
QString SummaryOfReports(const QVector<PictureReport> &reports);

ExitCode RunReport(const ReportOptions &options, Console *console);
