// Table of cameras with their sensor sizes.
#pragma once

#include <QMutex>
#include <QObject>
#include <QVector>

#include <atomic>

/// The table in "Data:cameras.txt", which documents its format. The first thread that needs the table reads it; it
/// never changes afterward, so lookups are thread-safe.
class CameraProperties : public QObject {
public:
    struct CameraProperty {
        QString brand;
        QString model;
        float scale = 1.0F; // diagonal of a 36 x 24 mm frame divided by that of the sensor
    };

    /// Reads the table. A file that can't be opened leaves it empty.
    void Initialize();

    /// Returns the scale of the first row whose brand occurs in @p make and whose model occurs in @p model, ignoring
    /// case; -1 if there is none.
    float GetSensorSize(QString make, QString model);

    /// Returns whether @p make contains @p brand, ignoring case: makers spell their names in several ways.
    static bool isBrand(const QString &make, const QString &brand);

private:
    std::atomic<bool> m_initialized{false};
    QMutex m_mutex; // guards reading the table
    QVector<CameraProperty> m_cameras;
};
