// The entries of a profile for one correction, ordered by setting, and the choice of entries for a setting.
#pragma once

#include "LensProfile.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>

/// A profile entry and its weight.
struct EntryWeight {
    int entry;     // index into LensProfile::entries
    double weight; // 0 to 1; the sum over one correction is 1
};

/// Settings closer than these ratios count as equal.
constexpr double kSameFocal = 1.01, kSameDistance = 1.02, kSameAperture = 1.02;

/// The quantity that a model of an entry corrects.
enum class Quantity { Geometry, Color, Light };

/// Returns whether the entry has a model for @p quantity.
bool HasModel(const ProfileEntry &entry, Quantity quantity);

/// The setting that a picture was taken at: focal length, aperture and distance. Absent values are unknown.
struct Setting {
    std::optional<double> focalMm, aperture, distanceM; // aperture: f-number; the distance may be infinite
};

/// The entries that a grid chooses for a setting.
struct GridChoice {
    QVector<EntryWeight> entries; // at most 8; empty if too little of the setting is known
    QString why;                  // why `entries` is empty
    QStringList assumed;          // messages for the user
};

/// Entries sorted by focal length, then distance, then aperture; each focal length may have different distances and
/// apertures. Entries that agree within 1 % in focal length and 2 % in distance and f-number are duplicates: the last
/// one in the file is used.
class ProfileGrid {
public:
    /// Collects the entries of @p profile that have a model for @p quantity and that @p serves accepts. @p profile must
    /// outlive the grid.
    ProfileGrid(const LensProfile &profile, Quantity quantity, const std::function<bool(int entry)> &serves);

    bool IsEmpty() const { return m_focals.isEmpty(); }
    /// Returns pairs of entries: a duplicate and the later one that replaces it.
    const QVector<QPair<int, int>> &Replaced() const { return m_replaced; }

    /// Returns the entries around the setting, weighted linearly in 1/f, 1/d and, only for light, 1/N^2; beyond the
    /// ends, the outermost ones. An unknown distance counts as the farthest. Perspective and fisheye are never mixed.
    GridChoice Choose(const Setting &setting) const;

private:
    struct Cell { // aperture
        double apertureApex;
        bool hasAperture;
        int entry;
    };
    struct Distance {
        double distanceM; // 0: not given
        QVector<Cell> cells;
    };
    struct Focal {
        double focalMm; // 0: not given
        ProfileEntry::Kind kind;
        QVector<Distance> distances;
    };

    void Insert(QVector<int> entries);
    void InsertDistances(QVector<int> entries, Focal *focal);
    void InsertCells(QVector<int> entries, Distance *distance);
    bool AddFocal(const Focal &focal, double weight, const Setting &setting, GridChoice *choice) const;
    bool AddDistance(const Distance &distance, double weight, const Setting &setting, GridChoice *choice) const;

    void NoteOnlyAperture(const Cell &only, const Setting &setting, GridChoice *choice) const;

    const LensProfile &m_profile;
    Quantity m_quantity;
    QVector<Focal> m_focals;
    QVector<QPair<int, int>> m_replaced;
};
