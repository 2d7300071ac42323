#include "CompareDialog.h"

#include "KImage.h"
#include "PictureLight.h"
#include "app/HostApplication.h"
#include "app/PictureRun.h"
#include "gfl.h"

#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScopeGuard>
#include <QVBoxLayout>

#include <algorithm>

namespace {

const QLatin1String kGeometrySetting("Wizard/CompareGeometry");

constexpr double kZoomStep = 1.5;
constexpr double kMoveShare = 0.1; // of a view, per key press
constexpr int kMaxSide = 4096;     // of a shown picture, in pixels: about the size of a large screen

struct KeyRow {
    int key;
    double zoomBy; // 0: shows the whole picture
    double moveX, moveY;
};

constexpr KeyRow kKeys[] = {
    {Qt::Key_Plus, kZoomStep, 0.0, 0.0},  {Qt::Key_Minus, 1.0 / kZoomStep, 0.0, 0.0},
    {Qt::Key_Equal, kZoomStep, 0.0, 0.0}, {Qt::Key_0, 0.0, 0.0, 0.0},
    {Qt::Key_Left, 1.0, kMoveShare, 0.0}, {Qt::Key_Right, 1.0, -kMoveShare, 0.0},
    {Qt::Key_Up, 1.0, 0.0, kMoveShare},   {Qt::Key_Down, 1.0, 0.0, -kMoveShare},
};

/// Converts a float picture to sRGB for display. @param light  the picture's transfer curve.
QImage ShownFloats(const KImage &floats, const TransferCurve &light)
{
    KImage pixels;
    floats.Convert(pixels, GFL_RGBA, 32);
    const TransferCurve curve = TransferCurve::Srgb();
    const GFL_BITMAP &bitmap = *pixels.m_bitmap;
    constexpr int kChannels = 4, kColors = 3;
    for (int y = 0; y < bitmap.Height; ++y) {
        auto *row = reinterpret_cast<float *>(bitmap.Data + static_cast<std::size_t>(y) * bitmap.BytesPerLine);
        for (int i = 0; i < bitmap.Width * kChannels; ++i) {
            const int channel = i % kChannels;
            if (channel == kColors) // alpha
                continue;
            float value = row[i] > 0.0F ? std::min(row[i], 1.0F) : 0.0F; // NaN becomes black
            if (!light.IsLinear())
                value = std::min(light.LightTable(channel).At(value), 1.0F);
            row[i] = curve.StoredTable(channel).At(value);
        }
    }
    QImage shown;
    pixels.ToQImage(shown);
    return shown;
}

} // namespace

CompareDialog::CompareDialog(HostApplication *application, const QString &before, const QString &after, QWidget *parent)
    : QDialog(parent),
      m_application(application),
      m_before(new ComparedView(&m_place)),
      m_after(new ComparedView(&m_place)),
      m_thread(QThread::create([this, application, before, after] {
          m_loaded[0] = Load(application, before);
          m_loaded[1] = Load(application, after);
          application->Forget(after); // a later run may replace the file
      }))
{
    setWindowTitle(tr("%1: before and after").arg(QFileInfo(before).fileName()));
    m_before->setObjectName(QStringLiteral("before"));
    m_after->setObjectName(QStringLiteral("after"));
    auto *pictures = new QHBoxLayout;
    pictures->addWidget(Pane(tr("Before"), m_before));
    pictures->addWidget(Pane(tr("After"), m_after));
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(pictures, 1);
    layout->addLayout(Buttons());
    resize(1000, 520);
    restoreGeometry(application->Settings().value(kGeometrySetting).toByteArray());
    for (ComparedView *view : {m_before, m_after})
        view->Show(tr("Reading the picture…"));
    connect(m_thread.get(), &QThread::finished, this, &CompareDialog::ShowLoaded);
    m_after->setFocus();
    m_thread->start();
}

CompareDialog::~CompareDialog()
{
    m_thread->wait();
}

QWidget *CompareDialog::Pane(const QString &title, ComparedView *view) const
{
    auto *pane = new QWidget;
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(new QLabel(title));
    layout->addWidget(view, 1);
    return pane;
}

QHBoxLayout *CompareDialog::Buttons()
{
    auto *zoomIn = new QPushButton(tr("Zoom &in"));
    auto *zoomOut = new QPushButton(tr("Zoom &out"));
    auto *whole = new QPushButton(tr("&Whole picture"));
    auto *close = new QPushButton(tr("&Close"));
    close->setDefault(true);
    connect(zoomIn, &QPushButton::clicked, this, [this] { m_place.ZoomBy(kZoomStep); });
    connect(zoomOut, &QPushButton::clicked, this, [this] { m_place.ZoomBy(1.0 / kZoomStep); });
    connect(whole, &QPushButton::clicked, this, [this] { m_place.ShowAll(); });
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    auto *buttons = new QHBoxLayout;
    for (QPushButton *button : {zoomIn, zoomOut, whole})
        buttons->addWidget(button);
    buttons->addStretch();
    buttons->addWidget(close);
    return buttons;
}

/// Reads the pixels; large pictures are reduced. Floats, which are linear light unless an ICC profile says otherwise,
/// are converted for display; other pictures are shown as stored. Any thread.
CompareDialog::Loaded CompareDialog::Load(HostApplication *application, const QString &path)
{
    Loaded loaded;
    try {
        loaded.problem = application->ProblemOf(path);
        if (!loaded.problem.isEmpty())
            return loaded;
        ImageDef *def = application->ImageOf(path);
        QSize size(def->nCols(), def->nRows());
        if (size.width() > kMaxSide || size.height() > kMaxSide)
            size.scale(kMaxSide, kMaxSide, Qt::KeepAspectRatio);
        size = size.expandedTo(QSize(1, 1));
        const bool isFloat = def->nDepth() > 16;
        KImage *pixels = def->Lock(size.width(), size.height(), /*nativeDepth=*/isFloat);
        const auto unlock = qScopeGuard([&] { def->Unlock(size.width(), size.height(), /*nativeDepth=*/isFloat); });
        PictureFacts facts;
        facts.path = path;
        if (pixels && isFloat)
            loaded.image = ShownFloats(*pixels, LightOf(facts, isFloat, /*rawGamma=*/1.0).curve);
        else if (pixels)
            pixels->ToQImage(loaded.image);
    } catch (...) { // including std::bad_alloc
        loaded.problem = TextOfCurrentException();
    }
    return loaded;
}

void CompareDialog::ShowLoaded()
{
    ComparedView *const views[] = {m_before, m_after};
    for (int i = 0; i < 2; ++i) {
        if (m_loaded[i].image.isNull())
            views[i]->Show(tr("The picture cannot be read: %1").arg(m_loaded[i].problem.simplified()));
        else
            views[i]->Show(m_loaded[i].image);
    }
}

void CompareDialog::keyPressEvent(QKeyEvent *event)
{
    for (const KeyRow &row : kKeys) {
        if (event->key() != row.key)
            continue;
        if (row.zoomBy == 0.0)
            m_place.ShowAll();
        else
            m_place.ZoomBy(row.zoomBy);
        m_place.MoveBy(QPointF(row.moveX, row.moveY) / m_place.Zoom());
        return;
    }
    QDialog::keyPressEvent(event);
}

void CompareDialog::done(int result)
{
    m_application->Settings().setValue(kGeometrySetting, saveGeometry());
    QDialog::done(result);
}
