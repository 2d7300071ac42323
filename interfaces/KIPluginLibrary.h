// The entry object of a plug-in library.
#pragma once

#include <QList>
#include <QObject>
#include <QPointer>

/// The order of the virtual operations is a binary contract: add none, move none.
class KIPluginLibrary {
public:
    /// Which plug-ins are asked for; the library tells only zero from non-zero.
    enum MGX { None = 0, All = 1 };

    virtual ~KIPluginLibrary() = default;
    /// For non-zero, makes one more process object; always gives all that were made. The library owns them. The host
    /// finds their interfaces by qt_metacast() or qobject_cast().
    virtual QList<QPointer<QObject>> Plugins(KIPluginLibrary::MGX kind) = 0;
};

Q_DECLARE_INTERFACE(KIPluginLibrary, "KIPluginLibrary")
