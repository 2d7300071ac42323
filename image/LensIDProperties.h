// The lens table: names and types of Nikon and Canon lenses by identifier.
#pragma once

#include <QMutex>
#include <QObject>
#include <QStringList>
#include <QVector>

#include <atomic>

/// The table in "Data:lensid.txt", which documents its format. It is read once and never changes afterward, so lookups
/// are thread-safe.
class LensIDProperties : public QObject {
public:
    struct LensDefinition {
        QString lensId; // "8 8 121 3.6 3.6" (Nikon), "10 22 235" (Canon)
        QString brand;
        QString longName;
        int type = 0; // 0 standard, 1 fisheye, 2 tilt/shift
    };

    /// Creates an empty table; Initialize reads it.
    LensIDProperties();
    /// Copies the current table of @p other.
    LensIDProperties(const LensIDProperties &other);

    /// Reads the table; call it before the first lookup. A file that can't be opened leaves it empty.
    void Initialize();

    /// Returns the rows, in the table's order, whose brand occurs in @p make and whose identifier contains @p lensId,
    /// ignoring case. An empty @p lensId gives all lenses of the brand.
    QVector<LensDefinition> findLenses(QString make, QString lensId);
    /// Returns the long names of the rows that findLenses returns.
    QStringList findLensList(QString make, QString lensId);
    /// Returns the type of the only matching row; -1 if none or several match.
    int isFisheyLens(QString make, QString lensId);

private:
    std::atomic<bool> m_initialized{false};
    QMutex m_mutex; // guards reading the table
    QVector<LensDefinition> m_lenses;
};
