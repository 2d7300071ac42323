#include "Library.h"

#include "HostApplication_p.h"
#include "KImage.h"
#include "KUI.h"
#include "KVitreluxOne2One.h"

/// Registers resources when the library is loaded, because a host may request an icon by its path before it creates any
/// object.
static void RegisterResources()
{
    Q_INIT_RESOURCE(KVitrelux);
    Q_INIT_RESOURCE(KVitreluxTranslations);
}
Q_CONSTRUCTOR_FUNCTION(RegisterResources)

Library::Library()
{
    setObjectName(QStringLiteral("KVitrelux"));
    KIApplication *host = HostApplication();
    if (!host)
        return;
    const QString language = host->Locale().name();
    host->LoadTranslator(QStringLiteral("%1_%2.qm").arg(QStringLiteral("KVitrelux"), language));
    KImage::init(host->ImageInstances());
    KUI::init(host->UIInstances());
}

Library::~Library()
{
    for (const QPointer<QObject> &plugin : qAsConst(m_plugins))
        delete plugin.data();
    KUI::exit();
    KImage::exit();
}

QString Library::Name() const
{
    return QStringLiteral("KVitrelux");
}

QString Library::Author() const
{
    return QStringLiteral("Ilse Tarn");
}

QString Library::Company() const
{
    return QStringLiteral("Brelt");
}

QString Library::Comment() const
{
    return tr("Comment");
}

QString Library::Version() const
{
    return QStringLiteral("3.0.0.400");
}

QIcon Library::Icon() const
{
    return KVitreluxOne2One::ProcessIcon();
}

QString Library::UID() const
{
    return QStringLiteral("6E8A21D4-93B7-4C05-A1F6-3FB4810CD762");
}

QList<QPointer<QObject>> Library::Plugins(KIPluginLibrary::MGX kind)
{
    if (kind != KIPluginLibrary::None)
        m_plugins.append(new KVitreluxOne2One(this));
    return m_plugins;
}
