// The correction of a wizard's pictures, on a separate thread.
#pragma once

#include "app/PictureRun.h"

#include <QThread>

#include <functional>
#include <vector>

class HostApplication;

/// One picture of a job.
struct JobPicture {
    PlannedPicture planned;
    PictureParameters parameters; // as chosen; a missing profile is looked up
    QString problem;              // why it is not attempted, for the user; empty: it is
    QString note;                 // a note on its result for the user; usually empty
    qint64 pixels = 0;            // amount of work
};

/// Reads the choices for each picture from the process, and checks whether it can be corrected. GUI thread.
std::vector<JobPicture> PrepareJob(HostApplication *application, KIPluginOne2One *process, const QStringList &files);

/// Finds the lens profile for a picture's camera and lens; empty if there is none. Called on the job's thread.
using FindProfile = std::function<QString(const QString &picture)>;

/// The result of one picture.
enum class PictureOutcome { Corrected, Kept, Failed, LeftOut };

/// Corrects the pictures in order; a failure is reported, and the job continues with the next picture. Created,
/// started, canceled and deleted on the GUI thread, where its signals arrive queued. Deleting it waits for the current
/// picture.
class CorrectionJob : public QThread {
    Q_OBJECT
public:
    /// @param findProfile  for pictures without one; null finds none.
    /// @param existing  Skip: a picture whose output exists is Kept.
    CorrectionJob(HostApplication *application, KIPluginOne2One *process, FindProfile findProfile,
                  std::vector<JobPicture> pictures, ExistingOutput existing, InterruptGuard *guard);
    ~CorrectionJob() override;

    const std::vector<JobPicture> &Pictures() const { return m_pictures; }
    /// Stops after the current picture; the remaining ones are LeftOut.
    void Cancel() { requestInterruption(); }

Q_SIGNALS:
    void Begins(int index);
    /// @param why  the reason of a failure, or a note on the result for the user; usually empty.
    void Ended(int index, PictureOutcome outcome, const QString &why);

protected:
    void run() override;

private:
    PictureOutcome CorrectOrReport(const JobPicture &picture, QString *why) const;
    PictureOutcome Correct(const JobPicture &picture, QString *note) const;

    HostApplication *m_application;
    KIPluginOne2One *m_process;
    FindProfile m_findProfile;
    const std::vector<JobPicture> m_pictures;
    ExistingOutput m_existing;
    InterruptGuard *m_guard;
};
