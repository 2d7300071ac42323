#include "FileNames.h"

#include <QDir>

namespace {

bool IsRelative(const QString &name)
{
    return !name.startsWith(QLatin1Char('/')); // Qt treats ":name" as absolute
}

} // namespace

QString AbsolutePath(const QString &name)
{
    return QDir::cleanPath(IsRelative(name) ? QDir::currentPath() + QLatin1Char('/') + name : name);
}

QString Joined(const QString &folder, const QString &name)
{
    return folder.endsWith(QLatin1Char('/')) ? folder + name
                                             : folder + QLatin1Char('/') + name; // QDir also treats ":name" specially
}

bool LacksCurrentFolder(const QString &name)
{
    return IsRelative(name) && QDir::currentPath().isEmpty();
}
