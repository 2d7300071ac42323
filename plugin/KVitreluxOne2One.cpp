#include "KVitreluxOne2One.h"

#include "HostApplication_p.h"
#include "UIVitreluxPage.h"

#include <QApplication>
#include <QDomDocument>

#include <memory>

namespace {

QString ProcessUid()
{
    return QStringLiteral("6E8A21D4-93B7-4C05-A1F6-70C3D2E95B18");
}

QIcon ResourceIcon(const QString &name)
{
    return QIcon(QStringLiteral(":/%1/Resources/%2").arg(ProcessUid(), name));
}

// Keys of the stored settings; those of a record are also the attributes of its XML form.
const QLatin1String kDisto("Disto");
const QLatin1String kCa("CA");
const QLatin1String kFalloff("Falloff");
const QLatin1String kLcpFilename("LCPfilename");
const QLatin1String kLensPath("LensPath");

// Folder where the program that makes profiles stores them; the same on every platform, so that settings are portable.
const QLatin1String kDefaultLensPath("C:/ProgramData/Adobe/CameraRaw/LensProfiles/1.0/");

struct Flag {
    QLatin1String key;
    bool KVitreluxOne2One::Params::*field;
};

const Flag kFlags[] = {
    {kDisto, &KVitreluxOne2One::Params::disto},
    {kCa, &KVitreluxOne2One::Params::ca},
    {kFalloff, &KVitreluxOne2One::Params::falloff},
};

void ReadSettings(KIApplication &host, const QString &uid, KVitreluxOne2One::Params *params)
{
    for (const Flag &flag : kFlags)
        params->*flag.field = host.GetPluginSetting(uid, flag.key, QStringLiteral("false")).toBool();
    params->lcpFilename = host.GetPluginSetting(uid, kLcpFilename, QString()).toString();
}

void ReadElement(const QDomElement &element, KVitreluxOne2One::Params *params)
{
    for (const Flag &flag : kFlags)
        params->*flag.field = element.attribute(flag.key, QStringLiteral("0")).toInt() != 0;
    params->lcpFilename = element.attribute(kLcpFilename, QString());
}

bool IsFitted(const QObject &process)
{
    return process.property("Correction").toString() == QLatin1String("fitted");
}

/// Returns the initial options of a new fitted record.
FitOptions InitialOptions(KIApplication *host, const QString &uid, const QDomElement &element)
{
    if (!element.isNull())
        return fitted::Read(fitted::Options::All, [&](const QString &name) { return element.attribute(name); });
    return fitted::Read(fitted::Options::Lasting, [&](const QString &key) {
        return host ? host->GetPluginSetting(uid, key, QString()).toString() : QString();
    });
}

ResultFile InitialFile(const QDomElement &element)
{
    return ReadResultFile([&](const QString &name) { return element.attribute(name); });
}

} // namespace

KVitreluxOne2One::KVitreluxOne2One(QObject *parent) : QObject(parent), m_defaults(nullptr)
{
    setObjectName(QStringLiteral("KVitreluxOne2One"));
    m_defaults = static_cast<Params *>(KVitreluxOne2One::AllocParameters(QDomElement()));
    if (KIApplication *host = HostApplication())
        m_lensPath = host->GetPluginSetting(ProcessUid(), kLensPath, QString(kDefaultLensPath)).toString();
}

KVitreluxOne2One::~KVitreluxOne2One()
{
    delete m_page;
    for (void *params : qAsConst(m_params))
        KVitreluxOne2One::FreeParameters(params);
    KVitreluxOne2One::FreeParameters(m_defaults);
}

QString KVitreluxOne2One::Name() const
{
    return QStringLiteral("Lens correction");
}

QString KVitreluxOne2One::Author() const
{
    return QStringLiteral("Ilse Tarn");
}

QString KVitreluxOne2One::Company() const
{
    return QStringLiteral("Brelt");
}

QString KVitreluxOne2One::Comment() const
{
    return tr("Adobe(r) released a free tool to calibrate your lens called 'Lens Profile Creator'. This plugin reuse "
              "these profiles to remove lens distortion, vignetting or chromatic aberration from your photos.");
}

QString KVitreluxOne2One::Version() const
{
    return QStringLiteral("3.0.0.400");
}

QIcon KVitreluxOne2One::ProcessIcon()
{
    return ResourceIcon(QStringLiteral("KVitrelux.png"));
}

QIcon KVitreluxOne2One::Icon() const
{
    return ProcessIcon();
}

QString KVitreluxOne2One::UID() const
{
    return ProcessUid();
}

QIcon KVitreluxOne2One::BeforeAfter() const
{
    return ResourceIcon(QStringLiteral("KVitreluxBeforeAfter.png"));
}

QWizardPage *KVitreluxOne2One::WizardPage()
{
    const bool canHaveWidgets = qobject_cast<QApplication *>(QCoreApplication::instance());
    if (!m_page && canHaveWidgets)
        m_page = new UIVitreluxPage(this, nullptr);
    return m_page;
}

void KVitreluxOne2One::OnValidatePage()
{
    KIApplication *host = HostApplication();
    if (!host)
        return;
    if (m_defaults) {
        for (const Flag &flag : kFlags)
            host->SetPluginSetting(UID(), flag.key, m_defaults->*flag.field);
        host->SetPluginSetting(UID(), kLcpFilename, m_defaults->lcpFilename);
        if (m_defaults->fitted) {
            fitted::Write(fitted::Options::Lasting, m_defaults->fitted->options,
                          [&](const QString &key, const QString &text) { host->SetPluginSetting(UID(), key, text); });
        }
    }
    if (m_page)
        host->SetPluginSetting(UID(), kLensPath, m_lensPath);
}

void *KVitreluxOne2One::AllocParameters(QDomElement element)
{
    auto *params = new Params;
    KIApplication *host = HostApplication();
    if (host)
        ReadSettings(*host, UID(), params);
    if (!element.isNull())
        ReadElement(element, params);
    if (IsFitted(*this))
        params->fitted = FittedRecord{InitialOptions(host, UID(), element), InitialFile(element), std::nullopt};
    return params;
}

QDomElement KVitreluxOne2One::GetXmlParameters(void *parameters)
{
    const auto *params = static_cast<const Params *>(parameters);
    // One document for all elements: an element doesn't keep its document alive, and the host may keep an element.
    static QDomDocument document(Name());
    QDomElement element = document.createElement(Name()); // includes a space: readers expect exactly this tag
    for (const Flag &flag : kFlags)
        element.setAttribute(flag.key, params->*flag.field ? 1 : 0);
    element.setAttribute(kLcpFilename, params->lcpFilename);
    if (params->fitted) {
        fitted::Write(fitted::Options::All, params->fitted->options,
                      [&](const QString &name, const QString &text) { element.setAttribute(name, text); });
        WriteResultFile(params->fitted->file,
                        [&](const QString &name, const QString &text) { element.setAttribute(name, text); });
        if (params->fitted->report)
            fitted::Write(*params->fitted->report, &element);
    }
    return element;
}

void KVitreluxOne2One::CopyParameters(void *destination, void *source)
{
    auto &to = *static_cast<Params *>(destination);
    const auto &from = *static_cast<const Params *>(source);
    for (const Flag &flag : kFlags)
        to.*flag.field = from.*flag.field;
    to.scale = from.scale;
    to.lcpFilename = from.lcpFilename;
    if (to.fitted && from.fitted)
        fitted::CopyLasting(&*to.fitted, *from.fitted);
}

void KVitreluxOne2One::FreeParameters(void *parameters)
{
    delete static_cast<Params *>(parameters);
}

void KVitreluxOne2One::SaveDefaultSettings(void *parameters)
{
    // The defaults are created before a host can choose the mode, so they become fitted with the first fitted record.
    if (static_cast<const Params *>(parameters)->fitted && !m_defaults->fitted)
        m_defaults->fitted.emplace();
    CopyParameters(m_defaults, parameters);
}

void KVitreluxOne2One::SetFiles(QStringList files)
{
    if (m_page)
        m_page->Clear(); // before the records that it shows are freed
    for (void *params : qAsConst(m_params))
        FreeParameters(params);
    m_params.clear();
    for (const QString &file : qAsConst(files)) {
        KIApplication &host = NeededHost();
        const auto freeRecord = [this](void *record) { FreeParameters(record); };
        std::unique_ptr<void, decltype(freeRecord)> params(AllocParameters(QDomElement()), freeRecord);
        void *&slot = m_params[host.ImageDefOf(file)];
        FreeParameters(slot); // a file that is in the job twice has one record
        slot = params.release();
    }
    if (m_page)
        m_page->SetImages(m_params);
}

QDomElement KVitreluxOne2One::GetFileXmlParams(QString file)
{
    const auto found = m_params.constFind(NeededHost().ImageDefOf(file));
    if (found != m_params.constEnd())
        return GetXmlParameters(found.value());
    void *params = AllocParameters(QDomElement());
    const QDomElement element = GetXmlParameters(params);
    FreeParameters(params);
    return element;
}
