#include "CorrectionWizard.h"

#include "AnnounceFiles.h"
#include "PicturesPage.h"
#include "RunPage.h"
#include "app/HostApplication.h"
#include "app/OutputPlan.h"

#include <QAbstractButton>
#include <QLabel>

#include <algorithm>

namespace {

enum PageId { kPicturesPage, kPluginPage, kRunPage };

const QLatin1String kGeometrySetting("Wizard/Geometry");

/// Returns the window width at which @p text fits the two lines that QWizard reserves below a page's title; otherwise
/// QWizard would cut it off.
int WidthOfSubTitle(const QString &text)
{
    constexpr int kLogoAndMarginsPx = 150;
    QLabel label;
    label.setWordWrap(true);
    label.setText(QStringLiteral("\n"));
    const int twoLines = label.sizeHint().height();
    label.setText(text);
    int width = 400;
    while (label.heightForWidth(width) > twoLines)
        width += 10;
    return width + kLogoAndMarginsPx;
}

} // namespace

CorrectionWizard::CorrectionWizard(HostApplication *application, const std::vector<KIPluginOne2One *> &processes,
                                   FittedCorrection *correction, InterruptGuard *guard)
    : m_application(application),
      m_process(processes.front()),
      m_pictures(new PicturesPage(application)),
      m_pluginPage(m_process->WizardPage()),
      m_run(new RunPage(application, correction, processes, guard))
{
    setWindowTitle(tr("Vitrelux: lens correction"));
    setWindowIcon(m_process->Icon());
    setWizardStyle(ModernStyle);
    setOption(NoCancelButtonOnLastPage);
    setPixmap(LogoPixmap, m_process->Icon().pixmap(48));
    setButtonText(BackButton, tr("&Back"));
    setButtonText(NextButton, tr("&Next"));
    setButtonText(FinishButton, tr("&Close"));
    setButtonText(CancelButton, tr("Cancel"));

    setPage(kPicturesPage, m_pictures);
    if (m_pluginPage)
        setPage(kPluginPage, m_pluginPage);
    setPage(kRunPage, m_run);
    connect(m_run, &RunPage::RunningChanged, this, &CorrectionWizard::RunningChanged);
    connect(this, &QWizard::currentIdChanged, this, &CorrectionWizard::RunningChanged); // because QWizard enables Back

    int width = 0;
    for (const int id : pageIds())
        width = std::max(width, WidthOfSubTitle(page(id)->subTitle()));
    setMinimumWidth(width);
    resize(std::max(width, 960), 720);
    restoreGeometry(application->Settings().value(kGeometrySetting).toByteArray());
}

CorrectionWizard::~CorrectionWizard()
{
    if (!m_pluginPage)
        return;
    removePage(kPluginPage);
    m_pluginPage->setParent(nullptr);
}

void CorrectionWizard::Add(const QStringList &files)
{
    m_pictures->Add(files);
}

int CorrectionWizard::FailedCount() const
{
    return m_run->Count(PictureOutcome::Failed);
}

void CorrectionWizard::initializePage(int id)
{
    QWizard::initializePage(id);
    const QStringList files = m_pictures->Files();
    const QString framing = m_pictures->Framing();
    const bool isNew = files != m_announced || framing != m_framing; // if not, the page need not render again
    if (id != kPicturesPage && isNew) {
        AnnounceFiles(m_application, m_process, Readable(m_announced), Readable(files), framing);
        m_announced = files;
        m_framing = framing;
    }
    if (id == kRunPage) {
        m_run->Start(PrepareJob(m_application, m_process, m_pictures->Pictures(), m_pictures->Output()),
                     m_pictures->MayReplace() ? ExistingOutput::Overwrite : ExistingOutput::Skip);
    }
}

/// Returns the files that are pictures. Other files get no record; they only appear as failures of the run.
QStringList CorrectionWizard::Readable(const QStringList &files) const
{
    QStringList readable;
    std::copy_if(files.begin(), files.end(), std::back_inserter(readable),
                 [this](const QString &file) { return m_application->ProblemOf(file).isEmpty(); });
    return readable;
}

bool CorrectionWizard::validateCurrentPage()
{
    if (!QWizard::validateCurrentPage())
        return false;
    if (m_pluginPage && currentPage() == m_pluginPage)
        m_process->OnValidatePage();
    return true;
}

void CorrectionWizard::RunningChanged()
{
    button(BackButton)->setEnabled(!m_run->IsRunning() && currentPage() != m_pictures);
}

void CorrectionWizard::reject()
{
    if (m_run->IsRunning() && !m_run->IsCanceled()) {
        m_run->Cancel();
        return;
    }
    QWizard::reject();
}

void CorrectionWizard::done(int result)
{
    m_application->Settings().setValue(kGeometrySetting, saveGeometry());
    QWizard::done(result);
}
