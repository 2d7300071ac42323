// Loads the lens correction plug-in, using only the interfaces available to every host.
#pragma once

#include "KIPluginOne2One.h"

#include <QPluginLoader>

#include <memory>

/// The kind of correction that process objects apply. Those for fitted corrections have the dynamic property
/// "Correction" with the value "fitted".
enum class CorrectionMode { Plain, Fitted };

/// Owner of the loaded plug-in. Needs the application object, and must be destroyed before it.
class PluginLoader {
public:
    /// @param file  the plug-in's library; empty: the one installed with this program.
    explicit PluginLoader(const QString &file, CorrectionMode mode = CorrectionMode::Plain);
    ~PluginLoader();
    PluginLoader(const PluginLoader &) = delete;
    PluginLoader &operator=(const PluginLoader &) = delete;

    /// Returns the correction process, which the plug-in owns; null if it is not available.
    KIPluginOne2One *Process() const { return m_process; }
    /// Returns another process of the same kind, for another thread; null if the plug-in cannot create one.
    std::unique_ptr<QObject> MakeProcess() const;
    /// Returns the reason why Process() is null.
    QString Problem() const { return m_problem; }

private:
    QString Load();
    void SetMode(QObject *process) const;

    CorrectionMode m_mode;
    QPluginLoader m_loader;
    KIPluginOne2One *m_process = nullptr;
    QPointer<QObject> m_object; // m_process as a QObject
    QString m_problem;
};
