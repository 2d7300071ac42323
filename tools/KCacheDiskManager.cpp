#include "KCacheDiskManager.h"

#include "KSystemInfo.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QThread>

namespace {

constexpr int kFilesPerFolder = 1024;
// A reserve is needed because the requested sizes are only estimates.
constexpr unsigned long long kPreferredReserve = 0x40000000; // 1 GiB
constexpr unsigned long long kMinReserve = 0x6400000;        // 100 MiB

QStringList FilesIn(const QString &folder)
{
    return QDir(folder).entryList({QStringLiteral("*")}, QDir::Files);
}

void RemoveIfEmpty(const QString &folder)
{
    if (FilesIn(folder).isEmpty())
        QDir().rmdir(folder);
}

} // namespace

KCacheDiskManager *KCacheDiskManager::ms_instance = nullptr;

KCacheDiskManager::KCacheDiskManager()
    : m_prefix(QStringLiteral("BRELT")), m_folders(QStandardPaths::standardLocations(QStandardPaths::TempLocation))
{
}

KCacheDiskManager::~KCacheDiskManager()
{
    for (const std::atomic<QString *> &folder : m_createdFolders)
        delete folder.load();
}

void KCacheDiskManager::init(KCacheDiskManager *instance)
{
    if (instance)
        ms_instance = instance;
    else if (!ms_instance)
        ms_instance = new KCacheDiskManager;
}

void KCacheDiskManager::exit()
{
    if (!ms_instance)
        return;
    for (const std::atomic<QString *> &folder : ms_instance->m_createdFolders)
        RemoveIfEmpty(*folder.load());
    delete ms_instance;
    ms_instance = nullptr;
}

void KCacheDiskManager::setPrefix(QString prefix)
{
    m_prefix = prefix;
}

bool KCacheDiskManager::setTemporaryFolders(QStringList folders)
{
    m_folders = folders;
    return true;
}

QStringList KCacheDiskManager::getTemporaryFoldersName()
{
    return m_folders;
}

QStringList KCacheDiskManager::getSystemDrives()
{
    QStringList paths;
    for (const QFileInfo &drive : QDir::drives())
        paths << drive.path();
    return paths;
}

QString KCacheDiskManager::getTempFolder(unsigned long long size, unsigned long long reserve)
{
    for (const QString &folder : qAsConst(m_folders)) {
        unsigned long long freeBytes, totalBytes;
        KSystemInfo::DiskInfo(folder, freeBytes, totalBytes);
        if (size <= freeBytes && reserve <= freeBytes - size && size <= totalBytes)
            return folder;
    }
    return QString();
}

QString KCacheDiskManager::getTempFile(unsigned long long size)
{
    QString folder = getTempFolder(size, kPreferredReserve);
    if (folder.isEmpty())
        folder = getTempFolder(size, kMinReserve);
    return folder.isEmpty() ? QString() : getUniqueFilename(folder, m_prefix);
}

QString KCacheDiskManager::getUniqueFilename(QString folder, QString prefix)
{
    const int n = m_fileCounter++;
    const QString path =
        QStringLiteral("%1%2%3.%4.%5")
            .arg(folder, QString(QDir::separator()), prefix, QString::number(QCoreApplication::applicationPid()),
                 QString::number(n / kFilesPerFolder));
    if (path != getLastFolder()) {
        ++m_folderCount;
        QDir(folder).mkdir(path);
        *m_createdFolders.grow_by(1) = new QString(path);
    }
    return path + QDir::separator() + QString::number(n % kFilesPerFolder);
}

QString KCacheDiskManager::getLastFolder()
{
    const int count = m_folderCount;
    if (count == 0)
        return QString();
    const auto last = static_cast<size_t>(count - 1);
    while (m_createdFolders.size() <= last || !m_createdFolders[last])
        QThread::yieldCurrentThread();
    return *m_createdFolders[last].load();
}

void KCacheDiskManager::cleanTempFiles()
{
    for (const QString &folder : qAsConst(m_folders)) {
        const QDir dir(folder);
        // Skip links: their targets aren't ours.
        for (const QString &name : dir.entryList({m_prefix + QLatin1Char('*')}, QDir::Dirs | QDir::NoSymLinks)) {
            const QString path = dir.filePath(name);
            for (const QString &file : FilesIn(path))
                QFile::remove(path + QDir::separator() + file);
            RemoveIfEmpty(path);
        }
    }
}

bool KCacheDiskManager::removeTempFile(QString name)
{
    return QFile::remove(name);
}
