// Reads arbitrary bytes as settings in XML.
#include "ImageDatas.h"
#include "KSRFromXMLFile.h"
#include "Target.h"

FUZZ_TARGET(settings)
{
    StartKernel();
    Input input(data, size);
    const QString key = QString::fromUtf8(input.Line());
    const MemoryFile file(input.Rest());
    KSRFromXMLFile reader(file.Path());
    reader.GetBool(key, true);
    reader.GetInt(key, 1);
    reader.GetDouble(key, 1.0);
    reader.GetString(key, QString());
    ImageDatas settings;
    settings.LoadSettings(file.Path());
}
