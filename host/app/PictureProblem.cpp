#include "PictureProblem.h"

#include "ImageDef.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(PictureProblem)
};

} // namespace

QString FileProblem(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists()) {
        return info.isSymLink()                          ? Text::tr("is a link to a file that does not exist")
            : path.contains(QChar::ReplacementCharacter) ? Text::tr("no such file; names must be in UTF-8")
                                                         : Text::tr("no such file");
    }
    if (info.isDir())
        return Text::tr("is a folder, expected a picture file");
    if (!info.isFile())
        return Text::tr("is not a regular file, expected a picture file");
    if (info.size() == 0)
        return Text::tr("is empty (0 bytes), expected a picture file");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Text::tr("cannot be read: %1").arg(file.errorString());
    return QString();
}

QString TextOf(const RefusalReason &reason, const QString &path)
{
    switch (reason.kind) {
    case RefusalReason::None:
        return QString();
    case RefusalReason::Unread:
    case RefusalReason::Failed:
        return WithoutFileName(reason.text, path);
    case RefusalReason::Gray:
        return Text::tr("gray pictures are not supported");
    case RefusalReason::Lab:
        return Text::tr("%1 pictures are not supported").arg(QLatin1String("Lab"));
    case RefusalReason::Cmyk:
        return Text::tr("%1 pictures are not supported").arg(QLatin1String("CMYK"));
    case RefusalReason::OtherChannels:
        return Text::tr("pictures of %1 channels are not supported").arg(reason.channels);
    case RefusalReason::Tiled:
        return Text::tr("tiled TIFF files are not supported");
    case RefusalReason::Companion:
        break;
    }
    return Text::tr("is not recognized as a picture: a companion file, or damaged");
}

QString WithoutFileName(const QString &text, const QString &path)
{
    for (const char *separator : {": ", " "}) {
        const QString start = path + QLatin1String(separator);
        if (text.startsWith(start))
            return text.mid(start.size());
    }
    return text;
}
