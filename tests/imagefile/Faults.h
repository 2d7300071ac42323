// Damaged files made from good ones by the edits in faults.tsv.
#pragma once

#include <QByteArray>
#include <QString>

/// Applies each of the table's rows for @p kind to @p good and loads the file. Returns an empty string if all loads
/// fail with the error and the text of the row; otherwise the first row that differs.
QString BadFault(const QByteArray &kind, const QByteArray &good);
