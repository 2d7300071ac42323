#include "AnnounceFiles.h"

#include "KIPluginOne2One.h"
#include "app/HostApplication.h"

#include <QDomElement>
#include <QHash>
#include <QScopeGuard>

#include <vector>

void AnnounceFiles(HostApplication *application, KIPluginOne2One *process, const QStringList &announced,
                   const QStringList &files, const QString &framing)
{
    std::vector<QDomElement> carried;
    for (const QString &file : files)
        carried.push_back(announced.contains(file) ? process->GetFileXmlParams(file) : QDomElement());
    // The interface has no operation that fills the record of a job's file. But SetFiles makes the records in the order
    // of the files, each from the stored settings, whose keys are the attribute names of a record's XML form. So the
    // n-th read of a key is answered with the attribute of the n-th file's previous record.
    QHash<QString, std::size_t> reads;
    const HostApplication::SettingAdapter before = application->AdaptPluginSettings(nullptr);
    const auto restore = qScopeGuard([&] { application->AdaptPluginSettings(before); });
    application->AdaptPluginSettings([&](const QString &key, const QVariant &stored) -> QVariant {
        if (key == QLatin1String("Framing"))
            return framing;
        const std::size_t record = reads[key]++;
        if (record < carried.size() && carried[record].hasAttribute(key))
            return carried[record].attribute(key);
        return before ? before(key, stored) : stored;
    });
    process->SetFiles(files);
}
