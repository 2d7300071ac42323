#include "RunPage.h"

#include "CompareDialog.h"
#include "app/InterruptGuard.h"

#include <QAction>
#include <QDesktopServices>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>

namespace {

enum Column { kPicture, kResult, kColumnCount };

struct OutcomeRow {
    QStyle::StandardPixmap icon;
    const char *text;
};

/// Indexed by PictureOutcome.
constexpr OutcomeRow kOutcomes[] = {
    {QStyle::SP_DialogApplyButton, QT_TRANSLATE_NOOP("RunPage", "Corrected")},
    {QStyle::SP_MessageBoxInformation,
     QT_TRANSLATE_NOOP("RunPage", "Left as it was: the corrected picture already exists")},
    {QStyle::SP_MessageBoxInformation, QT_TRANSLATE_NOOP("RunPage", "Skipped, corrected before")},
    {QStyle::SP_MessageBoxCritical, QT_TRANSLATE_NOOP("RunPage", "Failed")},
    {QStyle::SP_DialogCancelButton, QT_TRANSLATE_NOOP("RunPage", "Not corrected: the run was stopped")},
};

} // namespace

RunPage::RunPage(HostApplication *application, FittedCorrection *correction, std::vector<KIPluginOne2One *> processes,
                 InterruptGuard *guard)
    : m_application(application),
      m_correction(correction),
      m_processes(std::move(processes)),
      m_guard(guard),
      m_state(new QLabel),
      m_progress(new QProgressBar),
      m_timeLeft(new QLabel),
      m_list(new QTableWidget(0, kColumnCount)),
      m_cancel(new QPushButton(tr("&Stop"))),
      m_compare(new QPushButton(tr("Before and &after…"))),
      m_showInFolder(new QPushButton(tr("Show in &folder")))
{
    setTitle(tr("Correction"));
    setSubTitle(tr("Open a row of the list to see the picture before and after the correction."));
    setFinalPage(true);
    m_state->setObjectName(QStringLiteral("state"));
    m_state->setWordWrap(true);
    m_progress->setObjectName(QStringLiteral("progress"));
    m_timeLeft->setObjectName(QStringLiteral("timeLeft"));
    SetUpList();
    m_cancel->setObjectName(QStringLiteral("stop"));
    m_compare->setObjectName(QStringLiteral("compare"));
    m_showInFolder->setObjectName(QStringLiteral("showInFolder"));
    EnableButtons();

    auto *bar = new QHBoxLayout;
    bar->addWidget(m_progress, 1);
    bar->addWidget(m_cancel);
    auto *below = new QHBoxLayout;
    below->addStretch();
    below->addWidget(m_compare);
    below->addWidget(m_showInFolder);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_state);
    layout->addLayout(bar);
    layout->addWidget(m_timeLeft);
    layout->addWidget(m_list, 1);
    layout->addLayout(below);

    connect(m_compare, &QPushButton::clicked, this, &RunPage::Compare);
    connect(m_cancel, &QPushButton::clicked, this, &RunPage::Cancel);
    connect(m_showInFolder, &QPushButton::clicked, this, &RunPage::ShowInFolder);
    connect(&m_everySecond, &QTimer::timeout, this, &RunPage::ShowTimeLeft);
}

/// Sets up the list of results. Reasons may be long, so texts wrap and row heights adapt.
void RunPage::SetUpList()
{
    m_list->setObjectName(QStringLiteral("results"));
    m_list->setHorizontalHeaderLabels({tr("Picture"), tr("Result")});
    m_list->horizontalHeader()->setSectionResizeMode(kPicture, QHeaderView::ResizeToContents);
    m_list->horizontalHeader()->setStretchLastSection(true);
    m_list->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_list->horizontalHeader()->setHighlightSections(false);
    m_list->verticalHeader()->hide();
    m_list->setShowGrid(false);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    connect(m_list->horizontalHeader(), &QHeaderView::sectionResized, m_list, &QTableView::resizeRowsToContents);
    m_list->setTabKeyNavigation(false); // Tab leaves the list
    connect(m_list, &QTableWidget::itemSelectionChanged, this, [this] {
        m_follows = m_list->selectedItems().isEmpty();
        EnableButtons();
    });
    connect(m_list, &QTableWidget::cellDoubleClicked, this, &RunPage::Compare);
    auto *compareByKey = new QAction(m_list); // a shortcut: an unhandled Return key would close the window
    compareByKey->setShortcuts({QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)});
    compareByKey->setShortcutContext(Qt::WidgetShortcut);
    m_list->addAction(compareByKey);
    connect(compareByKey, &QAction::triggered, this, &RunPage::Compare);
}

void RunPage::Start(std::vector<JobPicture> pictures, ExistingOutput existing)
{
    m_outcomes.assign(pictures.size(), std::nullopt);
    m_canceled = false;
    m_follows = true;
    m_pixelsDone = m_pixelsLeft = 0;
    m_list->setRowCount(0);
    m_list->setRowCount(int(pictures.size()));
    for (int i = 0; i < m_list->rowCount(); ++i) {
        const JobPicture &picture = pictures[std::size_t(i)];
        auto *name = new QTableWidgetItem(QFileInfo(picture.planned.picture).fileName());
        name->setToolTip(picture.planned.picture);
        m_list->setItem(i, kPicture, name);
        m_list->setItem(i, kResult, new QTableWidgetItem);
        m_pixelsLeft += picture.pixels;
    }
    m_progress->setRange(0, std::max(1, int(pictures.size())));
    m_progress->setValue(0);
    ShowProgress();
    EnableButtons();
    m_job = std::make_unique<CorrectionJob>(m_correction, m_processes, std::move(pictures), existing);
    connect(m_job.get(), &CorrectionJob::Begins, this, &RunPage::PictureBegins);
    connect(m_job.get(), &CorrectionJob::Ended, this, &RunPage::PictureEnded);
    connect(m_job.get(), &CorrectionJob::finished, this, &RunPage::JobFinished);
    m_sinceStart.start();
    m_everySecond.start(1000);
    SetRunning(true);
    m_job->start();
}

void RunPage::Cancel()
{
    if (!m_running)
        return;
    m_canceled = true;
    m_job->Cancel();
    m_cancel->setEnabled(false);
    m_state->setText(tr("Stopping…"));
    m_timeLeft->clear();
}

int RunPage::Count(PictureOutcome outcome) const
{
    return int(std::count(m_outcomes.begin(), m_outcomes.end(), std::optional(outcome)));
}

void RunPage::PictureBegins(int index)
{
    ShowResult(index, tr("Correcting…"), QIcon());
    if (m_follows)
        m_list->scrollToItem(m_list->item(index, kResult));
}

void RunPage::PictureEnded(int index, PictureOutcome outcome, const QString &why, const QString &profile)
{
    const JobPicture &picture = m_job->Pictures()[std::size_t(index)];
    m_outcomes[std::size_t(index)] = outcome;
    // The estimate uses only corrected pictures: others usually take no time and would make it too short.
    m_pixelsLeft -= picture.pixels;
    if (outcome == PictureOutcome::Corrected)
        m_pixelsDone += picture.pixels;

    const OutcomeRow &known = kOutcomes[int(outcome)];
    QString text = tr(known.text);
    if (!why.isEmpty())
        text = tr("%1: %2", "result of a picture, and why").arg(text, why.simplified());
    ShowResult(index, text, style()->standardIcon(known.icon));
    m_list->item(index, kResult)->setToolTip(profile);
    ShowProgress();
    ShowTimeLeft();
    EnableButtons();
}

void RunPage::ShowProgress()
{
    const auto done = int(std::count_if(m_outcomes.begin(), m_outcomes.end(),
                                        [](const std::optional<PictureOutcome> &outcome) { return outcome; }));
    m_progress->setValue(done);
    if (!m_canceled)
        m_state->setText(tr("%1 of %2 pictures finished").arg(done).arg(m_outcomes.size()));
}

void RunPage::ShowResult(int index, const QString &text, const QIcon &icon)
{
    QTableWidgetItem *cell = m_list->item(index, kResult);
    cell->setText(text);
    cell->setIcon(icon);
    m_list->resizeRowToContents(index);
}

void RunPage::JobFinished()
{
    m_everySecond.stop();
    m_timeLeft->clear();
    QStringList parts(tr("%n picture(s) corrected", nullptr, Count(PictureOutcome::Corrected)));
    if (const int kept = Count(PictureOutcome::Kept))
        parts << tr("%n left as they were", nullptr, kept);
    if (const int skipped = Count(PictureOutcome::DoneBefore))
        parts << tr("%n corrected before", nullptr, skipped);
    if (const int failed = Count(PictureOutcome::Failed))
        parts << tr("%n failed", nullptr, failed);
    if (const int leftOut = Count(PictureOutcome::LeftOut))
        parts << tr("%n not reached", nullptr, leftOut);
    m_state->setText(parts.join(tr(", ")));
    SetRunning(false);
    EnableButtons();
}

void RunPage::SetRunning(bool running)
{
    m_running = running;
    m_cancel->setEnabled(running);
    Q_EMIT completeChanged();
    Q_EMIT RunningChanged();
}

/// Shows the time left, estimated from the pixels corrected so far; nothing before the first picture is corrected.
void RunPage::ShowTimeLeft()
{
    if (m_canceled || m_pixelsDone == 0)
        return m_timeLeft->clear();
    const double seconds = double(m_sinceStart.elapsed()) / 1000.0 * double(m_pixelsLeft) / double(m_pixelsDone);
    constexpr double kMinute = 60.0;
    if (seconds < kMinute)
        m_timeLeft->setText(tr("About %n second(s) left", nullptr, std::max(1, qRound(seconds))));
    else
        m_timeLeft->setText(tr("About %n minute(s) left", nullptr, qRound(seconds / kMinute)));
}

void RunPage::EnableButtons()
{
    const bool isShown = Shown();
    m_compare->setEnabled(isShown);
    m_showInFolder->setEnabled(isShown);
}

/// Returns the selected picture if its corrected picture exists; without a selection, the first one whose corrected
/// picture exists. Null if there is none.
const PlannedPicture *RunPage::Shown() const
{
    for (std::size_t i = 0; i < m_outcomes.size(); ++i) {
        const bool chosen = m_list->selectedItems().isEmpty() || m_list->item(int(i), kPicture)->isSelected();
        const bool there = m_outcomes[i] == PictureOutcome::Corrected || m_outcomes[i] == PictureOutcome::Kept;
        if (chosen && there)
            return &m_job->Pictures()[i].planned;
    }
    return nullptr;
}

void RunPage::ShowInFolder()
{
    if (const PlannedPicture *planned = Shown())
        m_guard->StartProgram([planned] { QDesktopServices::openUrl(QUrl::fromLocalFile(planned->outputFolder)); });
}

void RunPage::Compare()
{
    if (const PlannedPicture *planned = Shown())
        CompareDialog(m_application, planned->picture, planned->output, this).exec();
}
