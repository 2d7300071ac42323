// Facts about a photograph, each with its source, for choosing and fitting a profile.
#pragma once

#include <QRectF>
#include <QSize>
#include <QString>
#include <QVector>

#include <optional>

/// A fact and its source, for example "EXIF LensModel".
template <typename T> struct Fact {
    T value{};
    QString source; // empty: unknown

    bool Known() const { return !source.isEmpty(); }
};

/// One of the eight orientations of EXIF; 1: upright as stored.
using Orientation = int;

/// The color space of stored values according to EXIF, for pictures without an ICC profile.
enum class ColorEncoding { Unknown, Srgb, AdobeRgb };

struct PictureFacts {
    QString path;
    Fact<QString> make, model;
    QVector<Fact<QString>> lensNames; // most trustworthy first
    Fact<QString> lensMake;
    QVector<Fact<QString>> lensIds; // the maker's lens IDs, as text
    Fact<double> lensMinFocalMm, lensMaxFocalMm, lensMinApertureAtMin, lensMinApertureAtMax; // as in LensSpecification
    Fact<double> focalMm, focal35Mm, digitalZoom, aperture, distanceM; // the distance may be infinite
    QSize pixels;                                                      // as stored and delivered by the reader
    Fact<QSize> original;           // full size as photographed, before cropping or scaling
    Fact<double> focalPlaneWidthMm; // long side of the original on the sensor
    Orientation orientation = 1;    // from the file
    Orientation readerTurn = 1;     // applied by the reader: always 1, because all readers deliver pixels as stored
    bool raw = false;
    Fact<ColorEncoding> encoding;
    Fact<QRectF> crop;       // fractions of the original's sides, angle 0
    bool cropTurned = false; // a crop at an angle, which cannot be fitted
    bool cropLost = false;   // a crop whose position in the original cannot be read
    /// Corrections already applied to rendered pixels.
    Fact<bool> distortionDone, chromaticDone, vignettingDone;
    /// Corrections requested from an earlier run, which could not make them.
    bool distortionTried = false, chromaticTried = false, vignettingTried = false;
};

/// Reads the facts of a picture file from its header, EXIF, maker notes, XMP and, for camera raw files, LibRaw. Reads
/// no pixels. The image-file layer must have been started. Unreadable metadata leaves facts unknown.
///
/// @param error  filled, and the size left empty, if the file is not a picture. May be null.
PictureFacts ReadPictureFacts(const QString &path, QString *error);

struct FitOptions;

/// Returns whether an automatic run has nothing to do: every requested correction was made before, or at least one
/// was and an earlier run could not make the others. False with FitOptions::again.
bool WasDoneBefore(const PictureFacts &facts, const FitOptions &options);
