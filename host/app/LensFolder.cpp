#include "LensFolder.h"

#include "InterruptGuard.h"

#include <QDir>

namespace {

const QLatin1String kPlace("/profiles");

} // namespace

LensFolder::LensFolder(const QString &folder, InterruptGuard *guard)
    : m_folder(QDir::cleanPath(QDir().absoluteFilePath(folder))), m_guard(guard)
{
    m_guard->Protect([this] {
        m_place = std::make_unique<QTemporaryDir>();
        return m_place->path();
    });
    if (!m_place->isValid())
        return;
    QFile::link(m_folder, m_place->path() + kPlace);
    const QStringList brands = QDir(m_folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &brand : brands)
        QFile::link(m_folder + QLatin1Char('/') + brand, m_place->path() + kPlace + QLatin1Char('\\') + brand);
}

LensFolder::~LensFolder()
{
    const QString path = m_place->path();
    m_place->remove();
    m_guard->Release(path);
}

QString LensFolder::Place() const
{
    return m_place->isValid() ? m_place->path() + kPlace : QString();
}
