// Reads arbitrary bytes as an EXIF block into both kinds of list, analyzes the lists, and copies the block to an edited
// picture.
#include "ImageDef.h"
#include "KException.h"
#include "KImage.h"
#include "MadeJpeg.h"
#include "Target.h"

#include <QTemporaryDir>

namespace {

void Analyze(const QString &path)
{
    GFL_EXIF_DATA *list = gflLoadEXIFUTF8(path.toUtf8().constData(), 1);
    GFL_EXIF_DATAEX *extended = gflLoadEXIF2UTF8(path.toUtf8().constData(), 1);
    ImageDef image;
    image.AnalyseExif(list, extended);
    image.m_fileName = path;
    image.DumpExif();
    gflFreeEXIF(list);
    gflFreeEXIF2(extended);
}

/// Writes a picture with the metadata of @p source, as after a correction.
void Carry(const QString &source, const char *format)
{
    static const QTemporaryDir folder;
    const KImage::RowsToWrite rows = {8, 8, GFL_GREY, 8, [](KImage &strip, int) { strip.ClearBitmap(); }};
    KImage::FileForm form;
    form.format = QString::fromLatin1(format);
    try {
        KImage::WriteRows(rows, folder.filePath(QStringLiteral("edited")), form, source,
                          {{QStringLiteral("Xmp.crs.AlreadyApplied"), QStringLiteral("True")}});
    } catch (const KException &) {
        Require(false); // must not fail, because damaged metadata is left out
    }
}

} // namespace

FUZZ_TARGET(metadata)
{
    if (size < 8)
        return;
    Input input(data, size);
    const QByteArray exif = input.Rest();
    const MemoryFile file(MadeJpeg(exif));
    Analyze(file.Path());
    const char *const formats[] = {"tiff", "jpeg", "png", "exr"};
    Carry(file.Path(), formats[exif.back() & 3]); // the last byte is often unused, so seeds can be ordinary blocks
}
