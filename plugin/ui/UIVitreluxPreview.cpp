#include "UIVitreluxPreview.h"

#include "KIImageDef.h"
#include "KUI.h"
#include "LensProfile.h"
#include "PictureFit.h"
#include "newLCP.h"
#include "ui_UIVitreluxPreview.h"

#include <QAction>
#include <QFileDialog>
#include <QMessageBox>
#include <QMovie>
#include <QPainter>
#include <QScopedValueRollback>

#include <algorithm>

namespace {

constexpr int kLongestSidePx = 1024;
constexpr int kWaitFrames = 12;
constexpr int kWaitFrameMs = 100;
constexpr Corrections kAllCorrections = {true, true, true};

struct ReducedSize {
    int width;
    int height;
    double scale; // relative to full size
};

/// Returns the preview size: at most kLongestSidePx on the long side, never enlarged; the short side is rounded down,
/// but at least 1.
ReducedSize SizeOfPreview(const KIImageDef &def)
{
    const int columns = def.nCols();
    const int rows = def.nRows();
    if (columns < 1 || rows < 1)
        KThrow("Invalid Parameter");
    const bool isPortrait = columns <= rows;
    const int longSide = std::min(kLongestSidePx, isPortrait ? rows : columns);
    const double scale = double(longSide) / (isPortrait ? rows : columns);
    const int shortSide = std::max(1, int((isPortrait ? columns : rows) * scale));
    return isPortrait ? ReducedSize{shortSide, longSide, scale} : ReducedSize{longSide, shortSide, scale};
}

/// Scoped lock of an image's reduced pixels.
class ReducedLock {
public:
    ReducedLock(KIImageDef *def, const ReducedSize &size)
        : m_def(def), m_size(size), m_image(def->Lock(size.width, size.height, /*nativeDepth=*/true))
    {
        if (!m_image)
            KThrow("Invalid Bitmap"); // nothing was locked, so nothing is unlocked
    }
    ~ReducedLock() { m_def->Unlock(m_size.width, m_size.height, /*nativeDepth=*/true); }
    ReducedLock(const ReducedLock &) = delete;
    ReducedLock &operator=(const ReducedLock &) = delete;

    const KImage &Image() const { return *m_image; }

private:
    KIImageDef *m_def;
    ReducedSize m_size;
    KImage *m_image;
};

/// Returns the corrections that plain runs can make with a profile.
Corrections PlainCorrections(const QString &fileName)
{
    bool ok = false; // stays false if the file can't be opened
    const newLCP profile(fileName, ok);
    return {ok, ok && profile.greenModel.found, ok && profile.vignetteModel.found};
}

/// Returns the corrections that fitted runs can make: those for which some entry, in any RDF form, has a model.
Corrections FittedCorrections(const QString &fileName)
{
    Corrections supported = {};
    for (const ProfileEntry &entry : ReadLensProfile(fileName, nullptr).entries) {
        supported.distortion |= entry.geometry.has_value();
        supported.chromatic |= entry.redGreen || entry.blueGreen;
        supported.vignetting |= entry.vignette.has_value();
    }
    return supported;
}

QString ResourceFile(const KVitreluxOne2One &process, const QString &name)
{
    return QStringLiteral(":/%1/Resources/%2").arg(process.UID(), name);
}

} // namespace

UIVitreluxPreview::UIVitreluxPreview(KVitreluxOne2One *process, QWidget *parent)
    : QWidget(parent),
      ui(std::make_unique<Ui_UIVitreluxPreviewClass>()),
      m_process(process),
      m_computePreview(process, this),
      m_image(std::make_unique<KImage>())
{
    ui->setupUi(this);
    StartWaitAnimation();
    ui->lineEditLensPath->setText(m_process->LensPath());
    // These are updated but hidden: the user sees only the row with the profile's file.
    for (QWidget *hidden :
         {static_cast<QWidget *>(ui->label), static_cast<QWidget *>(ui->lineEditLensPath),
          static_cast<QWidget *>(ui->toolButtonLensPath), static_cast<QWidget *>(ui->label_2),
          static_cast<QWidget *>(ui->comboBoxLensProfile), static_cast<QWidget *>(ui->labelLensMessage)})
        hidden->hide();
    connect(&m_computePreview, &QThread::finished, this, &UIVitreluxPreview::renderEnded);
}

UIVitreluxPreview::~UIVitreluxPreview()
{
    m_computePreview.wait(); // it reads m_image
}

void UIVitreluxPreview::StartWaitAnimation()
{
    m_waitMovie = std::make_unique<QMovie>(ResourceFile(*m_process, QStringLiteral("icon_wait.gif")));
    ui->labelState->setMovie(m_waitMovie.get());
    m_waitMovie->start();
    ui->gridLayout_2->removeWidget(ui->labelState); // resizeEvent places it over the frame
    QStringList frames;
    for (int i = 1; i <= kWaitFrames; ++i)
        frames.append(ResourceFile(*m_process, QStringLiteral("iconwait_%1.png").arg(i, 2, 10, QLatin1Char('0'))));
    ui->labelState->setSequence(frames, kWaitFrameMs);
    ui->labelState->resize(ui->labelState->minimumSize());
}

// --- Current image ---

void UIVitreluxPreview::setImage(KIImageDef *def, void *params)
{
    try {
        ShowImage(def, static_cast<Params *>(params));
    } catch (...) { // keeps the current picture
    }
}

void UIVitreluxPreview::ShowImage(KIImageDef *def, Params *params)
{
    if (!params)
        return;
    const ReducedSize size = SizeOfPreview(*def);
    auto image = std::make_unique<KImage>();
    ReducedLock(def, size).Image().Convert(*image, GFL_RGBA, 32);
    QImage source;
    // Before the swap: if this fails, the old image, which the worker may be reading, stays alive.
    image->ToQImage(source);
    m_image.swap(image); // the old one stays alive until the worker has the new one
    m_imageDef = def;
    m_params = params;
    m_params->scale = float(size.scale);
    {
        const QScopedValueRollback<bool> updating(m_updating, true);
        ui->m_cbCA->setChecked(m_params->ca);
        ui->m_cbDistortion->setChecked(m_params->disto);
        ui->m_cbVignetting->setChecked(m_params->falloff);
        ShowProfile(m_params->lcpFilename);
        ShowReport(std::nullopt);
        m_sourceImage = source;
        m_sourcePixmap = FittedToFrame(m_sourceImage);
        updateLCPfilename();
    }
    EnableBoxes(m_supported.value(m_params->lcpFilename, kAllCorrections));
    computePreview();
}

void UIVitreluxPreview::clearImage()
{
    m_imageDef = nullptr;
    m_params = nullptr;
    for (QImage *image : {&m_sourceImage, &m_resultImage})
        *image = QImage();
    FitPictures();
    ShowReport(std::nullopt);
    if (m_clearProfile)
        m_clearProfile->setVisible(false);
    EnableBoxes(kAllCorrections);
    ui->labelState->show();
    SetComplete(QVariant());
    update();
}

// --- Profile ---

void UIVitreluxPreview::updateLCPfilename()
{
    if (!m_imageDef || (m_params && m_params->fitted)) // fitted runs search each time and store nothing
        return;
    QString message;
    const QStringList profiles = m_process->GetLCPfilename(m_imageDef, message);
    ui->labelLensMessage->setText(message);
    ui->comboBoxLensProfile->clear();
    for (const QString &profile : profiles) // the first one becomes current, and thus the record's profile
        ui->comboBoxLensProfile->addItem(QFileInfo(profile).completeBaseName(), profile);
}

void UIVitreluxPreview::on_comboBoxLensProfile_currentIndexChanged(int index)
{
    if (index == -1 || !m_params)
        return;
    m_params->lcpFilename = ui->comboBoxLensProfile->itemData(index).toString();
    computePreview();
}

void UIVitreluxPreview::on_toolButtonLensPath_clicked()
{
    const QString folder = QFileDialog::getExistingDirectory(
        this, tr("Select lens camera profiles Database directory"), ui->lineEditLensPath->text(),
        QFileDialog::Options(KUI::UseSystemFileDialog()) | QFileDialog::ShowDirsOnly);
    if (folder.isEmpty() || !QDir(folder).exists())
        return;
    m_process->SetLensPath(QDir(folder).absolutePath());
    ui->lineEditLensPath->setText(m_process->LensPath());
    updateLCPfilename();
}

void UIVitreluxPreview::on_toolButtonLensFile_clicked()
{
    if (!m_params)
        return;
    const QString fileName = QFileDialog::getOpenFileName(this, tr("Select lens camera profile"), m_params->lcpFilename,
                                                          tr("Profile") + QStringLiteral(" (*.lcp)"), nullptr,
                                                          QFileDialog::Options(KUI::UseSystemFileDialog()));
    if (!fileName.isEmpty() && m_params) // a new job may have started while the dialog was open
        UseProfile(fileName);
}

void UIVitreluxPreview::UseProfile(const QString &fileName)
{
    m_params->lcpFilename = fileName;
    ShowProfile(fileName);
    const Corrections supported = m_params->fitted ? FittedCorrections(fileName) : PlainCorrections(fileName);
    m_supported.insert(fileName, supported);
    if (!m_params->fitted || !supported.distortion) // plain records: unchecked by every new profile
        ui->m_cbDistortion->setChecked(false);      // also clears the record's flag
    if (!supported.chromatic)
        ui->m_cbCA->setChecked(false);
    if (!supported.vignetting)
        ui->m_cbVignetting->setChecked(false);
    EnableBoxes(supported);
    if (supported.Any())
        computePreview();
    else
        QMessageBox::warning(this, windowTitle(), tr("Non supported file format"));
}

void UIVitreluxPreview::FindProfileAgain()
{
    if (!m_params)
        return;
    m_params->lcpFilename.clear();
    ShowProfile(QString());
    EnableBoxes(kAllCorrections);
    computePreview();
}

/// Shows the chosen profile; an empty name means none.
void UIVitreluxPreview::ShowProfile(const QString &fileName)
{
    ui->lineEditLensFile->setText(fileName);
    const bool canBeCleared = m_params->fitted && !fileName.isEmpty();
    if (canBeCleared && !m_clearProfile) { // only fitted records need it
        m_clearProfile = ui->lineEditLensFile->addAction(style()->standardIcon(QStyle::SP_LineEditClearButton),
                                                         QLineEdit::TrailingPosition);
        m_clearProfile->setToolTip(tr("Find the profile automatically"));
        connect(m_clearProfile, &QAction::triggered, this, &UIVitreluxPreview::FindProfileAgain);
    }
    if (m_clearProfile)
        m_clearProfile->setVisible(canBeCleared);
}

/// Shows the profile found, or why none was found or nothing was corrected; the tooltip has the whole report.
void UIVitreluxPreview::ShowReport(const std::optional<FitReport> &report)
{
    QString result;
    QStringList all;
    if (report) {
        if (report->profile.isEmpty())
            result = tr("None found: %1").arg(report->why);
        else if (report->done.isEmpty() && !report->why.isEmpty())
            result = tr("Not corrected: %1").arg(report->why);
        else
            result = tr("Found: %1").arg(ShownProfileName(report->profile));
        all = QStringList{report->profile, report->entries, report->assumed, report->why};
        all.removeAll(QString());
    }
    ui->lineEditLensFile->setPlaceholderText(result); // visible until a profile is chosen
    ui->lineEditLensFile->setToolTip(all.join(QLatin1Char('\n')));
}

// --- Switches ---

/// Enables the boxes of supported corrections, and checked ones, so that they can always be unchecked.
void UIVitreluxPreview::EnableBoxes(const Corrections &supported)
{
    for (const auto &[box, isSupported] :
         {std::make_pair(ui->m_cbDistortion, supported.distortion), std::make_pair(ui->m_cbCA, supported.chromatic),
          std::make_pair(ui->m_cbVignetting, supported.vignetting)})
        box->setEnabled(isSupported || box->isChecked());
}

void UIVitreluxPreview::SetFlag(bool Params::*flag, int state)
{
    if (!m_params)
        return;
    m_params->*flag = state == Qt::Checked;
    computePreview();
}

void UIVitreluxPreview::on_m_cbDistortion_stateChanged(int state)
{
    SetFlag(&Params::disto, state);
}

void UIVitreluxPreview::on_m_cbCA_stateChanged(int state)
{
    SetFlag(&Params::ca, state);
}

void UIVitreluxPreview::on_m_cbVignetting_stateChanged(int state)
{
    SetFlag(&Params::falloff, state);
}

void UIVitreluxPreview::on_m_cbPreview_stateChanged(int)
{
    update();
}

// --- Rendering ---

void UIVitreluxPreview::SetComplete(const QVariant &complete)
{
    setProperty("isComplete", complete);
    QMetaObject::invokeMethod(parent(), "completeChanged");
}

void UIVitreluxPreview::computePreview()
{
    if (m_updating || !m_imageDef)
        return;
    SetComplete(false);
    ui->labelState->show();
    m_resultImage = QImage();
    m_resultPixmap = QPixmap();
    m_computePreview.setImage(m_imageDef, m_image.get(), m_params);
    m_computePreview.start(QThread::InheritPriority); // does nothing during a render, whose end starts the next one
    m_stateText = tr("Preview is uptodate");
    update();
}

void UIVitreluxPreview::renderEnded()
{
    if (m_computePreview.IsCurrent())
        updatePreview();
    else // a newer request is pending; does nothing if its render has already started
        m_computePreview.start(QThread::InheritPriority);
}

void UIVitreluxPreview::updatePreview()
{
    if (!m_imageDef)
        return; // the image was cleared in the meantime
    SetComplete(true);
    m_computePreview.getPreview(m_resultImage);
    m_resultPixmap = FittedToFrame(m_resultImage);
    ShowReport(m_computePreview.Report());
    ui->labelState->hide();
    update();
}

// --- Painting ---

QPixmap UIVitreluxPreview::FittedToFrame(const QImage &image) const
{
    if (image.isNull())
        return QPixmap();
    const qreal ratio = devicePixelRatioF();
    QPixmap pixmap =
        QPixmap::fromImage(image.scaled(ui->frame->size() * ratio, Qt::KeepAspectRatio, Qt::FastTransformation));
    pixmap.setDevicePixelRatio(ratio);
    return pixmap;
}

QRect UIVitreluxPreview::PlaceInFrame(const QPixmap &pixmap) const
{
    const QRect frame = ui->frame->geometry();
    const QSize size = pixmap.size() / pixmap.devicePixelRatio();
    return {frame.x() + (frame.width() - size.width()) / 2, frame.y() + (frame.height() - size.height()) / 2,
            size.width(), size.height()};
}

void UIVitreluxPreview::FitPictures()
{
    m_sourcePixmap = FittedToFrame(m_sourceImage);
    m_resultPixmap = FittedToFrame(m_resultImage);
}

void UIVitreluxPreview::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (!m_sourcePixmap.isNull())
        painter.drawPixmap(PlaceInFrame(m_sourcePixmap).topLeft(), m_sourcePixmap);
    if (m_resultPixmap.isNull())
        return;
    const QRect place = PlaceInFrame(m_resultPixmap);
    QRect shown = place;
    if (ui->m_cbPreview->isChecked())
        shown.setLeft(place.left() + (place.right() - place.left() + 1) / 2);
    painter.setClipRect(shown, Qt::ReplaceClip);
    // The uncorrected picture must not show through the transparent borders of the corrected one.
    painter.fillRect(shown, palette().window());
    painter.drawPixmap(place.topLeft(), m_resultPixmap);
}

void UIVitreluxPreview::resizeEvent(QResizeEvent *)
{
    FitPictures();
    const QSize free = ui->frame->size() - ui->labelState->size();
    ui->labelState->move(ui->frame->pos() + QPoint(free.width() / 2, free.height() / 2));
}

bool UIVitreluxPreview::eventFilter(QObject *watched, QEvent *event)
{
    return QObject::eventFilter(watched, event);
}
