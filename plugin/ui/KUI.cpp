#include "KUI.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QResource>
#include <QSet>
#include <QUrl>

struct KUIState {
    bool useSystemFileDialog = true;
};

namespace {

bool s_startedAlone = false; // this copy owns the state
bool s_javaScriptLoaded = false;

QString JavaScriptFile()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/closure-library.rcc");
}

} // namespace

KUIInstances KUI::ms_instances = {nullptr};

void KUI::init(KUIInstances *instances)
{
    if (ms_instances.state)
        return;
    if (instances) {
        ms_instances.state = instances->state;
        return;
    }
    ms_instances.state = new KUIState;
    s_startedAlone = true;
    QDir::setSearchPaths(QStringLiteral("UI"), {QStringLiteral(":/UI")});
}

void KUI::exit()
{
    if (s_startedAlone)
        delete ms_instances.state;
    ms_instances.state = nullptr;
    s_startedAlone = false;
    if (s_javaScriptLoaded)
        QResource::unregisterResource(JavaScriptFile());
    s_javaScriptLoaded = false;
}

void KUI::loadJSLibraries()
{
    if (s_javaScriptLoaded)
        return;
    s_javaScriptLoaded = QResource::registerResource(JavaScriptFile());
    if (!s_javaScriptLoaded)
        qCritical("Cannot load closure-library.rcc file needed by KUI");
}

int KUI::UseSystemFileDialog()
{
    const bool system = !ms_instances.state || ms_instances.state->useSystemFileDialog;
    return system ? 0 : QFileDialog::DontUseNativeDialog;
}

void KUI::SetUseSystemFileDialog(bool use)
{
    if (ms_instances.state)
        ms_instances.state->useSystemFileDialog = use;
}

void KUI::SelectInFileBrowser(QObject *, const QList<QUrl> &files)
{
    QSet<QUrl> folders;
    for (const QUrl &file : files)
        folders.insert(file.adjusted(QUrl::RemoveFilename));
    for (const QUrl &folder : qAsConst(folders))
        QDesktopServices::openUrl(folder);
}
