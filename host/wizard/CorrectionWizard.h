// The window of `vitrelux wizard`: choice of pictures, choice of corrections, and the run.
#pragma once

#include "CorrectionJob.h"

#include <QPointer>
#include <QWizard>

class HostApplication;
class InterruptGuard;
class PicturesPage;
class RunPage;

/// Window that calls a process object in the order that its interface requires: WizardPage, SetFiles, OnValidatePage,
/// then Process for each file. If that object has no page, pictures are corrected with its stored settings. The
/// window's size is stored. GUI thread.
class CorrectionWizard : public QWizard {
    Q_OBJECT
public:
    /// All arguments must outlive the window.
    /// @param processes  one per picture corrected in parallel; the first one has the page.
    CorrectionWizard(HostApplication *application, const std::vector<KIPluginOne2One *> &processes,
                     FittedCorrection *correction, InterruptGuard *guard);
    /// Gives the page back to the plug-in, and waits for pictures in progress.
    ~CorrectionWizard() override;

    /// Adds pictures to the list of the first page.
    void Add(const QStringList &files);
    /// Returns the number of pictures that failed in the last run.
    int FailedCount() const;

    bool validateCurrentPage() override;
    /// Closes the window. During a run, the first call stops the run instead, and the second one closes the window.
    void reject() override;
    void done(int result) override;

protected:
    void initializePage(int id) override;

private:
    QStringList Readable(const QStringList &files) const;
    void RunningChanged();

    HostApplication *m_application;
    KIPluginOne2One *m_process;
    PicturesPage *m_pictures;
    QPointer<QWizardPage> m_pluginPage; // owned by the process object
    RunPage *m_run;
    QStringList m_announced; // the files last passed to the process object
    QString m_framing;       // the framing last passed with them
};
