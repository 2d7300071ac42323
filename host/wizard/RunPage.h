// The wizard's last page: the run and its results.
#pragma once

#include "CorrectionJob.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWizardPage>

#include <memory>

class QLabel;
class QProgressBar;
class QPushButton;
class QTableWidget;

/// Wizard page of the run, complete when nothing is running. GUI thread.
class RunPage : public QWizardPage {
    Q_OBJECT
public:
    RunPage(FittedCorrection *correction, KIPluginOne2One *process, InterruptGuard *guard);

    /// Starts a run; not during another one.
    void Start(std::vector<JobPicture> pictures, ExistingOutput existing);
    /// Stops the run after the current picture.
    void Cancel();
    bool IsRunning() const { return m_running; }
    bool IsCancelled() const { return m_cancelled; }
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
    void ShowTimeLeft();
    void ShowInFolder();
    QString FolderToShow() const;

    FittedCorrection *m_correction;
    KIPluginOne2One *m_process;
    InterruptGuard *m_guard;
    QLabel *m_state;
    QProgressBar *m_progress;
    QLabel *m_timeLeft;
    QTableWidget *m_list;
    QPushButton *m_cancel;
    QPushButton *m_showInFolder;
    std::unique_ptr<CorrectionJob> m_job;   // the last one, running or not
    std::vector<PictureOutcome> m_outcomes; // of the finished pictures, in order
    bool m_running = false;
    bool m_cancelled = false;
    QElapsedTimer m_sinceStart;
    QTimer m_everySecond;
    qint64 m_pixelsDone = 0;
    qint64 m_pixelsLeft = 0;
};
