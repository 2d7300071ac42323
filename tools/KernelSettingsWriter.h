// The writing side of settings: one operation, independent of where settings are stored.
#pragma once

#include <QString>
#include <QVariant>

/// Base class that discards everything. It has no virtual destructor, so never delete an object of a derived class
/// through it.
class KernelSettingsWriter {
public:
    virtual void Set(const QString & /*key*/, const QVariant & /*value*/) { }
};
