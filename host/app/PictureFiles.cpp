#include "PictureFiles.h"

#include "FileNames.h"
#include "InputLimits.h"
#include "KException.h"
#include "gfl.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace {

/// Returns the suffixes of all known formats: ".tif" and so on.
QStringList PictureSuffixes()
{
    QStringList suffixes;
    for (std::int32_t i = 0; const GFL_FORMAT *format = gflGetFormat(i); ++i)
        suffixes << QString::fromLatin1(format->Suffixes).split(QLatin1Char(' '));
    return suffixes;
}

class Walk {
public:
    Walk(const PictureSources &sources, PictureFiles *found)
        : m_sources(sources),
          m_suffixes(PictureSuffixes()),
          m_outputFolder(sources.outputFolder.isEmpty() ? QString()
                                                        : QFileInfo(sources.outputFolder).canonicalFilePath()),
          m_found(found)
    {
    }

    /// @param subpath  path of @p folder, relative to the walked folder.
    void Visit(const QString &folder, const QString &subpath)
    {
        const QDir dir(folder);
        if (!QFileInfo(folder).isReadable() || !QFileInfo(folder).isExecutable()) {
            m_found->unreadable << folder;
            return;
        }
        // QDir::System includes dangling links, which then fail with a reason. Suffixes are compared here, because
        // QDir's patterns match nothing if memory runs out.
        const QStringList files = dir.entryList(QDir::Files | QDir::System, QDir::Name);
        for (const QString &file : files) {
            if (IsPictureName(file) && !IsResult(file))
                m_found->pictures.append({Joined(folder, file), subpath});
        }
        AddUndecodable(folder, subpath);
        const QStringList subfolders = dir.entryList(QDir::Dirs | QDir::NoSymLinks | QDir::NoDotAndDotDot, QDir::Name);
        for (const QString &subfolder : subfolders) {
            const QString path = Joined(folder, subfolder);
            if (m_outputFolder.isEmpty() || QFileInfo(path).canonicalFilePath() != m_outputFolder)
                Visit(path, subpath.isEmpty() ? subfolder : Joined(subpath, subfolder));
        }
    }

private:
    /// Adds the pictures and folders whose names are not UTF-8, which QDir omits. They then fail with a reason.
    void AddUndecodable(const QString &folder, const QString &subpath)
    {
        std::error_code error;
        for (auto entry = std::filesystem::directory_iterator(QFile::encodeName(folder).constData(), error);
             !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
            const QByteArray bytes = QByteArray::fromStdString(entry->path().filename().native());
            const QString name = QFile::decodeName(bytes);
            std::error_code unknownKind;
            if (QFile::encodeName(name) != bytes && !bytes.startsWith('.')
                && (IsPictureName(name) || entry->is_directory(unknownKind)))
                m_found->pictures.append({Joined(folder, name), subpath});
        }
    }

    bool IsPictureName(const QString &file) const
    {
        return std::any_of(m_suffixes.begin(), m_suffixes.end(),
                           [&](const QString &suffix) { return file.endsWith(suffix, Qt::CaseInsensitive); });
    }

    bool IsResult(const QString &file) const
    {
        return std::any_of(m_sources.resultEndings.begin(), m_sources.resultEndings.end(),
                           [&](const QString &ending) { return file.endsWith(ending); });
    }

    const PictureSources &m_sources;
    const QStringList m_suffixes;
    const QString m_outputFolder;
    PictureFiles *m_found;
};

/// Reads a list, or slightly more than kMaxListBytes of it, in pieces, because the size of a pipe is unknown.
QByteArray ReadUpToLimit(QFile *file)
{
    constexpr qint64 kPieceBytes = qint64(1) << 20;
    QByteArray list;
    for (QByteArray piece; list.size() <= kMaxListBytes && !(piece = file->read(kPieceBytes)).isEmpty();)
        list += piece;
    return list;
}

QByteArray ReadList(const QString &name)
{
    QFile file(name == QLatin1String("-") ? QString() : AbsolutePath(name));
    const bool isOpen =
        file.fileName().isEmpty() ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    const QByteArray list = isOpen ? ReadUpToLimit(&file) : QByteArray();
    if (!isOpen || file.error() != QFileDevice::NoError)
        throw KException(QStringLiteral("cannot read the list of pictures \"%1\": %2").arg(name, file.errorString()),
                         KPlace());
    if (list.size() > kMaxListBytes)
        throw KException(
            QStringLiteral("cannot read the list of pictures \"%1\": more than %2 bytes, the maximum for a list")
                .arg(name)
                .arg(kMaxListBytes),
            KPlace());
    return list;
}

} // namespace

QStringList PictureNamePatterns()
{
    QStringList patterns = PictureSuffixes();
    for (QString &pattern : patterns)
        pattern.prepend(QLatin1Char('*'));
    return patterns;
}

QVector<NamedPicture> Named(const QStringList &names)
{
    QVector<NamedPicture> pictures;
    for (const QString &name : names)
        pictures.append({name, QString()});
    return pictures;
}

QStringList SplitNames(const QByteArray &list)
{
    const char separator = list.contains('\0') ? '\0' : '\n';
    QStringList names;
    const QList<QByteArray> parts = list.split(separator);
    for (QByteArray name : parts) {
        if (separator == '\n' && name.endsWith('\r'))
            name.chop(1);
        if (!name.isEmpty())
            names << QFile::decodeName(name);
    }
    return names;
}

PictureFiles ListPictures(const PictureSources &sources)
{
    PictureFiles found;
    Walk walk(sources, &found);
    QStringList names = sources.named;
    if (!sources.listFile.isEmpty())
        names += SplitNames(ReadList(sources.listFile));
    for (const QString &name : qAsConst(names)) {
        if (sources.recursive && QFileInfo(AbsolutePath(name)).isDir())
            // "./" keeps Qt from treating a name that begins with a colon as a resource.
            walk.Visit(name.startsWith(QLatin1Char(':')) ? QLatin1String("./") + name : name, QString());
        else
            found.pictures.append({name, QString()});
    }
    return found;
}
