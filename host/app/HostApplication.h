// The application object of our own host: what the plug-in meets when it looks for the application that loaded it.
#pragma once

#include "ImageDef.h"
#include "KIApplication.h"

#include <QApplication>
#include <QPointer>
#include <QSettings>
#include <QTranslator>

#include <functional>
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

/// What the application object gets of the command line: the program's name, and none of the user's arguments, which
/// are ours to read. Outlives the application.
struct ProgramName {
    char name[9] = "vitrelux";
    char *argv[2] = {name, nullptr};
    int argc = 1;
};

/// Starts the image kernel alone and lends it to plug-ins; so a plug-in has to be gone before this object is. Settings
/// are stored per user ("Brelt", "vitrelux"), those of plug-ins under "Plugins/UID/KEY". Lives in main, GUI thread.
class HostApplication : public QApplication, public KIApplication {
    Q_OBJECT
    Q_INTERFACES(KIApplication)
public:
    /// As QApplication: both outlive this object, and options of Qt's are taken out of them.
    HostApplication(int &argc, char **argv);
    ~HostApplication() override;

    /// Any thread.
    QVariant GetPluginSetting(QString uid, QString key, QVariant defaultValue) override;
    void SetPluginSetting(QString uid, QString key, QVariant value) override;
    QLocale Locale() override;
    /// Looks for ":/Translation/FILENAME"; does nothing before TranslateWindows, or a plug-in would translate the texts
    /// that the command line prints.
    void LoadTranslator(QString fileName) override;
    /// Never null: a file that isn't a picture has a description of size 0. Files are told apart by their absolute
    /// names.
    KIImageDef *ImageDefOf(QString fileName) override;
    KImageInstances *ImageInstances() override;
    /// Null: this host shares no interface kernel.
    KUIInstances *UIInstances() override { return nullptr; }

    /// As ImageDefOf. The image belongs to the image cache or to this object. Any thread.
    ImageDef *ImageOf(const QString &fileName) { return Describe(fileName).image; }
    /// Why the file can't be corrected, in one line; empty if it can, as far as its head tells. Any thread.
    QString ProblemOf(const QString &fileName) { return Describe(fileName).problem; }
    /// Ends all descriptions, and their pixels; those that were handed out are gone.
    void ForgetImages();
    /// Hands @p image out as the description of @p fileName (absolute) until null takes its place.
    void LendInstead(const QString &fileName, KIImageDef *image);
    using SettingAdapter = std::function<QVariant(const QString &key, const QVariant &value)>;
    /// From now on what is stored, or the default, passes through @p adapt on its way to a plug-in; null ends this.
    /// Returns the adapter that was in its place.
    SettingAdapter AdaptPluginSettings(SettingAdapter adapt);
    /// Frees what is known of the file and its pixels, with the disk copies of raw ones: for files that nobody asks for
    /// again. Not while it is in use. Any thread.
    void Forget(const QString &fileName);
    /// Images described from now on have thumbnails; commands with windows want them.
    void MakeThumbnails() { m_makesThumbnails = true; }
    /// What the program itself remembers; plug-ins have their own by GetPluginSetting.
    QSettings &Settings() { return m_settings; }
    /// Why settings files are passed over, in one line; empty if they aren't.
    QString SettingsProblem() const { return m_settingsProblem; }
    /// Translates the program's own texts, and Qt's, into the user's language. To be called before plug-ins are loaded.
    /// Commands without windows speak English.
    void TranslateWindows();

private:
    struct Picture {
        QPointer<ImageDef> image;
        QString problem;
        std::shared_ptr<ImageDef> standIn; // of a file that isn't a picture
    };

    Picture Describe(const QString &fileName);
    void Install(const QString &translation);

    QString m_settingsProblem;
    QSettings m_settings;
    QMutex m_settingsMutex;                        // plug-ins read on any thread
    QMutex m_mutex;                                // of the next two
    std::map<QString, Picture> m_pictures;         // by absolute name
    std::map<QString, KIImageDef *> m_lentInstead; // not owned
    SettingAdapter m_adapt;
    bool m_makesThumbnails = false;
    bool m_speaksUsersLanguage = false;
    std::vector<std::unique_ptr<QTranslator>> m_translators;
};
