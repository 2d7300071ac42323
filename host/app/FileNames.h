// Conversion of file names typed by users to paths.
#pragma once

#include <QString>

/// Returns @p name, typed by the user, as an absolute path without "." and "..". A leading colon is part of the name
/// and doesn't mark a Qt resource.
QString AbsolutePath(const QString &name);

/// Returns the path of @p name, which contains no slash, in @p folder.
QString Joined(const QString &folder, const QString &name);

/// Returns whether @p name is relative and the current folder has been deleted: the absolute path would then be in the
/// root folder.
bool LacksCurrentFolder(const QString &name);
