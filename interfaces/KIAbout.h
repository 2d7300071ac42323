// Identity of a plug-in object: names, version, icon, identifier.
#pragma once

#include <QIcon>
#include <QString>
#include <QtPlugin>

/// The order of the virtual functions is a binary contract: don't add or move any.
class KIAbout {
public:
    virtual ~KIAbout() = default;
    virtual QString Name() const = 0;
    virtual QString Author() const = 0;
    virtual QString Company() const = 0;
    virtual QString Comment() const = 0;
    virtual QString Version() const = 0;
    virtual QIcon Icon() const = 0;
    /// Returns a 36-character GUID, which names the resource folder and identifies the plug-in's stored settings.
    virtual QString UID() const = 0;
};

Q_DECLARE_INTERFACE(KIAbout, "KIAbout")
