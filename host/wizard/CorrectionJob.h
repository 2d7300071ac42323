// The run over a wizard's pictures, on a thread of its own.
#pragma once

#include "app/PictureRun.h"

#include <QThread>

#include <functional>
#include <vector>

class HostApplication;

/// One picture of a job.
struct JobPicture {
    PlannedPicture planned;
    PictureParameters parameters; // as chosen; without a profile one is looked up
    QString problem;              // why it isn't tried, for the user; empty: it is
    QString note;                 // what the user should know of its result; mostly empty
    qint64 pixels = 0;            // how much work it is
};

/// Asks the process what was chosen for each picture, and looks what stands against correcting it. GUI thread.
std::vector<JobPicture> PrepareJob(HostApplication *application, KIPluginOne2One *process, const QStringList &files);

/// The lens profile that fits a picture's camera and lens; empty: none is found. Called on the job's thread.
using FindProfile = std::function<QString(const QString &picture)>;

/// What came of one picture.
enum class PictureOutcome { Corrected, Kept, Failed, LeftOut };

/// Corrects the pictures in their order; one that fails is told, and the others go on. Made, started, cancelled and
/// deleted on the GUI thread, where its signals arrive queued. Deleting it waits for the picture under way.
class CorrectionJob : public QThread {
    Q_OBJECT
public:
    /// @param findProfile  for pictures without one; null finds none.
    /// @param existing  Skip: a picture whose output is there is Kept.
    CorrectionJob(HostApplication *application, KIPluginOne2One *process, FindProfile findProfile,
                  std::vector<JobPicture> pictures, ExistingOutput existing, InterruptGuard *guard);
    ~CorrectionJob() override;

    const std::vector<JobPicture> &Pictures() const { return m_pictures; }
    /// Ends after the picture under way; those behind it are LeftOut.
    void Cancel() { requestInterruption(); }

Q_SIGNALS:
    void Begins(int index);
    /// @param why  of a failure, or what the user should know of a result; mostly empty.
    void Ended(int index, PictureOutcome outcome, const QString &why);

protected:
    void run() override;

private:
    PictureOutcome One(const JobPicture &picture, QString *why) const;
    PictureOutcome Correct(const JobPicture &picture, QString *note) const;

    HostApplication *m_application;
    KIPluginOne2One *m_process;
    FindProfile m_findProfile;
    const std::vector<JobPicture> m_pictures;
    ExistingOutput m_existing;
    InterruptGuard *m_guard;
};
