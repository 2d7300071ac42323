// The entries of a profile that hold one correction, in the order of their settings, and which of them meet a setting.
#pragma once

#include "LensProfile.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>

/// A profile entry that takes part, and how much.
struct EntryWeight {
    int entry;     // index into LensProfile::entries
    double weight; // 0 to 1; the sum over one correction is 1
};

/// Settings closer than these ratios are one.
constexpr double kSameFocal = 1.01, kSameDistance = 1.02, kSameAperture = 1.02;

/// What an entry can correct.
enum class Quantity { Geometry, Color, Light };

/// Whether the entry holds a model for it.
bool Holds(const ProfileEntry &entry, Quantity quantity);

/// The setting of a picture; what is absent is unknown.
struct Setting {
    std::optional<double> focalMm, aperture, distanceM; // f-number; the distance may be infinite
};

/// What a grid gives for a setting.
struct GridChoice {
    QVector<EntryWeight> entries; // at most 8; empty if the setting doesn't decide
    QString why;                  // why empty
    QStringList assumed;          // for people
};

/// Entries by focal length, below that by distance, below that by aperture; not every focal length needs the same
/// distances and apertures. Settings within 1 % in focal length and 2 % in distance or f-number are one: the last in
/// the file counts.
class ProfileGrid {
public:
    /// Entries of @p profile that hold @p quantity and that @p serves accepts. @p profile must outlive the grid.
    ProfileGrid(const LensProfile &profile, Quantity quantity, const std::function<bool(int entry)> &serves);

    bool IsEmpty() const { return m_focals.isEmpty(); }
    /// Entries that give way to a later one, with that one.
    const QVector<QPair<int, int>> &Replaced() const { return m_replaced; }

    /// The entries between which the setting lies, weighted linearly in 1/f, 1/d and, for light alone, 1/N^2; the
    /// outermost ones beyond the ends. An unknown distance is the farthest. Perspective and fisheye are never mixed.
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

    const LensProfile &m_profile;
    Quantity m_quantity;
    QVector<Focal> m_focals;
    QVector<QPair<int, int>> m_replaced;
};
