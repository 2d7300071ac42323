// The table of cameras: how large their sensors are.
#pragma once

#include <QMutex>
#include <QObject>
#include <QVector>

#include <atomic>

/// Rows come from "Data:cameras.txt", which tells its own format. The table is read once, on first need, by whichever
/// thread comes first, and never changes afterwards: any thread may look up.
class CameraProperties : public QObject {
public:
    struct CameraProperty {
        QString brand;
        QString model;
        float scale = 1.0F; // diagonal of a 36 x 24 mm frame over that of the sensor
    };

    /// A table that can't be opened stays empty.
    void Initialize();

    /// The scale of the first row whose brand @p make contains and whose model @p model contains, in any case; -1 if
    /// there is none.
    float GetSensorSize(QString make, QString model);

    /// Whether @p make contains @p brand, in any case: makers write themselves in several ways.
    static bool isBrand(const QString &make, const QString &brand);

private:
    std::atomic<bool> m_initialized{false};
    QMutex m_mutex; // of the reading
    QVector<CameraProperty> m_cameras;
};
