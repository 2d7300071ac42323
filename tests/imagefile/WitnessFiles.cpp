// Writes pictures with metadata to a folder. Then the layer copies these and given pictures, for other programs to
// read: witness_files FOLDER [PICTURE...]. A source is named NAME.source.jpg, or NAME.read.heic and the like; its
// copies end in .tiff, .jpeg, .png and .psd instead. FORM.pixels.tiff, .png and .psd hold the same pixels. sensor.dng
// is a camera raw file without metadata.
#include "Bitmaps.h"
#include "DngFile.h"
#include "Files.h"
#include "NoteFile.h"

#include <cstdio>

namespace {

bool WriteCopies(const QString &source)
{
    const BitmapPtr bitmap = Load(source, nullptr, LoadParams(GFL_LOAD_METADATA));
    if (!bitmap)
        return false;
    // Converts the EXIF to a list and back, like the image kernel.
    GFL_EXIF_DATAEX *exif = gflBitmapGetEXIF2(bitmap.get());
    gflBitmapSetEXIF2(bitmap.get(), exif);
    gflFreeEXIF2(exif);
    bool done = true;
    for (const char *format : {"tiff", "jpeg", "png", "psd"})
        done = Save(source.left(source.lastIndexOf(QLatin1Char('.')) + 1) + QLatin1String(format), *bitmap,
                    SaveParams(format))
                == GFL_NO_ERROR
            && done;
    return done;
}

} // namespace

int main(int count, char **arguments)
{
    if (count < 2) {
        std::fputs("usage: witness_files FOLDER [PICTURE...]\n", stderr);
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(arguments[1]) + QLatin1Char('/');
    const QByteArray jpeg = SavedBytes(*SmoothBitmap(40, 30, GFL_RGB, 8), SaveParams("jpeg"));
    bool done = true;
    for (const NoteKind &kind : NoteKinds()) {
        quint32 place = 0;
        const QString name =
            QString::fromLatin1(kind.name).remove(QLatin1Char(',')).replace(QLatin1Char(' '), QLatin1Char('-'));
        const QString path = folder + name + QLatin1String(".source.jpg");
        WriteFile(path, JpegWithExif(jpeg, ExifWithNote(kind, &place)));
        done = WriteCopies(path) && done;
    }
    const struct {
        const char *name;
        int type, bits;
    } forms[] = {{"gray8", GFL_GREY, 8},
                 {"gray16", GFL_GREY, 16},
                 {"rgb16", GFL_RGB, 16},
                 {"alpha8", GFL_RGBA, 8},
                 {"alpha16", GFL_RGBA, 16}};
    for (const auto &form : forms)
        for (const char *format : {"tiff", "png", "psd"})
            done = Save(folder + QLatin1String(form.name) + QLatin1String(".pixels.") + QLatin1String(format),
                        *SmoothBitmap(40, 30, form.type, form.bits), SaveParams(format))
                    == GFL_NO_ERROR
                && done;
    WriteFile(folder + QLatin1String("sensor.dng"), DngFile(QSize(240, 160), {0.2, 0.4, 0.3}));
    for (int i = 2; i < count; ++i)
        done = WriteCopies(QString::fromLocal8Bit(arguments[i])) && done;
    if (!done)
        std::fprintf(stderr, "witness_files: %s\n", gflLastErrorText());
    return done ? 0 : 1;
}
