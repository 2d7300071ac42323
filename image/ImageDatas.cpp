#include "ImageDatas.h"

#include "KSRFromKSettingsManager.h"
#include "KSRFromQHash.h"
#include "KSRFromXMLFile.h"
#include "KernelSettingsWriter.h"

ImageDatas *ImageDatas::settings = nullptr;

namespace {

/// Calls @p visit with each setting's key and field.
template <typename Record, typename Visit> void ForEachSetting(Record &record, Visit visit)
{
    visit("image/exifMode", record.exifMode);
    visit("image/exifDefaultFocal35mm", record.exifDefaultFocal35mm);
    visit("image/exifDefaultLensModel", record.exifDefaultLensModel);
    visit("image/exifForcedFocal35mm", record.exifForcedFocal35mm);
    visit("image/exifForcedK1", record.exifForcedK1);
    visit("image/exifForcedK2", record.exifForcedK2);
    visit("image/exifForcedK3", record.exifForcedK3);
    visit("image/exifForcedLensModel", record.exifForcedLensModel);
    visit("image/rawUseAutomaticBalance", record.rawUseAutomaticBalance);
    visit("image/rawUseCameraBalance", record.rawUseCameraBalance);
    visit("image/rawHighlight", record.rawHighlight);
    visit("image/rawAutoBright", record.rawAutoBright);
    visit("image/rawGamma", record.rawGamma);
    visit("image/rawBrightness", record.rawBrightness);
    visit("image/rawRedScaling", record.rawRedScaling);
    visit("image/rawBlueScaling", record.rawBlueScaling);
}

/// Visitor that reads a field with the getter for its type; the current value is the default.
class FieldLoader {
public:
    explicit FieldLoader(KernelSettingsReader &reader) : m_reader(reader) { }
    void operator()(const char *key, bool &field) { field = m_reader.GetBool(QLatin1String(key), field); }
    void operator()(const char *key, int &field) { field = m_reader.GetInt(QLatin1String(key), field); }
    void operator()(const char *key, float &field)
    {
        field = static_cast<float>(m_reader.GetDouble(QLatin1String(key), static_cast<double>(field)));
    }

private:
    KernelSettingsReader &m_reader;
};

} // namespace

ImageDatas::ImageDatas() = default;

void ImageDatas::LoadSettings(KernelSettingsReader &reader)
{
    if (settings)
        *this = *settings;
    ForEachSetting(*this, FieldLoader(reader));
}

void ImageDatas::LoadSettings(KSettingsManager &manager)
{
    KSRFromKSettingsManager reader(&manager);
    LoadSettings(reader);
}

void ImageDatas::LoadSettings(QHash<QString, QVariant> &hash)
{
    KSRFromQHash reader(&hash);
    LoadSettings(reader);
}

void ImageDatas::LoadSettings(const QString &xmlFile)
{
    KSRFromXMLFile reader(xmlFile);
    LoadSettings(reader);
}

void ImageDatas::SaveSettings(KernelSettingsWriter &writer)
{
    ForEachSetting(*this, [&writer](const char *key, auto field) { writer.Set(QLatin1String(key), QVariant(field)); });
}

void ImageDatas::GetDefaultLoadParams(GFL_LOAD_PARAMS *params)
{
    gflGetDefaultLoadParams(params);
    if (!settings)
        return; // a module that was never started uses the defaults of the image-file layer
    params->RawUseAutomaticBalance = settings->rawUseAutomaticBalance;
    params->RawUseCameraBalance = settings->rawUseCameraBalance;
    params->RawHighlight = static_cast<unsigned char>(settings->rawHighlight & 0xFF);
    params->RawAutoBright = settings->rawAutoBright;
    params->RawGamma = settings->rawGamma;
    params->RawBrightness = settings->rawBrightness;
    params->RawRedScaling = settings->rawRedScaling;
    params->RawBlueScaling = settings->rawBlueScaling;
}
