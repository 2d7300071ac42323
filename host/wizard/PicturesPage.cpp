#include "PicturesPage.h"

#include "app/HostApplication.h"
#include "app/OutputPlan.h"
#include "app/PictureFiles.h"
#include "app/PictureRun.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QTimer>
#include <QTreeWidget>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>

namespace {

const QLatin1String kFolderSetting("Wizard/PictureFolder");
const QLatin1String kOutputFolderSetting("Wizard/OutputFolder");
const QLatin1String kFormatSetting("Wizard/Format");
const QLatin1String kFramingSetting("Wizard/Framing");

struct ChoiceRow {
    const char *value; // of the record's attribute "Format" or "Framing"
    const char *text;
};

/// The first row of each table is the default.
constexpr ChoiceRow kFormats[] = {
    {"tiff", QT_TRANSLATE_NOOP("PicturesPage", "TIFF: nothing is lost")},
    {"jpeg", QT_TRANSLATE_NOOP("PicturesPage", "JPEG: small files, 8 bits")},
    {"png", QT_TRANSLATE_NOOP("PicturesPage", "PNG: lossless, up to 16 bits")},
    {"exr", QT_TRANSLATE_NOOP("PicturesPage", "OpenEXR: linear light, for compositing")},
};
constexpr ChoiceRow kFramings[] = {
    {"fill", QT_TRANSLATE_NOOP("PicturesPage", "Fill the frame: no empty borders")},
    {"keep", QT_TRANSLATE_NOOP("PicturesPage", "Keep the scale")},
    {"all", QT_TRANSLATE_NOOP("PicturesPage", "Show everything that was photographed")},
};

enum Column { kName, kSize, kFolder, kColumnCount };
constexpr int kThumbnailSide = 48;
constexpr int kRowHeight = kThumbnailSide + 4; // also for rows without a thumbnail
constexpr int kPath = Qt::UserRole;            // of a row: the absolute path
constexpr int kSubpath = Qt::UserRole + 1;     // of a row: as in NamedPicture

} // namespace

PicturesPage::PicturesPage(HostApplication *application)
    : m_application(application),
      m_list(new QTreeWidget),
      m_hint(new QLabel),
      m_remove(new QPushButton(tr("&Remove"))),
      m_reading(new QLabel),
      m_notice(new QLabel),
      m_outputFolder(new QLineEdit),
      m_chooseOutput(new QPushButton(tr("C&hoose…"))),
      m_format(new QComboBox),
      m_framing(new QComboBox),
      m_replace(new QCheckBox(tr("Replace e&xisting corrected pictures")))
{
    setTitle(tr("Pictures"));
    setSubTitle(tr("Which pictures do you want to correct, and where are the results saved? The originals are not "
                   "changed."));
    setAcceptDrops(true);

    SetUpList();
    auto *add = new QPushButton(tr("&Add pictures…"));
    auto *addFolder = new QPushButton(tr("Add f&older…"));
    add->setObjectName(QStringLiteral("add"));
    addFolder->setObjectName(QStringLiteral("addFolder"));
    m_remove->setObjectName(QStringLiteral("remove"));
    m_replace->setObjectName(QStringLiteral("replace"));
    m_reading->setObjectName(QStringLiteral("reading"));
    m_notice->setObjectName(QStringLiteral("notice"));
    m_notice->setWordWrap(true);
    auto *buttons = new QHBoxLayout;
    for (QPushButton *button : {add, addFolder, m_remove})
        buttons->addWidget(button);
    buttons->addStretch();
    buttons->addWidget(m_reading);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addLayout(buttons);
    layout->addLayout(SetUpOptions());
    layout->addWidget(m_replace);
    layout->addWidget(m_notice);
    const QList<QWidget *> inOrder = {m_list,         add,      addFolder, m_remove, m_outputFolder,
                                      m_chooseOutput, m_format, m_framing, m_replace};
    for (int i = 1; i < inOrder.size(); ++i)
        setTabOrder(inOrder[i - 1], inOrder[i]);

    connect(m_remove, &QPushButton::clicked, this, &PicturesPage::RemoveSelected);
    connect(add, &QPushButton::clicked, this, &PicturesPage::Choose);
    connect(addFolder, &QPushButton::clicked, this, &PicturesPage::ChooseFolder);
    m_remove->setEnabled(false);
    OutputFolderChanged();
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
    m_list->setWordWrap(true); // the reason why a file cannot be used may take two lines
    m_list->setTextElideMode(Qt::ElideMiddle);
    m_list->setUniformRowHeights(true);
    m_hint->setText(tr("Drop pictures or folders here"));
    m_hint->setAlignment(Qt::AlignCenter);
    m_hint->setEnabled(false); // gray text
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

QGridLayout *PicturesPage::SetUpOptions()
{
    m_outputFolder->setObjectName(QStringLiteral("outputFolder"));
    m_outputFolder->setPlaceholderText(tr("The folder of each picture"));
    m_outputFolder->setClearButtonEnabled(true);
    m_outputFolder->setText(m_application->Settings().value(kOutputFolderSetting).toString());
    m_chooseOutput->setObjectName(QStringLiteral("chooseOutputFolder"));
    m_format->setObjectName(QStringLiteral("format"));
    for (const ChoiceRow &row : kFormats)
        m_format->addItem(tr(row.text), QString::fromLatin1(row.value));
    SetUpChoice(m_format, kFormatSetting);
    m_framing->setObjectName(QStringLiteral("framing"));
    for (const ChoiceRow &row : kFramings)
        m_framing->addItem(tr(row.text), QString::fromLatin1(row.value));
    SetUpChoice(m_framing, kFramingSetting);

    const std::pair<QString, QWidget *> rows[] = {
        {tr("&Save in:"), m_outputFolder}, {tr("Forma&t:"), m_format}, {tr("&Framing:"), m_framing}};
    auto *grid = new QGridLayout;
    for (const auto &[text, widget] : rows) {
        auto *label = new QLabel(text);
        label->setBuddy(widget);
        const int row = grid->rowCount();
        grid->addWidget(label, row, 0);
        grid->addWidget(widget, row, 1);
    }
    grid->addWidget(m_chooseOutput, 1, 2);
    connect(m_chooseOutput, &QPushButton::clicked, this, &PicturesPage::ChooseOutputFolder);
    connect(m_outputFolder, &QLineEdit::textChanged, this, &PicturesPage::OutputFolderChanged);
    return grid;
}

/// Selects the stored value, and stores each new choice.
void PicturesPage::SetUpChoice(QComboBox *box, const QLatin1String &setting)
{
    box->setCurrentIndex(std::max(0, box->findData(m_application->Settings().value(setting))));
    connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [=] { m_application->Settings().setValue(setting, box->currentData()); });
}

/// Returns the folder that was typed, with "~" expanded, or dropped as a URL; empty: the folder of each picture.
QString PicturesPage::OutputFolder() const
{
    const QString folder = m_outputFolder->text();
    if (folder.startsWith(QLatin1String("file://")))
        return QUrl(folder.trimmed()).toLocalFile();
    const bool isBelowHome = folder == QLatin1String("~") || folder.startsWith(QLatin1String("~/"));
    return isBelowHome ? QDir::homePath() + folder.mid(1) : folder;
}

/// Returns what is wrong with the output folder; empty if no problem is known. The folder need not exist.
QString PicturesPage::OutputFolderFault() const
{
    const QString folder = OutputFolder();
    if (!folder.isEmpty() && !folder.startsWith(QLatin1Char('/')))
        return tr("\"%1\" is not an absolute path, which begins with \"/\"").arg(folder);
    return IsThere(folder) && !QFileInfo(folder).isDir() ? tr("\"%1\" is not a folder").arg(folder) : QString();
}

void PicturesPage::OutputFolderChanged()
{
    const QString fault = OutputFolderFault();
    ShowNotice(fault);
    if (fault.isEmpty())
        m_application->Settings().setValue(kOutputFolderSetting, m_outputFolder->text());
    Q_EMIT completeChanged();
}

void PicturesPage::ShowNotice(const QString &text)
{
    m_notice->setText(text);
    m_notice->setVisible(!text.isEmpty());
}

void PicturesPage::Add(const QStringList &files)
{
    QStringList known = Files();
    const int before = known.size();
    const PictureFiles found = ListPictures({files, true, QString(), OutputEndings(), OutputFolder()});
    const QVector<PlannedPicture> plan = PlanOutputs(found.pictures, {}); // for the absolute paths
    for (int i = 0; i < plan.size(); ++i) {
        const QString &picture = plan[i].picture;
        if (known.contains(picture))
            continue;
        known << picture;
        const QFileInfo info(picture);
        auto *row = new QTreeWidgetItem({info.fileName(), QString(), info.path()});
        row->setData(kName, kPath, picture);
        row->setData(kName, kSubpath, found.pictures[i].subpath);
        row->setToolTip(kName, picture);
        row->setToolTip(kFolder, info.path());
        row->setSizeHint(kFolder, QSize(0, kRowHeight));
        m_list->addTopLevelItem(row);
    }
    if (!found.unreadable.isEmpty())
        ShowNotice(tr("This folder cannot be read: %1").arg(found.unreadable.first()));
    else if (known.size() == before && !files.isEmpty())
        ShowNotice(tr("No new pictures were found."));
    else
        ShowNotice(OutputFolderFault());
    ListChanged();
    QTimer::singleShot(0, this, &PicturesPage::DescribeNext);
}

bool PicturesPage::isComplete() const
{
    const int count = m_list->topLevelItemCount();
    return count > 0 && m_described == count && OutputFolderFault().isEmpty();
}

/// Describes one file per pass of the event loop, so a thousand files don't block the window.
void PicturesPage::DescribeNext()
{
    QTreeWidgetItem *row = m_list->topLevelItem(m_described);
    if (!row)
        return;
    ++m_described;
    const QString path = row->data(kName, kPath).toString();
    const ImageDef &image = *m_application->ImageOf(path);
    const QString problem = m_application->ProblemOf(path);
    const bool usable = problem.isEmpty();
    row->setText(kSize, usable ? QStringLiteral("%1 × %2").arg(image.nCols()).arg(image.nRows()) : problem);
    row->setToolTip(kSize, problem);
    if (usable)
        row->setIcon(kName, QIcon(*image.GetThumbnail()));
    else
        row->setIcon(kSize, style()->standardIcon(QStyle::SP_MessageBoxWarning));
    ShowReading();
    if (isComplete())
        Q_EMIT completeChanged();
    QTimer::singleShot(0, this, &PicturesPage::DescribeNext);
}

/// Shows why the next page is not available yet.
void PicturesPage::ShowReading()
{
    const int count = m_list->topLevelItemCount();
    m_reading->setText(m_described < count ? tr("%1 of %2 pictures read").arg(m_described).arg(count) : QString());
}

QVector<NamedPicture> PicturesPage::Pictures() const
{
    QVector<NamedPicture> pictures;
    for (int i = 0; i < m_list->topLevelItemCount(); ++i) {
        const QTreeWidgetItem *row = m_list->topLevelItem(i);
        pictures.append({row->data(kName, kPath).toString(), row->data(kName, kSubpath).toString()});
    }
    return pictures;
}

QStringList PicturesPage::Files() const
{
    QStringList files;
    for (const NamedPicture &picture : Pictures())
        files << picture.name;
    return files;
}

JobOutput PicturesPage::Output() const
{
    return {OutputFolder(), m_format->currentData().toString()};
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

void PicturesPage::ChooseFolder()
{
    const QString before = m_application->Settings().value(kFolderSetting, QDir::homePath()).toString();
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Add a folder"), before);
    if (folder.isEmpty())
        return;
    m_application->Settings().setValue(kFolderSetting, folder);
    Add({folder});
}

void PicturesPage::ChooseOutputFolder()
{
    const QString before = OutputFolder().isEmpty() ? QDir::homePath() : OutputFolder();
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Folder for corrected pictures"), before);
    if (!folder.isEmpty())
        m_outputFolder->setText(folder);
}

void PicturesPage::RemoveSelected()
{
    for (QTreeWidgetItem *row : m_list->selectedItems()) {
        if (m_list->indexOfTopLevelItem(row) < m_described)
            --m_described;
        delete row;
    }
    ListChanged();
}

void PicturesPage::ListChanged()
{
    m_hint->setVisible(m_list->topLevelItemCount() == 0);
    ShowReading();
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
