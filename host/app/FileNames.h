// File names as users write them, turned into paths.
#pragma once

#include <QString>

/// Returns @p name, which the user wrote, as an absolute path without "." and "..". A leading colon is part of the name
/// and not Qt's mark of a built-in resource.
QString AbsolutePath(const QString &name);

/// Returns the path of @p name, without slashes, in @p folder.
QString Joined(const QString &folder, const QString &name);

/// Returns whether @p name needs the current folder, and that folder has been deleted: an absolute path made of such a
/// name would lie in the root folder.
bool LacksCurrentFolder(const QString &name);
