// How the plug-in finds the application that loaded it.
#pragma once

#include "KException.h"
#include "KIApplication.h"

#include <QCoreApplication>

/// The host, or null without an application or with one that is no host. Never stored: each function that needs it
/// asks again.
inline KIApplication *HostApplication()
{
    QCoreApplication *application = QCoreApplication::instance();
    return application ? static_cast<KIApplication *>(application->qt_metacast("KIApplication")) : nullptr;
}

/// The host, for a function that can't do without: throws a KException if there is none.
inline KIApplication &NeededHost()
{
    KIApplication *host = HostApplication();
    if (!host)
        KThrow("No host application");
    return *host;
}
