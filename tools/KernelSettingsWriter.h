// The writing side of settings: one operation, independent of where settings are stored.
#pragma once

#include <QString>
#include <QVariant>

/// This class itself discards everything. Trap: there is no virtual destructor, so destroy an object of a derived class
/// as its own type.
class KernelSettingsWriter {
public:
    virtual void Set(const QString & /*key*/, const QVariant & /*value*/) { }
};
