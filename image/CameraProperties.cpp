#include "CameraProperties.h"

#include "DataTable_p.h"

void CameraProperties::Initialize()
{
    ReadOnce(m_initialized, m_mutex, [this] {
        ForEachRow(QStringLiteral("Data:cameras.txt"), [this](const QVector<QStringRef> &cells) {
            bool isNumber = false;
            const float scale = cells.last().toFloat(&isNumber);
            if (cells.size() == 3 && isNumber)
                m_cameras.append({cells[0].toString(), cells[1].toString(), scale});
        });
    });
}

float CameraProperties::GetSensorSize(QString make, QString model)
{
    Initialize();
    for (const CameraProperty &camera : qAsConst(m_cameras)) {
        if (isBrand(make, camera.brand) && model.contains(camera.model, Qt::CaseInsensitive))
            return camera.scale;
    }
    return -1.0F;
}

bool CameraProperties::isBrand(const QString &make, const QString &brand)
{
    return make.contains(brand, Qt::CaseInsensitive);
}
