// Reads arbitrary bytes as the cache of the profile index, with or without a valid checksum, and scans a folder with
// it.
#include "ProfileIndex.h"
#include "Target.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {

void Write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    Require(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

/// A folder with one unreadable profile, and the first bytes of its index.
struct Folder {
    Folder()
    {
        QDir(dir.path()).mkdir(QStringLiteral("lenses"));
        Write(lenses + QStringLiteral("/one.lcp"), "<x/>");
        ProfileIndex(cache).Scan({lenses});
        QFile file(cache);
        Require(file.open(QIODevice::ReadOnly));
        head = file.read(2 * sizeof(quint32)); // the magic number and the version
    }

    QTemporaryDir dir;
    const QString lenses = dir.filePath(QStringLiteral("lenses")), cache = dir.filePath(QStringLiteral("index"));
    QByteArray head;
};

QByteArray WithChecksum(const QByteArray &head, const QByteArray &body)
{
    QByteArray content = head;
    QDataStream out(&content, QIODevice::WriteOnly | QIODevice::Append);
    out << QCryptographicHash::hash(body, QCryptographicHash::Md5) << body;
    return content;
}

} // namespace

FUZZ_TARGET(profile_index)
{
    static const Folder folder;
    Input input(data, size);
    const bool isWhole = input.Below(8) == 0;
    const QByteArray rest = input.Rest();
    Write(folder.cache, isWhole ? rest : WithChecksum(folder.head, rest));
    ProfileIndex index(folder.cache);
    Require(index.Scan({folder.lenses}) && index.Profiles().size() == 1 && index.FilesRead() <= 1);
    ProfileIndex again(folder.cache); // reads the cache that `index` wrote
    Require(again.Scan({folder.lenses}) && again.FilesRead() == 0);
}
