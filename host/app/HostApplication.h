// The application object of our host, through which the plug-in accesses the application that loaded it.
#pragma once

#include "ImageDef.h"
#include "KIApplication.h"
#include "OwnPicture.h"

#include <QApplication>
#include <QPointer>
#include <QSettings>
#include <QTranslator>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

/// Makes Qt work without a display and without the plug-ins that a desktop session loads into every Qt program. Called
/// before the application is constructed, by commands that never show a window.
void ChooseDisplayless();

/// Prepares Qt for windows. Called before the application is constructed, by commands that show windows. @return why no
/// window can be shown; empty if one can. If the environment names a display that cannot be reached, constructing the
/// application ends the program with a message.
QString ChooseDisplay();

/// Command line for the application object: only the program's name, because we parse the user's arguments ourselves.
/// Must outlive the application.
struct ProgramName {
    char name[9] = "vitrelux";
    char *argv[2] = {name, nullptr};
    int argc = 1;
};

/// Application object that starts the image kernel and shares it with plug-ins, which must therefore be unloaded before
/// it is destroyed. Settings are stored per user ("Brelt", "vitrelux"), those of plug-ins under "Plugins/UID/KEY".
/// Construct it in main. Use it on the GUI thread unless noted otherwise.
class HostApplication : public QApplication, public KIApplication {
    Q_OBJECT
    Q_INTERFACES(KIApplication)
public:
    /// As for QApplication, both arguments must outlive this object, and Qt's options are removed from them. Don't
    /// catch exceptions thrown here: if memory runs out, the destructors of half-constructed Qt objects crash.
    HostApplication(int &argc, char **argv);
    ~HostApplication() override;

    /// Saves the settings, frees the pictures and stops the image kernel; the object must not be used afterward.
    void Stop();

    /// Any thread may call this and SetPluginSetting.
    QVariant GetPluginSetting(QString uid, QString key, QVariant defaultValue) override;
    void SetPluginSetting(QString uid, QString key, QVariant value) override;
    QLocale Locale() override;
    /// Loads ":/Translation/FILENAME". Does nothing before TranslateWindows, so that plug-ins don't translate the texts
    /// that the command line prints.
    void LoadTranslator(QString fileName) override;
    /// Returns the description of a file, never null: a file that isn't a picture has a description of size 0. Files
    /// are identified by absolute path. Any thread.
    KIImageDef *ImageDefOf(QString fileName) override;
    KImageInstances *ImageInstances() override;
    /// Returns null: this host has no UI kernel to share.
    KUIInstances *UIInstances() override { return nullptr; }

    /// Returns the same as ImageDefOf, but ignores UseInstead. The image cache or this object owns the image. Any
    /// thread.
    ImageDef *ImageOf(const QString &fileName) { return Describe(fileName).image; }
    /// Returns whether the file is a gray picture, with or without alpha. Any thread.
    bool IsGray(const QString &fileName);
    /// Returns why the file cannot be corrected, in one line; empty if its header shows no problem. Any thread.
    QString ProblemOf(const QString &fileName) { return Describe(fileName).problem; }
    /// Deletes all descriptions and their pixels; pointers handed out become invalid.
    void ForgetImages();
    /// Uses @p image as the description of @p fileName (absolute) until called again with null. Any thread.
    void UseInstead(const QString &fileName, KIImageDef *image);
    using SettingAdapter = std::function<QVariant(const QString &key, const QVariant &value)>;
    /// Sets the function that adapts all settings read by plug-ins, stored or default; null: none. Returns the previous
    /// one.
    SettingAdapter AdaptPluginSettings(SettingAdapter adapt);
    /// Frees the description of the file and its pixels, including disk copies of raw files. They must not be in use.
    /// Any thread.
    void Forget(const QString &fileName);
    /// Lets later calls describe pictures that the kernel refuses, for commands that read only full-size pictures.
    void Accept(AcceptedPictures accepted) { m_accepted = accepted; }
    /// Adds thumbnails to later descriptions, for commands with windows.
    void MakeThumbnails() { m_makesThumbnails = true; }
    /// Returns the settings of the program; those of plug-ins are accessed by GetPluginSetting.
    QSettings &Settings() { return m_settings; }
    /// Returns why settings files are ignored, in one line; empty if they aren't.
    QString SettingsProblem() const { return m_settingsProblem; }
    /// Translates the texts of the program and of Qt into the user's language. Call it before plug-ins are loaded.
    /// Commands without windows stay in English.
    void TranslateWindows();

private:
    struct Picture {
        QPointer<ImageDef> image;
        QString problem;
        std::shared_ptr<ImageDef> own; // for a file that isn't a picture or that the kernel refuses; otherwise null
    };

    Picture Describe(const QString &fileName);
    void Install(const QString &translation);

    QString m_settingsProblem;
    QSettings m_settings;
    std::mutex m_settingsMutex;                    // guards m_settings: plug-ins read it on any thread
    std::mutex m_mutex;                            // guards the next two
    std::map<QString, Picture> m_pictures;         // by absolute path
    std::map<QString, KIImageDef *> m_usedInstead; // not owned
    SettingAdapter m_adapt;
    AcceptedPictures m_accepted = AcceptedPictures::OfKernel;
    bool m_makesThumbnails = false;
    bool m_speaksUsersLanguage = false;
    std::vector<std::unique_ptr<QTranslator>> m_translators;
};

/// The application of a command without windows. Its destructor stops the kernels but doesn't destroy Qt's objects:
/// that takes time and, with little memory left, crashes in the font library. One per process.
class CommandApplication {
public:
    CommandApplication();
    ~CommandApplication() { m_application->Stop(); }
    CommandApplication(const CommandApplication &) = delete;
    CommandApplication &operator=(const CommandApplication &) = delete;

    HostApplication *Get() const { return m_application; }
    HostApplication *operator->() const { return m_application; }

private:
    HostApplication *const m_application; // never deleted
};
