// The application object of our own host: what the plug-in meets when it looks for the application that loaded it.
#pragma once

#include "HostImageDef.h"
#include "KIApplication.h"

#include <QApplication>
#include <QSettings>
#include <QTranslator>

#include <map>
#include <memory>
#include <vector>

/// To be called before the application is made, by commands that never show a window: makes Qt work without a display
/// and keeps out what a desktop session would load into every Qt program.
void ChooseDisplayless();

/// To be called before the application is made, by commands that show windows.
/// @return why no window can be shown, or empty. A display that is named and can't be reached ends the program, with a
/// message, when the application is made.
QString ChooseDisplay();

/// Starts the image kernel alone and lends it to plug-ins; so a plug-in has to be gone before this object is. Settings
/// are stored per user ("Brelt", "vitrelux"), those of plug-ins under "Plugins/UID/KEY". Lives in main, GUI thread.
class HostApplication : public QApplication, public KIApplication {
    Q_OBJECT
    Q_INTERFACES(KIApplication)
public:
    /// As QApplication: both outlive this object, and options of Qt's are taken out of them.
    HostApplication(int &argc, char **argv);
    ~HostApplication() override;

    QVariant GetPluginSetting(QString uid, QString key, QVariant defaultValue) override;
    void SetPluginSetting(QString uid, QString key, QVariant value) override;
    QLocale Locale() override;
    /// Looks for ":/Translation/FILENAME".
    void LoadTranslator(QString fileName) override;
    /// Never null: a file that isn't a picture has a description that says so. Files are told apart by their absolute
    /// names.
    KIImageDef *ImageDefOf(QString fileName) override { return ImageOf(fileName); }
    KImageInstances *ImageInstances() override;
    /// Null: this host shares no interface kernel.
    KUIInstances *UIInstances() override { return nullptr; }

    HostImageDef *ImageOf(const QString &fileName);
    /// What the program itself remembers; plug-ins have their own by GetPluginSetting.
    QSettings &Settings() { return m_settings; }
    /// Makes the program's own texts, and Qt's, speak the user's language. Commands without windows speak English.
    void TranslateWindows();

private:
    void Install(const QString &translation);

    QSettings m_settings;
    std::map<QString, std::unique_ptr<HostImageDef>> m_images; // by absolute name
    std::vector<std::unique_ptr<QTranslator>> m_translators;
};
