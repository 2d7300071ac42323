// Reasons why a file cannot be used as a picture, in one line for the user.
#pragma once

#include <QString>

struct RefusalReason;

/// Returns why the file cannot be a picture, judged without reading it; empty if no reason was found.
QString FileProblem(const QString &path);

/// Returns the text for the image kernel's refusal of the file @p path; empty if it wasn't refused.
QString TextOf(const RefusalReason &reason, const QString &path);

/// Returns @p text without @p path at its start, because messages add the file's name.
QString WithoutFileName(const QString &text, const QString &path);
