#include "ProfileIndex.h"

#include "InputLimits.h"
#include "LensName.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace {

constexpr quint32 kMagic = 0x564c5058; // "VLPX"
constexpr quint32 kVersion = 4;        // caches of another version are rebuilt: increase it with every format change
constexpr qint64 kUnread = -1;         // modification time of files that could not be opened or read
constexpr const char *kMisnamed = "its name is not UTF-8";

QDataStream &operator<<(QDataStream &out, const IndexedProfile &profile)
{
    const ProfileHead &head = profile.head;
    return out << profile.path << profile.bytes << profile.modifiedMs << profile.error << head.make << head.model
               << head.lensNames << head.lensIds << head.minFocalMm << head.maxFocalMm << head.minAperture
               << head.maxAperture << head.sensorFormatFactor << head.raw;
}

/// Reads a list as QDataStream would, but without first allocating as many texts as the data claims to have.
QStringList ReadTexts(QDataStream &in)
{
    QStringList texts;
    quint32 count = 0;
    in >> count;
    for (quint32 i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        QString text;
        in >> text;
        texts.append(text);
    }
    return texts;
}

QDataStream &operator>>(QDataStream &in, IndexedProfile &profile)
{
    ProfileHead &head = profile.head;
    in >> profile.path >> profile.bytes >> profile.modifiedMs >> profile.error >> head.make >> head.model;
    head.lensNames = ReadTexts(in);
    head.lensIds = ReadTexts(in);
    return in >> head.minFocalMm >> head.maxFocalMm >> head.minAperture >> head.maxAperture >> head.sensorFormatFactor
        >> head.raw;
}

QByteArray Checksum(const QByteArray &content)
{
    return QCryptographicHash::hash(content, QCryptographicHash::Md5);
}

/// Fills in missing focal lengths from the lens names, so that a search has fewer names to parse. Names of several
/// lenses, such as "A or B", are left out: a picture's lens may be any of these.
void CompleteNumbers(ProfileHead *head)
{
    for (int i = 0; i < head->lensNames.size() && head->minFocalMm <= 0.0; ++i)
        if (const QVector<LensName> names = ParseLensNames(head->lensNames[i]); names.size() == 1) {
            head->minFocalMm = names[0].minFocalMm;
            head->maxFocalMm = names[0].maxFocalMm;
        }
}

IndexedProfile ReadProfile(const QFileInfo &info)
{
    IndexedProfile profile;
    profile.path = info.filePath();
    profile.bytes = info.size();
    profile.modifiedMs = info.lastModified().toMSecsSinceEpoch();
    QFile file(profile.path);
    if (info.exists() && !info.isFile()) // a pipe without a writer would block forever
        profile.error = QStringLiteral("not a regular file");
    else if (profile.bytes > kMaxXmlBytes)
        profile.error = QStringLiteral("larger than %1 MiB").arg(kMaxXmlBytes >> 20);
    else if (file.open(QIODevice::ReadOnly) && ReadProfileHead(&file, &profile.head, &profile.error))
        CompleteNumbers(&profile.head);
    if (file.error() != QFileDevice::NoError) {
        const bool misnamed = info.fileName().contains(QChar(QChar::ReplacementCharacter));
        profile.error = misnamed ? QString(QLatin1String(kMisnamed)) : file.errorString();
        profile.modifiedMs = kUnread;
    }
    return profile;
}

bool IsBelow(const QString &path, const QStringList &folders)
{
    return std::any_of(folders.begin(), folders.end(), [&path](const QString &folder) {
        return path.startsWith(folder) && path.size() > folder.size() && path[folder.size()] == QLatin1Char('/');
    });
}

QStringList CanonicalPaths(const QStringList &folders)
{
    QStringList paths;
    for (const QString &folder : folders)
        if (const QString path = QFileInfo(folder).canonicalFilePath(); !path.isEmpty() && !paths.contains(path))
            paths.append(path);
    return paths;
}

} // namespace

QString ProfileIndex::DefaultCacheFile()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    return QDir::isRelativePath(folder) ? QString() : folder + QLatin1String("/vitrelux/profiles.index");
}

ProfileIndex::ProfileIndex(const QString &cacheFile) : m_cacheFile(cacheFile)
{
    LoadCache();
}

bool ProfileIndex::Scan(const QStringList &folders)
{
    const QStringList roots = CanonicalPaths(folders);
    QStringList files;
    QSet<QString> walked; // canonical paths
    m_unreadFolders.clear();
    for (const QString &folder : roots)
        Walk(folder, 0, &walked, &files);
    const bool complete = files.size() <= kMaxIndexedProfiles;
    files = files.mid(0, kMaxIndexedProfiles);
    std::sort(files.begin(), files.end());
    files.removeDuplicates();

    const int before = m_known.size();
    m_profiles.clear();
    m_filesRead = 0;
    bool changed = false;
    for (const QString &path : qAsConst(files)) {
        const QFileInfo info(path);
        auto known = m_known.constFind(path);
        if (known == m_known.constEnd() || known->bytes != info.size()
            || known->modifiedMs != info.lastModified().toMSecsSinceEpoch()) {
            ++m_filesRead;
            known = m_known.insert(path, ReadProfile(info));
            changed = changed || known->modifiedMs != kUnread;
        }
        m_profiles.append(*known);
    }
    for (auto known = m_known.begin(); known != m_known.end();)
        // Neither size nor time changes when a file becomes readable, so unread files aren't kept.
        known = known->modifiedMs == kUnread
                || (IsBelow(known.key(), roots) && !std::binary_search(files.begin(), files.end(), known.key()))
            ? m_known.erase(known)
            : std::next(known);
    if (changed || m_known.size() != before)
        SaveCache();
    return complete;
}

/// Adds the profiles of a folder and its subfolders to @p files. Follows links, and walks each folder only once.
void ProfileIndex::Walk(const QString &folder, int depth, QSet<QString> *walked, QStringList *files)
{
    if (depth > kMaxFolderDepth || files->size() > kMaxIndexedProfiles || walked->contains(folder))
        return;
    walked->insert(folder);
    QDirIterator entries(folder, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
    while (entries.hasNext()) {
        entries.next();
        const QFileInfo info = entries.fileInfo();
        const QString path = info.isSymLink() ? info.canonicalFilePath() : info.filePath();
        if (info.isDir())
            Walk(path, depth + 1, walked, files);
        else if ((info.isFile() || !info.exists()) && !path.isEmpty()
                 && info.suffix().compare(QLatin1String("lcp"), Qt::CaseInsensitive) == 0)
            files->append(path);
    }
    AddMisnamed(folder, files);
}

/// Adds the profiles and folders whose names are not UTF-8, with replacement characters: Qt neither lists nor opens
/// them. Records folders that cannot be listed, because Qt doesn't report them.
void ProfileIndex::AddMisnamed(const QString &folder, QStringList *files)
{
    std::error_code failed, unknown;
    for (std::filesystem::directory_iterator entry(QFile::encodeName(folder).toStdString(), failed), end;
         !failed && entry != end; entry.increment(failed)) {
        const QByteArray name = QByteArray::fromStdString(entry->path().filename().string());
        if (QFile::encodeName(QFile::decodeName(name)) == name)
            continue;
        const QString path = folder + QLatin1Char('/') + QFile::decodeName(name);
        if (entry->is_directory(unknown))
            m_unreadFolders.append({path, QLatin1String(kMisnamed)});
        else if (name.toLower().endsWith(".lcp"))
            files->append(path);
    }
    if (failed)
        m_unreadFolders.append({folder, QString::fromLocal8Bit(failed.message().c_str())});
}

void ProfileIndex::LoadCache()
{
    QFile file(m_cacheFile);
    if (m_cacheFile.isEmpty() || !QFileInfo(m_cacheFile).isFile() || !file.open(QIODevice::ReadOnly))
        return;
    const QByteArray content =
        file.read(std::min(file.size(), kMaxIndexCacheBytes)); // read() allocates all requested bytes
    QDataStream in(content);
    in.setVersion(QDataStream::Qt_5_15);
    quint32 magic = 0, version = 0, count = 0;
    QByteArray checksum, body;
    in >> magic >> version >> checksum >> body;
    if (in.status() != QDataStream::Ok || magic != kMagic || version != kVersion || checksum != Checksum(body))
        return;
    QDataStream records(body);
    records.setVersion(QDataStream::Qt_5_15);
    records >> count;
    for (quint32 i = 0; i < count && records.status() == QDataStream::Ok; ++i) {
        IndexedProfile profile;
        records >> profile;
        m_known.insert(profile.path, profile);
    }
    if (records.status() != QDataStream::Ok)
        m_known.clear();
}

/// Removes unfinished cache files left by killed programs: they have the cache's name with a suffix. Keeps recent ones,
/// which another program may be writing.
void ProfileIndex::RemoveLeftovers() const
{
    constexpr qint64 kUnfinishedS = 3600; // writing takes a fraction of a second
    const QFileInfo cache(m_cacheFile);
    const QFileInfoList unfinished =
        cache.dir().entryInfoList({cache.fileName() + QLatin1String(".??????")}, QDir::Files | QDir::Hidden);
    for (const QFileInfo &file : unfinished)
        if (file.lastModified().secsTo(QDateTime::currentDateTime()) > kUnfinishedS)
            QFile::remove(file.filePath());
}

/// Saves the cache. Ignores failures: without a cache, the next run only takes longer.
void ProfileIndex::SaveCache() const
{
    if (m_cacheFile.isEmpty())
        return;
    QByteArray body, content;
    {
        QDataStream records(&body, QIODevice::WriteOnly);
        records.setVersion(QDataStream::Qt_5_15);
        records << quint32(m_known.size());
        for (const IndexedProfile &profile : m_known)
            records << profile;
    }
    QDataStream out(&content, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_5_15);
    out << kMagic << kVersion << Checksum(body) << body;
    QDir().mkpath(QFileInfo(m_cacheFile).path());
    RemoveLeftovers();
    QSaveFile file(m_cacheFile);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(content);
        file.commit();
    }
}
