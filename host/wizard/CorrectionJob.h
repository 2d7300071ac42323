// The correction of a wizard's pictures, on a separate thread.
#pragma once

#include "app/FittedCorrection.h"

#include <QThread>

#include <vector>

class HostApplication;

/// One picture of a job.
struct JobPicture {
    PlannedPicture planned;
    QDomElement parameters; // the record's XML form, as chosen; without a profile the run finds one
    QString problem;        // why it can't be corrected, for the user; empty: it is attempted
    qint64 pixels = 0;      // amount of work
};

/// Reads the choices for each picture from the process, and checks whether it can be corrected. GUI thread.
std::vector<JobPicture> PrepareJob(HostApplication *application, KIPluginOne2One *process, const QStringList &files);

/// The result of one picture.
enum class PictureOutcome { Corrected, Kept, DoneBefore, Failed, LeftOut };

/// Corrects the pictures in order; a failure is reported, and the job continues with the next picture. Created,
/// started, canceled and deleted on the GUI thread, where its signals arrive queued. Deleting it waits for the current
/// picture.
class CorrectionJob : public QThread {
    Q_OBJECT
public:
    /// @param existing  Skip: a picture whose output exists is Kept.
    CorrectionJob(FittedCorrection *correction, KIPluginOne2One *process, std::vector<JobPicture> pictures,
                  ExistingOutput existing);
    ~CorrectionJob() override;

    const std::vector<JobPicture> &Pictures() const { return m_pictures; }
    /// Stops after the current picture; the remaining ones are LeftOut.
    void Cancel() { requestInterruption(); }

Q_SIGNALS:
    void Begins(int index);
    /// @param why  the reason if it is not corrected, otherwise how it was corrected.
    /// @param profile  of a corrected picture: path, or "lensfun:MAKER/LENS".
    void Ended(int index, PictureOutcome outcome, const QString &why, const QString &profile);

protected:
    void run() override;

private:
    struct Result {
        PictureOutcome outcome = PictureOutcome::LeftOut;
        QString why, profile;
    };

    Result CorrectOrReport(const JobPicture &picture) const;
    Result Correct(const JobPicture &picture) const;

    FittedCorrection *m_correction;
    KIPluginOne2One *m_process;
    const std::vector<JobPicture> m_pictures;
    ExistingOutput m_existing;
};
