// Why a file is of no use as a picture, in one line for the user.
#pragma once

#include <QString>

/// Why the file can't be read as a picture; empty if it can, as far as its head tells.
QString ReadingProblem(const QString &path);

/// Why a picture that can be read isn't corrected. For those that ImageDef refuses.
QString RefusalReason(const QString &path);

/// @p text without the name of the file @p path at its start, which messages put there themselves.
QString WithoutFileName(const QString &text, const QString &path);
