// The settings that steer how image files are described and read.
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

/// One instance is process-wide: KImage::init makes it or takes the host's, KImage::exit deletes it if it was made.
/// Changed only while nothing loads; read by any thread. A change affects what is described and loaded afterwards.
class ImageDatas {
public:
    // In this order; hosts share the record.
    QSize thumbnailSize{128, 128}; // pixels: the box that thumbnails are loaded for

    // What to do about missing or wrong camera data. 0: use what the file says; 1: the defaults where it says nothing;
    // 2: force. Any other value counts as 0. Lens models: 0 rectilinear, 1 fisheye. Focal lengths: mm, 35 mm
    // equivalent.
    int exifMode = 0;
    float exifDefaultFocal35mm = 50.0F;
    int exifDefaultLensModel = 0;
    float exifForcedFocal35mm = 50.0F;
    float exifForcedK1 = 0.0F; // radial coefficients
    float exifForcedK2 = 0.0F;
    float exifForcedK3 = 0.0F;
    int exifForcedLensModel = 0;

    // Camera raw development; each value goes to the image-file layer as it stands.
    bool rawUseAutomaticBalance = false;
    bool rawUseCameraBalance = true;
    int rawHighlight = 0; // its low byte counts
    bool rawAutoBright = false;
    float rawGamma = 2.2F;
    float rawBrightness = 2.5F;
    float rawRedScaling = 1.0F;
    float rawBlueScaling = 1.0F;

    QStringList thumbnailExtensions{QStringLiteral(".THM")}; // endings, in any case, of files that are never described

    ImageDatas();

    /// Takes over the process-wide instance, if there is one, then what the source holds under "image/" and the field's
    /// name; so a key that the source lacks has the process-wide value. thumbnailSize and thumbnailExtensions have no
    /// keys.
    void LoadSettings(KernelSettingsReader &reader);
    void LoadSettings(KSettingsManager &manager);
    void LoadSettings(QHash<QString, QVariant> &hash);
    void LoadSettings(const QString &xmlFile);
    /// Writes the fields that have a key.
    void SaveSettings(KernelSettingsWriter &writer);

    /// The layer's default load parameters with the raw settings of the process-wide instance; used by all loads from
    /// files, so that a camera raw file develops the same way everywhere.
    static void GetDefaultLoadParams(GFL_LOAD_PARAMS *params);

    static ImageDatas *settings;
};
