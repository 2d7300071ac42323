#include "SearchedFolders.h"

#include "FileNames.h"
#include "HostApplication.h"
#include "PictureFit.h"
#include "ProfileLookup.h"

#include <QDir>
#include <QFileInfo>

SearchedFolders::SearchedFolders(HostApplication *application, const QString &given)
    : m_application(application), m_given(given.isEmpty() ? QString() : AbsolutePath(given))
{
    m_application->AdaptPluginSettings([this](const QString &key, const QVariant &stored) {
        if (key != ProfileLookup::kLensPath)
            return stored;
        m_stored = m_given.isEmpty() ? stored.toString() : m_given;
        return QVariant(m_stored);
    });
}

SearchedFolders::~SearchedFolders()
{
    m_application->AdaptPluginSettings(nullptr);
}

QStringList SearchedFolders::Folders() const
{
    if (!m_given.isEmpty())
        return {m_given};
    return QDir::isAbsolutePath(m_stored) && QDir(m_stored).exists() ? QStringList{m_stored} : DefaultProfileFolders();
}

QString SearchedFolders::Problem() const
{
    return m_given.isEmpty() || QFileInfo(m_given).isDir()
        ? QString()
        : QStringLiteral("there is no profile folder \"%1\"").arg(m_given);
}
