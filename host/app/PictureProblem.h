// Why a file is of no use as a picture, in one line for the user.
#pragma once

#include <QString>

struct RefusalReason;

/// Why the file can't be a picture, as far as can be said without reading it; empty: nothing against it.
QString FileProblem(const QString &path);

/// Why the file can't be read as a picture; empty if it can, as far as its head tells.
QString ReadingProblem(const QString &path);

/// The words for why the image kernel refused the file @p path; empty if it didn't.
QString TextOf(const RefusalReason &reason, const QString &path);

/// @p text without the name of the file @p path at its start, which messages put there themselves.
QString WithoutFileName(const QString &text, const QString &path);
