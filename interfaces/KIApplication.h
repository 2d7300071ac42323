// Services that the plug-in requests from the application that loaded it.
#pragma once

#include <QLocale>
#include <QString>
#include <QVariant>
#include <QtPlugin>

class KIImageDef;
struct KImageInstances;
struct KUIInstances;

/// Implemented by the host's application object, which lists it in Q_INTERFACES. Each time the plug-in needs the host,
/// it calls qt_metacast("KIApplication") on QCoreApplication::instance(). Called on the GUI thread, except that Process
/// calls ImageDefOf, and AllocParameters calls GetPluginSetting, on the thread on which the host called Process or
/// AllocParameters.
///
/// The order of the virtual functions is a binary contract: don't add or move any. The reserved functions belong to
/// hosts; the plug-in never calls them.
class KIApplication {
public:
    virtual ~KIApplication() = default;
    virtual void Reserved1() { }
    /// Returns a stored setting of the plug-in @p uid, or @p defaultValue.
    virtual QVariant GetPluginSetting(QString uid, QString key, QVariant defaultValue) = 0;
    virtual void SetPluginSetting(QString uid, QString key, QVariant value) = 0;
    virtual void Reserved2() { }
    /// Returns the application's language.
    virtual QLocale Locale() = 0;
    virtual void Reserved3() { }
    /// Loads and installs a translation file of the plug-in, named without its folder; does nothing if it doesn't
    /// exist.
    virtual void LoadTranslator(QString fileName) = 0;
    /// Returns the description of a file, owned by the application; the same file gives the same pointer. Null if the
    /// file can't be described.
    virtual KIImageDef *ImageDefOf(QString fileName) = 0;
    virtual void Reserved4() { }
    /// Return the application's kernels for images and for the user interface. If null, the plug-in starts its own.
    virtual KImageInstances *ImageInstances() = 0;
    virtual KUIInstances *UIInstances() = 0;
};

Q_DECLARE_INTERFACE(KIApplication, "KIApplication")
