// One picture through the plug-in: what every command that corrects has in common.
#pragma once

#include "Corrections.h"
#include "OutputPlan.h"

#include "KIPluginOne2One.h"

#include <functional>

class HostApplication;
class InterruptGuard;

/// What a parameter record of the process says.
struct PictureParameters {
    Corrections corrections;
    QString profile; // whole path; empty: none chosen
};

/// The XML form of a parameter record with all four attributes: a missing one would clear its field, and stored
/// settings play no part.
QDomElement DescribeParameters(const QString &tag, const PictureParameters &parameters);
/// The other way; an element that lacks something says no.
PictureParameters ReadParameters(const QDomElement &element);

/// A parameter record of the process's, for a scope.
class ParameterRecord {
public:
    ParameterRecord(KIPluginOne2One *process, const QDomElement &element)
        : m_process(process), m_record(process->AllocParameters(element))
    {
    }
    ~ParameterRecord() { m_process->FreeParameters(m_record); }
    ParameterRecord(const ParameterRecord &) = delete;
    ParameterRecord &operator=(const ParameterRecord &) = delete;

    void *Get() const { return m_record; }

private:
    KIPluginOne2One *m_process;
    void *m_record;
};

/// Whether something stands at @p path, be it a link that leads nowhere.
bool IsThere(const QString &path);

/// Whether a run wrote its output, or kept one that came to stand there meanwhile: for ExistingOutput::Skip only.
enum class RunResult { Written, Kept };

/// Corrects into a private folder and moves the whole output into place. Throws KException with a text for the user
/// that leaves the picture's name out, or what else the process throws; nothing is left behind then, and an output that
/// was there stays as it was. The picture's pixels are given back: no picture is needed twice.
/// @param check  called before the output is moved; if it throws, there is no output.
[[nodiscard]] RunResult RunPicture(HostApplication *application, KIPluginOne2One *process,
                                   const ParameterRecord &record, const PlannedPicture &planned,
                                   ExistingOutput existing, InterruptGuard *guard,
                                   const std::function<void()> &check = nullptr);

/// The text of the exception that is being handled.
QString TextOfCurrentException();
