// The window of `vitrelux wizard`: which pictures, what is corrected, and the run.
#pragma once

#include "CorrectionJob.h"

#include <QPointer>
#include <QWizard>

class HostApplication;
class InterruptGuard;
class PicturesPage;
class RunPage;

/// Calls the process in the order that its interface asks for: the page, the files, the end of the page, then one run a
/// file. A process without a page has none here either, and the pictures are corrected as its stored settings say. The
/// window's size is remembered. GUI thread.
class CorrectionWizard : public QWizard {
    Q_OBJECT
public:
    /// All outlive the window. @param findProfile  as for CorrectionJob.
    CorrectionWizard(HostApplication *application, KIPluginOne2One *process, FindProfile findProfile,
                     InterruptGuard *guard);
    /// Gives the plug-in's page back, and waits for the picture under way.
    ~CorrectionWizard() override;

    /// Puts pictures on the list of the first page.
    void Add(const QStringList &files);
    /// Pictures that failed in the last run.
    int FailedCount() const;

    bool validateCurrentPage() override;
    /// Closes the window; during a run it ends the run instead, and a second call closes.
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
    QPointer<QWizardPage> m_pluginPage; // the process's
    RunPage *m_run;
    QStringList m_announced; // the files that the process was last told of
};
