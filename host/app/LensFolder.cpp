#include "LensFolder.h"

#include "FileNames.h"

#include <QDir>

namespace {

const QLatin1String kPlace("/profiles");

} // namespace

LensFolder::LensFolder(const QString &folder, InterruptGuard *guard)
    : m_folder(AbsolutePath(folder)), m_place(QDir::tempPath(), guard)
{
    if (!m_place.Problem().isEmpty())
        return;
    QFile::link(m_folder, m_place.Path() + kPlace);
    const QStringList brands = QDir(m_folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &brand : brands)
        QFile::link(m_folder + QLatin1Char('/') + brand, m_place.Path() + kPlace + QLatin1Char('\\') + brand);
}

QString LensFolder::Problem() const
{
    return m_place.Problem().isEmpty()
        ? QString()
        : QStringLiteral("profiles cannot be looked up: a temporary folder cannot be created "
                         "in \"%1\": %2")
              .arg(QDir::tempPath(), m_place.Problem());
}

QString LensFolder::Place() const
{
    return m_place.Problem().isEmpty() ? m_place.Path() + kPlace : QString();
}
