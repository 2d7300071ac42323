// The frame of a picture: its size relative to the profile's frame, and the picture's position in it.
#pragma once

#include "FullFrame.h"
#include "LensProfile.h"
#include "PictureFacts.h"

#include <QSizeF>
#include <QStringList>

#include <optional>

/// The largest frame that a profile covers, relative to the profile's frame; larger ones would need extrapolation.
constexpr double kMaxFrameRatio = 1.04;

/// Returns the long side of the frame with the given crop factor and proportions; 0 if a value is missing.
double LongSideMm(double factor, double width, double height);

/// Returns the camera's crop factor from the table of cameras; 0 if it is unknown. Thread-safe.
double CameraFactor(const QString &make, const QString &model);

/// A vector in the axes of the sensor or of the picture, x to the right and y down.
struct PictureVector {
    double x, y;
};
/// Applies @p turn, an EXIF orientation, to a vector in the sensor's axes.
PictureVector Turned(Orientation turn, const PictureVector &vector);

/// Position of the current picture in the camera's whole picture, in pixels of the current picture.
struct PicturePlace {
    double width = 0.0, height = 0.0;    // of the whole picture, in the sensor's orientation
    double middleX = 0.0, middleY = 0.0; // center of the current picture, relative to that of the whole one
    Orientation turn = 1;                // from the sensor to the current picture
};

/// Scale and axes of an entry's models in the picture.
struct EntryFrame {
    double ratio = 1.0;       // long side of the picture's frame divided by that of the profile's
    double unitPx = 0.0;      // long side of the profile's frame, in pixels of the picture
    double focalLength = 0.0; // for models that give none; unit: long side of the profile's frame
    double frameHeight = 0.0; // of the profile's frame, divided by its width; 0: don't use the entry's centers
    // False if the picture was rotated in an unknown direction; tangential terms then can't be used.
    bool isDirectionKnown = true;
    QStringList assumed; // messages for the user
};

/// The whole picture as the camera took it, before it was rotated or cropped to other proportions.
struct FrameShape {
    double longPx = 0.0, shortPx = 0.0; // sides, in pixels of the current picture
    double aspect = 1.0;                // of the frame, at least 1
    bool isCut = false;                 // cropped from the center of a frame with other proportions
    bool isRotated = false;             // rotated by 90 degrees, in an unknown direction
    QStringList assumed;                // messages for the user
};

/// The camera body of a picture, named by the user or otherwise by the file.
struct PictureBody {
    QString make, model;
};

/// Returns whether the entry was measured with this body.
bool IsSameBody(const ProfileEntry &entry, const PictureBody &body);

/// Frames of a picture, computed for the entries of a profile.
class PictureFrame {
public:
    PictureFrame(const PictureFacts &facts, const PictureBody &body);

    /// Returns the picture's frame for an entry; nullopt, with the reason in @p why, if the entry cannot be used.
    /// @param chosen  whether the user chose the profile; if so, too small a frame is extrapolated, with a note.
    std::optional<EntryFrame> ForEntry(const ProfileEntry &entry, bool chosen, QString *why) const;

    /// Returns the shape of the frame; nullopt, with the reason in @p why, if the picture's position in it is unknown.
    /// @param reference  width and height of an unrotated frame; empty: landscape, 3:2.
    /// @param aspect     aspect ratio of the frame, at least 1; 0: that of the original size or, if unknown, of the
    ///                   picture.
    std::optional<FrameShape> Shape(const QSizeF &reference, double aspect, QString *why) const;
    /// Returns the position of the model's center in pixels of the current picture.
    PictureVector CenterOf(const ProfileModel &model, const EntryFrame &frame) const;
    /// Returns the width of the sensor area that the picture shows, divided by the sensor's width, according to the
    /// 35 mm equivalent focal length or the digital zoom.
    /// @param factor  crop factor of the camera, as returned by CameraFactor.
    double FrameShare(double factor, QStringList *assumed) const;
    const PicturePlace &Place() const { return m_place; }

private:
    bool SetRatio(const ProfileEntry &entry, double aspect, EntryFrame *frame, QString *why) const;
    bool LimitRatio(bool chosen, EntryFrame *frame, QString *why) const;
    bool IsRotated(const QSizeF &reference) const;
    PictureVector SidesIfRotated() const;

    const PictureFacts &m_facts;
    PictureBody m_body;
    double m_bodyFactor = 0.0; // from the camera table; 0: unknown
    PicturePlace m_place;
};
