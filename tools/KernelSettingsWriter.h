// The writing side of settings: one operation, for code that doesn't care where its settings go.
#pragma once

#include <QString>
#include <QVariant>

/// This class itself is a sink that swallows everything. Trap: there is no virtual destructor, so an object of a
/// derived class must be destroyed as what it is.
class KernelSettingsWriter {
public:
    virtual void Set(const QString & /*key*/, const QVariant & /*value*/) { }
};
