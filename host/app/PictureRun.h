// Corrects one picture with the plug-in; shared by all commands that correct pictures.
#pragma once

#include "Corrections.h"
#include "OutputPlan.h"

#include "KIPluginOne2One.h"

#include <QPair>
#include <QVector>

#include <functional>

class HostApplication;
class InterruptGuard;

/// Content of a process's parameter record.
struct PictureParameters {
    Corrections corrections;
    QString profile; // absolute path; empty: none chosen
};

/// Returns the XML form of a parameter record with all four attributes, because a missing one would clear its field.
/// Stored settings are not used.
/// @param options  further attributes. They must be set here: the element outlives its document, and setting an
/// attribute later would write to the freed document.
QDomElement DescribeParameters(const QString &tag, const PictureParameters &parameters,
                               const QVector<QPair<QString, QString>> &options = {});
/// Reads such an XML form; missing attributes count as false or empty.
PictureParameters ReadParameters(const QDomElement &element);

/// A parameter record of a process, freed at the end of the object's scope.
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

/// Returns whether @p path exists, even as a broken link.
bool IsThere(const QString &path);

/// The result of a run: it wrote its output or, only with ExistingOutput::Skip, kept one that appeared in the meantime.
enum class RunResult { Written, Kept };

/// Corrects the picture, writes the output to a private folder and moves it into place when it is complete. Throws
/// KException with a message for the user that omits the picture's name, or any exception from the plug-in; then no
/// files are left, and an existing output is unchanged. Frees the picture's pixels, which are cached under its path in
/// the private folder: that path is not used again.
/// @param check  called before the output is moved; if it throws, there is no output.
[[nodiscard]] RunResult RunPicture(HostApplication *application, KIPluginOne2One *process,
                                   const ParameterRecord &record, const PlannedPicture &planned,
                                   const OutputRules &rules, InterruptGuard *guard,
                                   const std::function<void()> &check = nullptr);

/// Returns the text of the exception being handled.
QString TextOfCurrentException();
