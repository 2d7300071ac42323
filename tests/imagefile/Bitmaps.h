// Bitmaps and files for tests of the image-file layer: created, loaded, saved and compared through gfl.h.
#pragma once

#include "gfl.h"

#include <QByteArray>
#include <QSize>
#include <QString>
#include <QTemporaryDir>

#include <functional>
#include <memory>

struct FreeBitmap {
    void operator()(GFL_BITMAP *bitmap) const { gflFreeBitmap(bitmap); }
};
using BitmapPtr = std::unique_ptr<GFL_BITMAP, FreeBitmap>;

int ChannelsOf(int type);

/// Returns a bitmap with uninitialized pixels; rows are aligned to @p rowAlignment bytes.
BitmapPtr NewBitmap(int width, int height, int type, int bits, unsigned rowAlignment = 4);

/// Function that returns a sample as a fraction of the full range.
using Samples = std::function<double(int x, int y, int c)>;

BitmapPtr FilledBitmap(int width, int height, int type, int bits, const Samples &value);

/// Returns a bitmap of random samples over the full range (floats: 0 to 1); the same seed gives the same bitmap.
BitmapPtr RandomBitmap(int width, int height, int type, int bits, unsigned seed = 1);

/// Returns a smooth ramp in x and y, which suits JPEG.
BitmapPtr SmoothBitmap(int width, int height, int type, int bits);

/// Converts a bitmap to another form by plain arithmetic: copies gray to the colors, makes new alpha opaque, and drops
/// channels that the form lacks. Doesn't convert color to gray.
BitmapPtr Converted(const GFL_BITMAP &bitmap, int type, int bits);

/// Returns sample @p c of pixel (x, y) as a fraction of the full range.
double SampleAt(const GFL_BITMAP &bitmap, int x, int y, int c);

/// Returns the pixels without row padding.
QByteArray PackedPixels(const GFL_BITMAP &bitmap);

/// Returns an empty string if both have the same form and size and no sample differs by more than @p tolerance, a
/// fraction of the full range; otherwise where and how much.
QString Difference(const GFL_BITMAP &got, const GFL_BITMAP &expected, double tolerance = 0.0);

/// Does the same with expected samples from a function, but doesn't compare form and size.
QString Difference(const GFL_BITMAP &got, const Samples &expected, double tolerance = 0.0);

/// Color in Lab relative to D50, and in sRGB as fractions of the full range. The Lab values were computed with the
/// curve of IEC 61966-2-1, B. Lindbloom's matrix for D50 (Bradford) and the formula of CIE 15.
struct LabColor {
    double lab[3];
    double rgb[3];
};
constexpr LabColor kLabColors[] = {{{0, 0, 0}, {0, 0, 0}},
                                   {{100, 0, 0}, {1, 1, 1}},
                                   {{50.554, 50.519, 42.336}, {0.8, 0.3, 0.2}},
                                   {{56.104, -43.34, 31.046}, {0.2, 0.6, 0.3}},
                                   {{40.659, 37.679, -79.155}, {0.3, 0.3, 0.9}}};
constexpr int kLabCount = 5;

/// Returns the bytes of an lcms2 profile (cmsHPROFILE) and closes it.
QByteArray ProfileBytes(void *profile);

/// Returns a CMYK profile in which full black reduces the lightness to 0, and each of the other inks by a third.
QByteArray InkProfile();
/// Returns the gray that @p cyan alone gives in that profile; both are fractions of the full range.
double GrayOfCyan(double cyan);

GFL_SAVE_PARAMS SaveParams(const char *format, int compression = -1, int quality = -1);
/// Returns the defaults with @p flags added; a @p type other than 0 is forced.
GFL_LOAD_PARAMS LoadParams(unsigned flags = 0, int type = 0);

/// Returns null if the file can't be read; sets @p error and @p info if given.
BitmapPtr Load(const QString &path, int *error = nullptr,
               const GFL_LOAD_PARAMS &params = LoadParams(GFL_LOAD_ORIGINAL_DEPTH),
               GFL_FILE_INFORMATION *info = nullptr);
BitmapPtr LoadFromMemory(const QByteArray &file, int *error = nullptr,
                         const GFL_LOAD_PARAMS &params = LoadParams(GFL_LOAD_ORIGINAL_DEPTH),
                         GFL_FILE_INFORMATION *info = nullptr);
BitmapPtr LoadThumbnail(const QString &path, QSize box, const GFL_LOAD_PARAMS &params = LoadParams(),
                        GFL_FILE_INFORMATION *info = nullptr);
int Describe(const QString &path, GFL_FILE_INFORMATION *info);
int Save(const QString &path, const GFL_BITMAP &bitmap, const GFL_SAVE_PARAMS &params = SaveParams("tiff"));

/// Returns the bytes of a saved file; empty if the save failed.
QByteArray SavedBytes(const GFL_BITMAP &bitmap, const GFL_SAVE_PARAMS &params);

/// Returns a file's description as text; @p model is a GflColorModel.
QByteArray InfoText(const char *format, const QByteArray &description, QSize size, int components, int bits, int model,
                    QSize dpi = QSize(0, 0));
QByteArray InfoText(const GFL_FILE_INFORMATION &info);

/// Truncates a file to each size from @p begin to @p end - 1 bytes. Returns an empty string if every load gives a read
/// error or, for at most 16 bytes, an unknown format; otherwise the first size at which it doesn't.
QString BadCut(const QByteArray &file, int end, int begin = 0);

/// Loads a file. Returns an empty string if its description is @p info, its picture has the described size and depth
/// and is of this @p type, and the samples are as expected; otherwise the differences.
QString BadRead(const QByteArray &file, const QByteArray &info, int type, const Samples &expected,
                double tolerance = 0.0);
QString BadRead(const QByteArray &file, const QByteArray &info, const GFL_BITMAP &expected, double tolerance = 0.0);

/// Loads a file with its metadata and returns the warning, or "not read" if the load failed.
QByteArray WarningOf(const QByteArray &file);

/// Temporary folder that returns the paths of its files.
class Folder : public QTemporaryDir {
public:
    QString operator()(const char *name) const { return filePath(QString::fromUtf8(name)); }
};

/// Damages @p good as described by each row of faults.tsv for @p kind, and loads it. Returns an empty string if there
/// are such rows and every load fails with the error and the text of its row; otherwise the first row for which it
/// doesn't.
QString BadFault(const QByteArray &kind, const QByteArray &good);

/// Returns the low @p bytes bytes of a number, highest first.
QByteArray BigEndian(quint64 number, int bytes);
