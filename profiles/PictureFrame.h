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
    double width = 0.0, height = 0.0;    // of the whole, in the sensor's orientation
    double middleX = 0.0, middleY = 0.0; // center of the current picture, from the center of the whole
    Orientation turn = 1;                // from the sensor to the current picture
};

/// Scale and axes of an entry's models in the picture.
struct EntryFrame {
    double ratio = 1.0;       // long side of the picture's frame over that of the profile's
    double unitPx = 0.0;      // pixels of the picture in a long side of the profile's frame
    double focalLength = 0.0; // of models without one, in long sides of the profile's frame
    double frameHeight = 0.0; // of the profile, over its width; 0 unless the entry's centers are used
    bool tangential = true;   // whether tangential terms have a direction
    QStringList assumed;      // messages for the user
};

/// The whole picture as the camera took it, before it was rotated or cropped to other proportions.
struct FrameShape {
    double longPx = 0.0, shortPx = 0.0; // sides, in pixels of the current picture
    double aspect = 1.0;                // of the frame, at least 1
    bool isCut = false;                 // cut from the middle of a frame with other proportions
    bool liesAcross = false;            // rotated by a right angle, in an unknown direction
    QStringList assumed;                // for the user
};

/// The camera body of a picture, from the user or otherwise from the file.
struct PictureBody {
    QString make, model;
};

/// Returns whether the entry was measured with this body.
bool IsSameBody(const ProfileEntry &entry, const PictureBody &body);

/// Computes the frames of a picture for the entries of a profile.
class PictureFrame {
public:
    PictureFrame(const PictureFacts &facts, const PictureBody &body);

    /// @param chosen  the user chose the profile: a smaller frame is extrapolated, with a note.
    /// @param why     filled if the entry cannot be used for the picture.
    std::optional<EntryFrame> Under(const ProfileEntry &entry, bool chosen, QString *why) const;

    /// Returns the shape of the frame; none, with the reason in @p why, if the picture's position in it is unknown.
    /// @param reference  sides of a picture as the camera stores it; empty: landscape.
    /// @param aspect     of the frame, at least 1; 0: that of the original size, if known, or of the picture.
    std::optional<FrameShape> Shape(const QSizeF &reference, double aspect, QString *why) const;
    /// Returns the position, in pixels of the current picture, of a center given in fractions of the profile's frame.
    PictureVector CenterOf(const ProfileModel &model, const EntryFrame &frame) const;
    /// Returns the share of the sensor's sides that the picture shows, by its 35 mm equivalent or digital zoom.
    /// @param factor  of the camera, as returned by CameraFactor.
    double FrameShare(double factor, QStringList *assumed) const;
    const PicturePlace &Place() const { return m_place; }

private:
    bool SetRatio(const ProfileEntry &entry, double aspect, EntryFrame *frame, QString *why) const;
    bool LimitRatio(bool chosen, EntryFrame *frame, QString *why) const;
    bool LiesAcross(const QSizeF &reference) const;
    PictureVector SidesAcross() const;

    const PictureFacts &m_facts;
    PictureBody m_body;
    double m_bodyFactor = 0.0; // of the camera table
    PicturePlace m_place;
};
