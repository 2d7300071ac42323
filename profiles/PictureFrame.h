// The frame: how large the picture's part of the sensor is beside that of a profile, and how the picture lies in it.
#pragma once

#include "LensProfile.h"
#include "PictureFacts.h"

#include <QStringList>

#include <optional>

/// Diagonal of a frame of 36 x 24 mm; others are told by this over theirs.
constexpr double kFullFrameDiagonalMm = 43.266615305567875; // sqrt(36^2 + 24^2)
/// A profile serves frames up to this much larger than its own; beyond it would be extrapolated.
constexpr double kMaxFrameRatio = 1.04;

/// The long side of the frame with this factor and these proportions; 0 if a value is missing.
double LongSideMm(double factor, double width, double height);

/// The factor of the camera's frame by the table of cameras; 0 if it has none. Any thread.
double CameraFactor(const QString &make, const QString &model);

/// A vector in the sensor's axes (x to the right, y down) as @p turn, an EXIF orientation that was applied, leaves it.
struct PictureVector {
    double x, y;
};
PictureVector Turned(Orientation turn, const PictureVector &vector);

/// Where the picture at hand lies in the whole picture that the camera took, in pixels of the picture at hand.
struct PicturePlace {
    double width = 0.0, height = 0.0;    // of the whole, as the sensor lies
    double middleX = 0.0, middleY = 0.0; // middle of the picture at hand, from the middle of the whole
    Orientation turn = 1;                // from the sensor to the picture at hand
};

/// An entry's models on the picture.
struct EntryFrame {
    double ratio = 1.0;       // long side of the picture's frame over that of the profile's
    double unitPx = 0.0;      // pixels of the picture in a long side of the profile's frame
    double focalLength = 0.0; // of models that don't state theirs, in long sides of the profile's frame
    double frameHeight = 0.0; // of the profile, over its width; 0 unless the entry's centers count
    bool tangential = true;   // whether tangential terms have a direction
    QStringList assumed;      // for people
};

/// The body that a picture was taken with, as the user or else the file says.
struct PictureBody {
    QString make, model;
};

/// Whether the entry was measured with this body.
bool IsSameBody(const ProfileEntry &entry, const PictureBody &body);

/// Frames of a picture under the entries of a profile.
class PictureFrame {
public:
    PictureFrame(const PictureFacts &facts, const PictureBody &body);

    /// @param chosen  the user chose the profile: a smaller frame is extrapolated, noted.
    /// @param why     filled if the entry can't serve the picture.
    std::optional<EntryFrame> Under(const ProfileEntry &entry, bool chosen, QString *why) const;

    /// The position, in pixels of the picture at hand, of a center given in shares of the profile's frame.
    PictureVector CenterOf(const ProfileModel &model, const EntryFrame &frame) const;
    /// The share of the sensor's sides that the picture shows, by its 35 mm equivalent or digital zoom.
    /// @param factor  of the camera, as CameraFactor.
    double FrameShare(double factor, QStringList *assumed) const;
    const PicturePlace &Place() const { return m_place; }

private:
    bool SetRatio(const ProfileEntry &entry, double aspect, EntryFrame *frame, QString *why) const;
    bool LimitRatio(bool chosen, EntryFrame *frame, QString *why) const;
    bool LiesAcross(const ProfileEntry &entry) const;
    PictureVector SidesAcross() const;

    const PictureFacts &m_facts;
    PictureBody m_body;
    double m_bodyFactor = 0.0; // of the camera table
    PicturePlace m_place;
};
