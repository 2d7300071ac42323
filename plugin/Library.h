// Qt plug-in object that a host gets by loading the library.
#pragma once

#include "KIAbout.h"
#include "KIPluginLibrary.h"

/// Entry object of the plug-in, one per load. GUI thread only.
class Library : public QObject, public KIPluginLibrary, public KIAbout {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "com.brelt.vitrelux")
    Q_INTERFACES(KIPluginLibrary KIAbout)
public:
    /// Loads the translation for the host's language and uses the kernels that the host shares. Does neither without a
    /// host.
    Library();
    /// Deletes the process objects that still exist and stops the image and user interface modules.
    ~Library() override;

    QString Name() const override;
    QString Author() const override;
    QString Company() const override;
    QString Comment() const override;
    QString Version() const override;
    QIcon Icon() const override;
    QString UID() const override;

    QList<QPointer<QObject>> Plugins(KIPluginLibrary::MGX kind) override;

private:
    QList<QPointer<QObject>> m_plugins;
};
