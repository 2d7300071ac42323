#include "PicturesPage.h"

#include "app/HostApplication.h"
#include "app/OutputPlan.h"
#include "app/PictureFiles.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

const QLatin1String kFolderSetting("Wizard/PictureFolder");
const QLatin1String kFramingSetting("Wizard/Framing");

struct FramingRow {
    const char *value; // in a record
    const char *text;
};

/// The first one is the default.
constexpr FramingRow kFramings[] = {
    {"fill", QT_TRANSLATE_NOOP("PicturesPage", "Fill the frame: no empty borders")},
    {"keep", QT_TRANSLATE_NOOP("PicturesPage", "Keep the scale")},
    {"all", QT_TRANSLATE_NOOP("PicturesPage", "Show everything that was photographed")},
};

enum Column { kName, kWhat, kFolder, kColumnCount };
constexpr int kThumbnailSide = 48;
constexpr int kRowHeight = kThumbnailSide + 4; // also of rows without a thumbnail
constexpr int kPath = Qt::UserRole;            // of a row: the absolute name
constexpr int kDescribed = Qt::UserRole + 1;   // of a row: whether its file is described

} // namespace

PicturesPage::PicturesPage(HostApplication *application)
    : m_application(application),
      m_list(new QTreeWidget),
      m_hint(new QLabel),
      m_remove(new QPushButton(tr("&Remove"))),
      m_framing(new QComboBox),
      m_replace(new QCheckBox(tr("Replace existing corrected pictures")))
{
    setTitle(tr("Pictures"));
    setSubTitle(
        tr("Which pictures do you want to correct? Each corrected picture is saved next to its original, which is "
           "not changed."));
    setAcceptDrops(true);

    SetUpList();
    SetUpFraming();
    auto *add = new QPushButton(tr("&Add pictures…"));
    add->setObjectName(QStringLiteral("add"));
    m_remove->setObjectName(QStringLiteral("remove"));
    m_replace->setObjectName(QStringLiteral("replace"));
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(add);
    buttons->addWidget(m_remove);
    buttons->addStretch();
    auto *framingLabel = new QLabel(tr("&Framing:"));
    framingLabel->setBuddy(m_framing);
    auto *framing = new QHBoxLayout;
    framing->addWidget(framingLabel);
    framing->addWidget(m_framing);
    framing->addStretch();
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addLayout(buttons);
    layout->addLayout(framing);
    layout->addWidget(m_replace);

    connect(m_remove, &QPushButton::clicked, this, &PicturesPage::RemoveSelected);
    connect(add, &QPushButton::clicked, this, &PicturesPage::Choose);
    m_remove->setEnabled(false);
}

void PicturesPage::SetUpList()
{
    m_list->setObjectName(QStringLiteral("pictures"));
    m_list->setHeaderLabels({tr("Picture"), tr("Size"), tr("Folder")});
    m_list->setRootIsDecorated(false);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setIconSize(QSize(kThumbnailSide, kThumbnailSide));
    m_list->header()->setSectionResizeMode(QHeaderView::Stretch);
    m_list->header()->setSectionResizeMode(kName, QHeaderView::ResizeToContents);
    m_list->setWordWrap(true); // the reason why a file cannot be used takes two lines
    m_list->setTextElideMode(Qt::ElideMiddle);
    m_list->setUniformRowHeights(true);
    m_hint->setText(tr("Drop pictures or folders here"));
    m_hint->setAlignment(Qt::AlignCenter);
    m_hint->setEnabled(false); // shown as a hint
    auto *over = new QVBoxLayout(m_list->viewport());
    over->addWidget(m_hint);

    auto *removeByKey = new QAction(m_list);
    removeByKey->setShortcut(QKeySequence::Delete);
    removeByKey->setShortcutContext(Qt::WidgetShortcut);
    m_list->addAction(removeByKey);
    connect(removeByKey, &QAction::triggered, this, &PicturesPage::RemoveSelected);
    connect(m_list, &QTreeWidget::itemSelectionChanged, this,
            [this] { m_remove->setEnabled(!m_list->selectedItems().isEmpty()); });
}

void PicturesPage::SetUpFraming()
{
    m_framing->setObjectName(QStringLiteral("framing"));
    for (const FramingRow &row : kFramings)
        m_framing->addItem(tr(row.text), QString::fromLatin1(row.value));
    m_framing->setCurrentIndex(std::max(0, m_framing->findData(m_application->Settings().value(kFramingSetting))));
    connect(m_framing, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this] { m_application->Settings().setValue(kFramingSetting, Framing()); });
}

void PicturesPage::Add(const QStringList &files)
{
    QStringList known = Files();
    const QVector<PlannedPicture> plan =
        PlanOutputs(ListPictures({files, true, {}, {}, {}}).pictures, {}); // for the absolute names
    for (const PlannedPicture &planned : plan) {
        if (known.contains(planned.picture))
            continue;
        known << planned.picture;
        const QFileInfo info(planned.picture);
        auto *row = new QTreeWidgetItem({info.fileName(), QString(), info.path()});
        row->setData(kName, kPath, planned.picture);
        row->setToolTip(kName, planned.picture);
        row->setToolTip(kFolder, info.path());
        row->setSizeHint(kFolder, QSize(0, kRowHeight));
        m_list->addTopLevelItem(row);
    }
    ListChanged();
    QTimer::singleShot(0, this, &PicturesPage::DescribeNext);
}

/// Returns the first row that is not described; the number of rows if all are.
int PicturesPage::NextToDescribe() const
{
    int row = 0;
    while (row < m_list->topLevelItemCount() && m_list->topLevelItem(row)->data(kName, kDescribed).toBool())
        ++row;
    return row;
}

bool PicturesPage::isComplete() const
{
    const int count = m_list->topLevelItemCount();
    return count > 0 && NextToDescribe() == count;
}

/// Describes one file per pass of the event loop, so a thousand files don't block the window.
void PicturesPage::DescribeNext()
{
    QTreeWidgetItem *row = m_list->topLevelItem(NextToDescribe());
    if (!row)
        return;
    row->setData(kName, kDescribed, true);
    const QString path = row->data(kName, kPath).toString();
    const ImageDef &image = *m_application->ImageOf(path);
    const QString problem = m_application->ProblemOf(path);
    const bool usable = problem.isEmpty();
    row->setText(kWhat, usable ? QStringLiteral("%1 × %2").arg(image.nCols()).arg(image.nRows()) : problem);
    row->setToolTip(kWhat, problem);
    if (usable)
        row->setIcon(kName, QIcon(*image.GetThumbnail()));
    else
        row->setIcon(kWhat, style()->standardIcon(QStyle::SP_MessageBoxWarning));
    if (isComplete())
        Q_EMIT completeChanged();
    QTimer::singleShot(0, this, &PicturesPage::DescribeNext);
}

QStringList PicturesPage::Files() const
{
    QStringList files;
    for (int i = 0; i < m_list->topLevelItemCount(); ++i)
        files << m_list->topLevelItem(i)->data(kName, kPath).toString();
    return files;
}

bool PicturesPage::MayReplace() const
{
    return m_replace->isChecked();
}

QString PicturesPage::Framing() const
{
    return m_framing->currentData().toString();
}

void PicturesPage::Choose()
{
    const QString folder = m_application->Settings().value(kFolderSetting, QDir::homePath()).toString();
    const QString filters = tr("Pictures") + QLatin1String(" (") + PictureNamePatterns().join(QLatin1Char(' '))
        + QLatin1String(");;") + tr("All files") + QLatin1String(" (*)");
    const QStringList files = QFileDialog::getOpenFileNames(this, tr("Add pictures"), folder, filters);
    if (files.isEmpty())
        return;
    m_application->Settings().setValue(kFolderSetting, QFileInfo(files.first()).absolutePath());
    Add(files);
}

void PicturesPage::RemoveSelected()
{
    qDeleteAll(m_list->selectedItems());
    ListChanged();
}

void PicturesPage::ListChanged()
{
    m_hint->setVisible(m_list->topLevelItemCount() == 0);
    Q_EMIT completeChanged();
}

void PicturesPage::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void PicturesPage::dropEvent(QDropEvent *event)
{
    QStringList files;
    const QList<QUrl> urls = event->mimeData()->urls();
    for (const QUrl &url : urls) {
        if (url.isLocalFile())
            files << url.toLocalFile();
    }
    Add(files);
    event->acceptProposedAction();
}
