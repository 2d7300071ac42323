// Correction of the wizard's pictures, on separate threads.
#pragma once

#include "app/FittedCorrection.h"
#include "app/MemoryBudget.h"

#include <QThread>

#include <atomic>
#include <mutex>
#include <set>
#include <vector>

class HostApplication;

/// Folder and format of a job's outputs.
struct JobOutput {
    QString folder; // as OutputNaming::folder
    QString format; // a value of a record's attribute "Format"
};

/// One picture of a job.
struct JobPicture {
    PlannedPicture planned;
    QDomElement parameters; // the record's XML form with the user's choices; if it names no profile, the run finds one
    QString problem;        // why it can't be corrected, for the user; empty: no reason known, the run tries
    qint64 pixels = 0;      // amount of work
    qint64 bytes = 0;       // memory needed
};

/// Reads the choices for each picture from the process object, and checks whether the picture can be corrected. GUI
/// thread.
std::vector<JobPicture> PrepareJob(HostApplication *application, KIPluginOne2One *process,
                                   const QVector<NamedPicture> &pictures, const JobOutput &output);

/// Result for one picture.
enum class PictureOutcome { Corrected, Kept, DoneBefore, Failed, LeftOut };

/// Thread that corrects pictures, several at a time; a failure is reported, and the job continues with the next
/// picture. Create, start, cancel and delete it on the GUI thread, where its signals arrive queued. Deleting it cancels
/// the job and waits.
class CorrectionJob : public QThread {
    Q_OBJECT
public:
    /// @param processes  one per thread; at least one.
    /// @param existing   Skip: a picture whose output exists is Kept.
    CorrectionJob(FittedCorrection *correction, const std::vector<KIPluginOne2One *> &processes,
                  std::vector<JobPicture> pictures, ExistingOutput existing);
    ~CorrectionJob() override;

    const std::vector<JobPicture> &Pictures() const { return m_pictures; }
    /// Stops the job: pictures in progress are interrupted, unless they are almost finished. The interrupted and the
    /// remaining pictures are LeftOut, without an output file.
    void Cancel();

Q_SIGNALS:
    void Begins(int index);
    /// Emitted once for each picture, in any order.
    /// @param why  the reason if the picture was not corrected, otherwise how it was corrected.
    /// @param profile  of a corrected picture: path, or "lensfun:MAKER/LENS".
    void Ended(int index, PictureOutcome outcome, const QString &why, const QString &profile);

protected:
    void run() override;

private:
    struct Result {
        PictureOutcome outcome = PictureOutcome::LeftOut;
        QString why, profile;
    };
    class Interruptible;

    Result CorrectOrReport(KIPluginOne2One *process, const JobPicture &picture);
    Result Correct(KIPluginOne2One *process, const JobPicture &picture);

    FittedCorrection *m_correction;
    std::vector<KIPluginOne2One *> m_processes;
    const std::vector<JobPicture> m_pictures;
    ExistingOutput m_existing;
    MemoryBudget m_memory;
    std::atomic<bool> m_canceled{false};
    std::mutex m_mutex; // guards m_working
    std::set<QThread *> m_working;
};
