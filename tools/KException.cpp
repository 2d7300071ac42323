#include "KException.h"

#include <QFileInfo>

KException::KException(const QString &what, const QString &where) : m_where(where), m_what(what) { }

KException::~KException() = default;

KFileException::KFileException(const QString &what, const QString &where, const QString &reason)
    : KException(what, where), m_reason(reason)
{
}

KFileException::~KFileException() = default;

QString KPlace(const char *file, int line)
{
    const QString name = QFileInfo(QString::fromUtf8(file)).completeBaseName();
    return QStringLiteral("File: \"%1\" Line: %2").arg(name).arg(line);
}

void KThrow(const char *what, const char *file, int line)
{
    throw KException(QString::fromLatin1(what), KPlace(file, line));
}
