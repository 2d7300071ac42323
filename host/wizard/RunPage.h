// The wizard's last page: the run and its results.
#pragma once

#include "CorrectionJob.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWizardPage>

#include <memory>
#include <optional>

class HostApplication;
class QLabel;
class QProgressBar;
class QPushButton;
class QTableWidget;

/// Wizard page of the run, complete when nothing is running. Opening a row whose corrected picture exists shows both
/// pictures side by side. GUI thread.
class RunPage : public QWizardPage {
    Q_OBJECT
public:
    /// @param processes  one per thread.
    RunPage(HostApplication *application, FittedCorrection *correction, std::vector<KIPluginOne2One *> processes,
            InterruptGuard *guard);

    /// Starts a run. Must not be called during another one.
    void Start(std::vector<JobPicture> pictures, ExistingOutput existing);
    /// Stops the run; see CorrectionJob::Cancel.
    void Cancel();
    bool IsRunning() const { return m_running; }
    bool IsCanceled() const { return m_canceled; }
    /// Returns the number of pictures of the last run with this outcome.
    int Count(PictureOutcome outcome) const;

    bool isComplete() const override { return !m_running; }

Q_SIGNALS:
    void RunningChanged();

private:
    void SetUpList();
    void PictureBegins(int index);
    void PictureEnded(int index, PictureOutcome outcome, const QString &why, const QString &profile);
    void ShowResult(int index, const QString &text, const QIcon &icon);
    void JobFinished();
    void SetRunning(bool running);
    void ShowProgress();
    void ShowTimeLeft();
    void ShowInFolder();
    void Compare();
    void EnableButtons();
    const PlannedPicture *Shown() const;

    HostApplication *m_application;
    FittedCorrection *m_correction;
    std::vector<KIPluginOne2One *> m_processes;
    InterruptGuard *m_guard;
    QLabel *m_state;
    QProgressBar *m_progress;
    QLabel *m_timeLeft;
    QTableWidget *m_list;
    QPushButton *m_cancel;
    QPushButton *m_compare;
    QPushButton *m_showInFolder;
    std::unique_ptr<CorrectionJob> m_job;                  // the last one, running or not
    std::vector<std::optional<PictureOutcome>> m_outcomes; // none: not finished
    bool m_running = false;
    bool m_canceled = false;
    bool m_follows = true; // the list scrolls to the picture started last, until the user selects one
    QElapsedTimer m_sinceStart;
    QTimer m_everySecond;
    qint64 m_pixelsDone = 0;
    qint64 m_pixelsLeft = 0;
};
