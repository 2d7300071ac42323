// Settings for describing and reading image files.
#pragma once

#include "gfl.h"

#include <QHash>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QVariant>

class KernelSettingsReader;
class KernelSettingsWriter;
class KSettingsManager;

/// One instance is process-wide: KImage::init creates it or adopts the host's; KImage::exit deletes it if init created
/// it. Change it only while nothing is being loaded; any thread may read it. A change affects images described and
/// loaded afterward.
class ImageDatas {
public:
    // Hosts depend on the order of the fields.
    QSize thumbnailSize{128, 128}; // box for thumbnails, in pixels

    // How to treat missing or wrong camera data. 0: use the file's; 1: use the defaults where the file has none; 2:
    // always use the forced values. Any other value counts as 0. Lens models: 0 rectilinear, 1 fisheye. Focal lengths
    // are 35 mm equivalents, in mm.
    int exifMode = 0;
    float exifDefaultFocal35mm = 50.0F;
    int exifDefaultLensModel = 0;
    float exifForcedFocal35mm = 50.0F;
    float exifForcedK1 = 0.0F; // radial coefficients
    float exifForcedK2 = 0.0F;
    float exifForcedK3 = 0.0F;
    int exifForcedLensModel = 0;

    // Camera raw development; values are passed to the image-file layer unchanged.
    bool rawUseAutomaticBalance = false;
    bool rawUseCameraBalance = true;
    int rawHighlight = 0; // only the low byte is used
    bool rawAutoBright = false;
    float rawGamma = 2.2F;
    float rawBrightness = 2.5F;
    float rawRedScaling = 1.0F;
    float rawBlueScaling = 1.0F;

    QStringList thumbnailExtensions{
        QStringLiteral(".THM")}; // case-insensitive suffixes of files that are never described

    ImageDatas();

    /// Copies the process-wide instance, if there is one, then reads each field from the key "image/" + field name. A
    /// field whose key is missing keeps the process-wide value. thumbnailSize and thumbnailExtensions have no keys.
    void LoadSettings(KernelSettingsReader &reader);
    void LoadSettings(KSettingsManager &manager);
    void LoadSettings(QHash<QString, QVariant> &hash);
    void LoadSettings(const QString &xmlFile);
    /// Writes the fields that have a key.
    void SaveSettings(KernelSettingsWriter &writer);

    /// Sets @p params to the layer's default load parameters with the raw settings of the process-wide instance. All
    /// loads from files use them, so that a camera raw file is developed the same way everywhere.
    static void GetDefaultLoadParams(GFL_LOAD_PARAMS *params);

    static ImageDatas *settings;
};
