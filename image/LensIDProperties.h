// The table of lenses: what a lens identifier of Nikon's or Canon's stands for.
#pragma once

#include <QMutex>
#include <QObject>
#include <QStringList>
#include <QVector>

#include <atomic>

/// Rows come from "Data:lensid.txt", which tells its own format. The table is read once and never changes afterwards:
/// any thread may look up.
class LensIDProperties : public QObject {
public:
    struct LensDefinition {
        QString lensId; // "8 8 121 3.6 3.6" (Nikon), "10 22 235" (Canon)
        QString brand;
        QString longName;
        int type = 0; // 0 standard, 1 fisheye, 2 tilt/shift
    };

    /// Empty, and not read yet.
    LensIDProperties();
    /// The table as @p other has it now.
    LensIDProperties(const LensIDProperties &other);

    /// To be called before the first look-up. A table that can't be opened stays empty.
    void Initialize();

    /// The rows, in the table's order, whose brand @p make contains and whose identifier contains @p lensId, in any
    /// case. So an empty @p lensId gives all of the brand.
    QVector<LensDefinition> findLenses(QString make, QString lensId);
    /// Their long names.
    QStringList findLensList(QString make, QString lensId);
    /// The type of the one row that fits; -1 if none fits or several do.
    int isFisheyLens(QString make, QString lensId);

private:
    std::atomic<bool> m_initialized{false};
    QMutex m_mutex; // of the reading
    QVector<LensDefinition> m_lenses;
};
