// Entry object of a plug-in library.
#pragma once

#include <QList>
#include <QObject>
#include <QPointer>

/// The order of the virtual functions is a binary contract: don't add or move any.
class KIPluginLibrary {
public:
    /// Requested plug-ins; the library only distinguishes zero from non-zero.
    enum MGX { None = 0, All = 1 };

    virtual ~KIPluginLibrary() = default;
    /// Returns all process objects; a non-zero @p kind creates one more first. The library owns them. The host finds
    /// their interfaces by qt_metacast() or qobject_cast().
    virtual QList<QPointer<QObject>> Plugins(KIPluginLibrary::MGX kind) = 0;
};

Q_DECLARE_INTERFACE(KIPluginLibrary, "KIPluginLibrary")
