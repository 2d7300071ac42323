// The run of `vitrelux correct`: corrects pictures on several threads and reports each when it is finished.
#pragma once

#include "PictureCorrector.h"

#include <QElapsedTimer>
#include <QMap>
#include <QVector>

#include <mutex>

class Console;
class PluginLoader;

/// One run over all pictures, several at a time (CorrectInTurn).
///
/// The plug-in's process objects get a parameter record for each picture. SetFiles and OnValidatePage are not called,
/// because they are for the wizard page, which isn't shown.
class CorrectRun {
public:
    CorrectRun(const CorrectOptions &options, const QVector<PlannedPicture> &plan, HostApplication *application,
               PictureCorrector *corrector, InterruptGuard *guard, Console *console);

    /// Divides the processors among the threads of the run; load the plug-in afterward. @return the number of threads.
    int ShareProcessors() const;
    ExitCode CorrectAll(const PluginLoader &plugin, int threads);

private:
    QString ConflictOf(const PlannedPicture &planned) const;
    void RefuseConflicts();
    void CorrectNext(KIPluginOne2One *process, int number);
    void CorrectAndReport(KIPluginOne2One *process, int number);
    void Correct(KIPluginOne2One *process, const PlannedPicture &planned, PictureReport *report);
    void Report(const PlannedPicture &planned, const PictureReport &report);
    void PrintNotes(const QString &picture, const PictureReport &report);
    void Notify() const;

    const CorrectOptions &m_options;
    const QVector<PlannedPicture> m_plan;
    HostApplication *m_application;
    PictureCorrector *m_corrector;
    InterruptGuard *m_guard;
    Console *m_console;
    std::mutex m_mutex; // guards the console and all members below
    QMap<PictureReport::Outcome, int> m_counts;
    QString m_firstFailure;
    QString m_firstOtherReason; // why a picture was skipped or a correction left out
};
