// The pictures of `vitrelux correct`, on several threads, each told as it ends.
#pragma once

#include "PictureCorrector.h"

#include <QElapsedTimer>
#include <QMap>
#include <QVector>

class Console;
class PluginLoader;

/// One run over all pictures. No wizard page is shown, so the record of each picture is all that the process gets:
/// SetFiles and OnValidatePage belong to the page.
///
/// Each thread has a process of its own and takes the next picture when it is free.
class CorrectRun {
public:
    CorrectRun(const CorrectOptions &options, const QVector<PlannedPicture> &plan, HostApplication *application,
               PictureCorrector *corrector, InterruptGuard *guard, Console *console);

    /// Returns the number of threads to work on. Their own threads share the processors, so load the plug-in
    /// afterwards.
    int ShareProcessors() const;
    ExitCode CorrectAll(const PluginLoader &plugin, int threads);

private:
    void RefuseRivals();
    void TakePictures(KIPluginOne2One *process);
    void CorrectAndTell(KIPluginOne2One *process, int number);
    void Tell(const PlannedPicture &planned, const PictureReport &report);

    const CorrectOptions &m_options;
    const QVector<PlannedPicture> m_plan;
    HostApplication *m_application;
    PictureCorrector *m_corrector;
    InterruptGuard *m_guard;
    Console *m_console;
    std::mutex m_mutex; // guards the console and all members below
    int m_begun = 0;
    QMap<PictureReport::Outcome, int> m_counts;
};
