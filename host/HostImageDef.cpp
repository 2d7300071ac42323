#include "HostImageDef.h"

#include <QFileInfo>

namespace {

/// What can be said of a file without opening it as a picture; empty: nothing against it.
QString FileProblem(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists()) {
        return info.isSymLink()                          ? QStringLiteral("is a link to a file that does not exist")
            : path.contains(QChar::ReplacementCharacter) ? QStringLiteral("no such file; names are expected in UTF-8")
                                                         : QStringLiteral("no such file");
    }
    if (info.isDir())
        return QStringLiteral("is a folder, expected a picture file");
    if (!info.isFile())
        return QStringLiteral("is not a regular file, expected a picture file");
    if (info.size() == 0)
        return QStringLiteral("is empty (0 bytes), expected a picture file");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("cannot be read: %1").arg(file.errorString());
    return QString();
}

} // namespace

QString WithoutFileName(const QString &text, const QString &path)
{
    for (const char *separator : {": ", " "}) {
        const QString start = path + QLatin1String(separator);
        if (text.startsWith(start))
            return text.mid(start.size());
    }
    return text;
}

HostImageDef::HostImageDef(const QString &path) : m_path(path)
{
    m_problem = FileProblem(path);
    if (m_problem.isEmpty())
        Describe();
}

HostImageDef::~HostImageDef() = default;

void HostImageDef::Describe()
{
    GFL_FILE_INFORMATION info = {};
    constexpr std::int32_t kAnyFormat = -1;
    constexpr std::uint32_t kFlags = 4; // as all hosts pass them; without effect
    const int error = gflGetFileInformationExUTF8(m_path.toUtf8().constData(), kAnyFormat, &info, kFlags);
    if (error != GFL_NO_ERROR) {
        m_problem = WithoutFileName(QString::fromUtf8(gflLastErrorText()), m_path);
        return;
    }
    m_width = info.Width;
    m_height = info.Height;
    m_channels = info.ComponentsPerPixel;
    m_depth = info.BitsPerComponent;
    gflFreeFileInformation(&info);
}

QString HostImageDef::ShortFileName() const
{
    return QFileInfo(m_path).fileName();
}

QString HostImageDef::PathName() const
{
    return QFileInfo(m_path).path();
}

bool HostImageDef::HasExif() const
{
    return gflHasEXIFUTF8(m_path.toUtf8().constData());
}

bool HostImageDef::HasICC() const
{
    return gflHasICCProfileUTF8(m_path.toUtf8().constData());
}

KImage *HostImageDef::Lock(int width, int height, bool)
{
    throw KException(QStringLiteral("pixels are lent at full size only, asked for %1x%2").arg(width).arg(height),
                     KPlace());
}

void HostImageDef::Unlock(int, int, bool) { }

KImage *HostImageDef::LockFullSize(bool nativeDepth)
{
    Lent &lent = m_lent[nativeDepth];
    if (lent.locks == 0)
        lent.image.ID_Read(m_path, nativeDepth);
    ++lent.locks; // only now: a failed read leaves nothing to unlock
    return &lent.image;
}

void HostImageDef::UnlockFullSize(bool nativeDepth)
{
    Lent &lent = m_lent[nativeDepth];
    if (lent.locks > 0 && --lent.locks == 0)
        lent.image.FreeBitmap();
}
