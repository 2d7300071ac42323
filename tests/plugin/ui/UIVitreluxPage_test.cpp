// Operates the plug-in's wizard page as a user would, and compares its preview with the results of Process.
#include "UIVitreluxPage.h"

#include "Case.h"
#include "ComputePreview.h"
#include "FakeHost.h"
#include "KUI.h"
#include "ModalAnswers.h"
#include "ProfileText.h"
#include "QAnimatedLabel.h"
#include "TestFiles.h"

#include <QtTest>
#include <QtWidgets>

#include <exiv2/exiv2.hpp>

namespace {

const QString kA = "/a.jpg"_s, kB = "/b.jpg"_s, kC = "/c.jpg"_s;

/// Makes an asymmetric picture: a gradient in each direction and a checkerboard pattern.
FakeImageDef *MakePicture(const QString &file, int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb(x * 255 / width, y * 255 / height, (x / 16 + y / 16) % 2 * 255));
    }
    Host().Def(file)->pixels.FromQImage(image);
    return Host().Def(file);
}

void StoreSettings(bool corrections, const QString &profile)
{
    const QString prefix = KVitreluxOne2One().UID() + QLatin1Char('/');
    for (const char *key : {"Disto", "CA", "Falloff"})
        Host().settings.insert(prefix + QLatin1String(key), corrections);
    Host().settings.insert(prefix + "LCPfilename"_s, profile);
}

/// A wizard with the page and an empty page after it.
class TestWizard {
public:
    explicit TestWizard(const QStringList &files = {})
        : page(process.WizardPage()), worker(page->findChild<QThread *>())
    {
        wizard.addPage(page);
        wizard.addPage(new QWizardPage);
        preview = Find<QWidget>("UIVitreluxPreviewClass");
        wizard.resize(760, 560);
        wizard.show();
        process.SetFiles(files);
    }
    template <typename Widget> Widget *Find(const char *name) const
    {
        auto *found = page->findChild<Widget *>(QLatin1String(name));
        if (!found)
            qFatal("no %s", name);
        return found;
    }
    void Click(const char *name) const
    {
        auto *button = Find<QAbstractButton>(name); // a check box is clicked on its mark, not at its center
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(10, button->height() / 2));
    }
    QStringList ChooseProfile(const QString &path) const
    {
        ModalAnswers answers(path);
        Click("toolButtonLensFile");
        return answers.seen;
    }
    /// Returns "isComplete", and whether the wait label is visible and the Next button is enabled.
    QString State() const
    {
        const QVariant complete = preview->property("isComplete");
        return (complete.isValid() ? complete.toString() : "unset"_s)
            + (Find<QWidget>("labelState")->isVisible() ? " waiting"_s : QString())
            + (wizard.button(QWizard::NextButton)->isEnabled() ? " next"_s : QString());
    }
    bool IsUpToDate() const { return State() == QLatin1String("true next"); }
    /// Returns a file's record as "Disto CA Falloff profile".
    QString Record(const QString &file)
    {
        const QDomElement e = process.GetFileXmlParams(file);
        QStringList values;
        for (const char *key : {"Disto", "CA", "Falloff", "LCPfilename"})
            values.append(e.attribute(QLatin1String(key)));
        return values.join(QLatin1Char(' '));
    }
    /// Returns the state of the three correction boxes; "100" means that only the first one is set.
    template <typename Is> QString Boxes(Is is) const
    {
        QString text;
        for (const char *name : {"m_cbDistortion", "m_cbCA", "m_cbVignetting"})
            text += QLatin1Char((Find<QCheckBox>(name)->*is)() ? '1' : '0');
        return text;
    }

    QImage Frame() const { return preview->grab(Find<QWidget>("frame")->geometry()).toImage(); }
    /// Returns which boxes are enabled, then which are checked.
    QString Boxes() const { return Boxes(&QWidget::isEnabled) + Boxes(&QCheckBox::isChecked); }

    KVitreluxOne2One process;
    QWizard wizard; // deletes the page
    QWizardPage *page;
    QThread *worker;
    QWidget *preview;
};

constexpr QImage::Format kFormat = QImage::Format_RGB32;

/// Returns a picture on the window's background color, scaled to fit the frame, without the edges that the frame's
/// border may cover.
QImage Fitted(KImage &image, const QWidget &frame)
{
    QImage picture;
    image.ToQImage(picture);
    picture = picture.scaled(frame.size(), Qt::KeepAspectRatio, Qt::FastTransformation);
    QImage shown(picture.size(), kFormat);
    shown.fill(frame.palette().window().color());
    QPainter(&shown).drawImage(0, 0, picture);
    return shown.copy(shown.rect().adjusted(2, 2, -2, -2));
}

/// Returns the position of @p fitted in the frame's parent.
QRect PlaceOf(const QImage &fitted, const QWidget &frame)
{
    const QSize free = frame.size() - fitted.size();
    return {frame.pos() + QPoint(free.width() / 2, free.height() / 2), fitted.size()};
}

} // namespace

class tst_UIVitreluxPage : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init() { Host().Clear(); }
    void cleanup() { QVERIFY(QApplication::topLevelWidgets().isEmpty()); }

    void listWrapsAround();
    void reducedSize();
    void states();
    void picture();
    void profileChosen();
    void quickToggles();
    void applyToAllAndStore();
    void fittedRecordFindsProfile();
    void unavailablePicture();
    void endsDuringARender();
    void renderThatThrows();
    void animatedLabel();
    void sharedHelpers();

public Q_SLOTS:
    void NoteUrl(const QUrl &url) { m_opened << url.toString(); }

private:
    QString Profile(const ProfileModels &models, int width, int height);

    QTemporaryDir m_dir;
    QString m_whole; // a profile with all models
    QStringList m_opened;
};

QString tst_UIVitreluxPage::Profile(const ProfileModels &models, int width, int height)
{
    const QString name = "%1%2%3.lcp"_s.arg(models.chromatic).arg(models.vignetting).arg(width);
    WriteFile(m_dir.filePath(name), ProfileText(models, width, height));
    return m_dir.filePath(name);
}

void tst_UIVitreluxPage::initTestCase()
{
    KUI::SetUseSystemFileDialog(false);
    qputenv("XDG_CACHE_HOME", m_dir.path().toLocal8Bit()); // where the profile index is stored
    m_whole = Profile({true, true, true}, 400, 300);
}

void tst_UIVitreluxPage::listWrapsAround()
{
    for (const QString &file : {kA, kB, kC})
        MakePicture(file, 40, 30);
    Host().missing = QStringList{"/none.jpg"_s};
    TestWizard desk({kA, kB, kC, "/none.jpg"_s});
    auto *list = desk.Find<QComboBox>("comboBoxImageDef");
    QCOMPARE(list->count(), 3);
    const auto reduced = [](const QString &file) { return Host().Def(file)->reducedSizes.size(); };
    QCOMPARE(reduced(kA) + reduced(kB) + reduced(kC), 1); // only the first image is shown
    QCOMPARE(desk.Find<QWidget>("QToolButton_Prev")->toolTip() + desk.Find<QWidget>("QToolButton_Next")->toolTip(),
             "PrevNext"_s);
    desk.Click("QToolButton_Prev");
    QCOMPARE(list->currentIndex(), 2);
    desk.Click("QToolButton_Next");
    desk.Click("QToolButton_Next");
    QCOMPARE(list->currentIndex(), 1);
    auto *shown = static_cast<KIImageDef *>(list->currentData().value<void *>());
    desk.Click("m_cbVignetting"); // edits only the record of the current image
    for (const QString &file : {kA, kB, kC})
        QCOMPARE(file + desk.Record(file), file + QLatin1String(Host().Def(file) == shown ? "0 0 1 " : "0 0 0 "));
}

void tst_UIVitreluxPage::reducedSize()
{
    const std::pair<QSize, QSize> rows[] = {{{800, 600}, {800, 600}}, // small enough
                                            {{6000, 4000}, {1024, 682}},
                                            {{4000, 6000}, {682, 1024}},
                                            {{1, 1}, {1, 1}},
                                            {{1, 3000}, {1, 1024}}}; // the width truncates to 0
    for (const auto &[whole, reduced] : rows) {
        const Case named(whole);
        Host().Clear();
        FakeImageDef *def = Host().Def(kA);
        def->pixels.AllocBitmap(whole.width(), whole.height(), GFL_GREY, 8, /*clear=*/true, nullptr, 0);
        TestWizard desk({kA});
        QTRY_VERIFY(desk.IsUpToDate());
        QCOMPARE(def->reducedSizes.value(0), reduced);
        QCOMPARE(def->locks, 0);
    }
}

void tst_UIVitreluxPage::states()
{
    MakePicture(kA, 400, 300);
    TestWizard desk;
    QCOMPARE(desk.State(), "unset waiting next"_s);
    QCOMPARE(desk.page->title() + desk.page->subTitle(), desk.process.Name() + desk.process.Comment());
    QString texts; // those that the user sees
    for (const QWidget *widget : desk.page->findChildren<QWidget *>())
        if (widget->isVisible() && !widget->property("text").toString().isEmpty())
            texts += widget->property("text").toString() + QLatin1Char('|');
    QCOMPARE(
        texts,
        "Apply to all images|Lens profile|...|Geometric distortion|Chromatic aberration|Vignetting|Split preview|"_s);
    QSignalSpy changes(desk.page, &QWizardPage::completeChanged);
    desk.process.SetFiles({kA});
    QCOMPARE(changes.count(), 2); // one for the old job, one for the render; setting the boxes adds none
    QCOMPARE(desk.State(), "false waiting"_s);
    QCOMPARE(desk.Boxes(&QWidget::isEnabled), "111"_s);
    desk.wizard.resize(900, 700);
    const auto center = [&](const char *name) { return desk.Find<QWidget>(name)->geometry().center(); };
    QVERIFY((center("labelState") - center("frame")).manhattanLength() <= 2);
    QCOMPARE(desk.Find<QWidget>("labelState")->size(), QSize(48, 48));
    QTRY_COMPARE(desk.State(), "true next"_s);

    QSignalSpy renders(desk.worker, &QThread::started);
    desk.wizard.resize(760, 560);
    desk.Click("m_cbPreview");
    QTest::qWait(50);
    QCOMPARE(renders.count(), 0); // neither resizing nor the split view needs a render
    desk.Click("m_cbCA");
    desk.process.SetFiles({}); // an empty job, which the end of the previous render must not complete
    for (const char *name : {"m_cbDistortion", "pushButtonApplyAll", "QToolButton_Next", "toolButtonLensFile"})
        desk.Click(name);
    desk.worker->wait();
    QApplication::processEvents();
    QCOMPARE(desk.State(), "unset waiting next"_s);
}

void tst_UIVitreluxPage::picture()
{
    const std::tuple<QSize, QString, bool> rows[] = {
        {{400, 300}, "100"_s, false}, {{300, 401}, "010"_s, true}, {{2048, 1536}, "001"_s, false}}; // reduced by half
    for (const auto &[size, boxes, split] : rows) { // the boxes are distortion, color and vignetting
        const Case named(size, "boxes", boxes, "split", split);
        Host().Clear();
        FakeImageDef *def = MakePicture(kA, size.width(), size.height());
        KVitreluxOne2One::Params params;
        params.disto = boxes[0] == QLatin1Char('1');
        params.ca = boxes[1] == QLatin1Char('1');
        params.falloff = boxes[2] == QLatin1Char('1');
        params.lcpFilename =
            Profile({true, true, true}, qMax(size.width(), size.height()), qMin(size.width(), size.height()));
        TestWizard desk({kA});
        desk.ChooseProfile(params.lcpFilename);
        const char *box = params.disto ? "m_cbDistortion" : params.ca ? "m_cbCA" : "m_cbVignetting";
        desk.Click(box);
        if (split)
            QTest::keyClick(desk.Find<QCheckBox>("m_cbPreview"), Qt::Key_Space);
        QCOMPARE(desk.Record(kA).remove(QLatin1Char(' ')), boxes + params.lcpFilename);

        const QWidget *frame = desk.Find<QWidget>("frame");
        const QSize reducedSize = def->reducedSizes.value(0);
        params.scale = float(reducedSize.width()) / float(size.width());
        KImage reduced, work;
        def->pixels.Resize(reduced, reducedSize.width(), reducedSize.height());
        reduced.Convert(work, GFL_RGBA, 32);
        const QImage source = Fitted(work, *frame);
        desk.process.Process(qMakePair(static_cast<KIImageDef *>(def), &work), &params);
        QImage expected = Fitted(work, *frame);
        QVERIFY(expected != source);
        if (split)
            QPainter(&expected).drawImage(0, 0, source, 0, 0, source.width() / 2);
        const auto shown = [&] {
            return desk.preview->grab(PlaceOf(source, *frame)).toImage().convertToFormat(kFormat);
        };
        QTRY_VERIFY(desk.IsUpToDate());
        QCOMPARE(shown(), expected);
        desk.Click(box); // during the render, the uncorrected picture is shown; the wait label hides its center
        const QRect corner(0, 0, source.width() / 4, source.height() / 4);
        QCOMPARE(shown().copy(corner), source.copy(corner));
    }
}

void tst_UIVitreluxPage::profileChosen()
{
    const struct {
        const char *name;
        QString typed, enabled, checked; // states of the boxes, which were all checked before
    } rows[] = {{"all models", m_whole, "111"_s, "011"_s},
                {"distortion only", Profile({}, 400, 300), "100"_s, "000"_s},
                {"no vignette", Profile({true, true, false}, 400, 300), "110"_s, "010"_s},
                {"text file", WriteFile(m_dir.filePath("text.lcp"_s), "no profile"), "000"_s, "000"_s},
                {"canceled", QString(), "111"_s, "111"_s}};
    for (const auto &[name, typed, enabled, checked] : rows) {
        const Case named(name);
        Host().Clear();
        const QString before = "/before.lcp"_s, all = "111"_s;
        StoreSettings(true, before);
        for (const QString &file : {kA, kB})
            MakePicture(file, 400, 300);
        TestWizard desk({kA, kB});
        const auto *list = desk.Find<QComboBox>("comboBoxImageDef");
        const QString file = QLatin1Char('/') + list->currentText(), other = file == kA ? kB : kA;
        QStringList windows = {"Select lens camera profile|Profile (*.lcp)|16"_s}; // Qt's own dialog
        if (enabled == QLatin1String("000"))
            windows.append("Non supported file format"_s);
        QCOMPARE(desk.ChooseProfile(typed), windows);
        const QString profile = typed.isEmpty() ? before : typed;
        QCOMPARE(desk.Boxes(), enabled + checked);
        QCOMPARE(desk.Record(file).remove(QLatin1Char(' ')), checked + profile);
        QCOMPARE(desk.Find<QLineEdit>("lineEditLensFile")->text(), profile);
        QTRY_VERIFY(desk.IsUpToDate());

        desk.Click("QToolButton_Next"); // a profile locks only the boxes of its picture
        QCOMPARE(desk.Boxes(), all + all);
        desk.Click("QToolButton_Next");
        QCOMPARE(desk.Boxes(), enabled + checked);
        desk.process.SetFiles({other}); // a previous job's profile locks no boxes
        QCOMPARE(desk.Boxes(), all + all);
        StoreSettings(true, profile);
        desk.process.SetFiles({file}); // checked boxes are never locked
        QCOMPARE(desk.Boxes(), all + all);

        StoreSettings(false, profile);
        desk.process.SetFiles({file});
        desk.ChooseProfile(m_whole); // unlocks all boxes and checks none
        QCOMPARE(desk.Boxes(), all + "000"_s);
    }
}

void tst_UIVitreluxPage::quickToggles()
{
    MakePicture(kA, 1000, 750);
    TestWizard desk({kA});
    desk.ChooseProfile(m_whole);
    auto *box = desk.Find<QCheckBox>("m_cbDistortion");
    QImage pictures[2]; // without and with the correction, after single clicks
    for (const int toggles : {1, 1, 3, 4, 5, 102, 103, 10000, 1}) {
        const QByteArray name = QByteArray::number(toggles) + " toggles: ";
        QTRY_VERIFY2(desk.IsUpToDate(), name);
        QSignalSpy renders(desk.worker, &QThread::started), changes(desk.page, &QWizardPage::completeChanged);
        for (int i = 0; i < toggles; ++i) { // no event loop runs, so the page isn't notified when a render ends
            box->click();
            if (toggles == 5)
                desk.worker->wait(); // the next render starts before the page is notified of the end of this one
        }
        QVERIFY2(!desk.State().contains(QLatin1String("next")), name);
        QTRY_VERIFY2(desk.IsUpToDate(), name);
        QTest::qWait(20);
        QVERIFY2(renders.count() <= toggles, name + QByteArray::number(renders.count()));
        // Requests don't pile up.
        QVERIFY2(changes.count() <= toggles + renders.count(), name + QByteArray::number(changes.count()));
        const bool on = box->isChecked();
        QVERIFY2(desk.Record(kA).startsWith(QLatin1Char('1')) == on, name);
        const QImage shown = desk.Frame();
        if (pictures[on].isNull())
            pictures[on] = shown;
        QVERIFY2(shown == pictures[on], name);
    }
    QVERIFY(pictures[0] != pictures[1]);
}

void tst_UIVitreluxPage::applyToAllAndStore()
{
    for (const QString &file : {kA, kB})
        MakePicture(file, 400, 300);
    TestWizard desk({kA, kB});
    desk.ChooseProfile(m_whole);
    desk.Click("m_cbCA");
    desk.Click("pushButtonApplyAll");
    desk.Click("QToolButton_Next");
    QCOMPARE(desk.Boxes(&QCheckBox::isChecked), "010"_s);
    QCOMPARE(desk.Find<QLineEdit>("lineEditLensFile")->text(), m_whole);
    const auto *path = desk.Find<QLineEdit>("lineEditLensPath"); // works although it is hidden
    QCOMPARE(path->text(), "C:/ProgramData/Adobe/CameraRaw/LensProfiles/1.0/"_s);
    const QString before = path->text();
    {
        ModalAnswers canceled({});
        desk.Find<QAbstractButton>("toolButtonLensPath")->click();
        QCOMPARE(path->text(), before);
    }
    ModalAnswers answers(m_dir.path());
    desk.Find<QAbstractButton>("toolButtonLensPath")->click();
    QCOMPARE(path->text(), m_dir.path());
    QCOMPARE(answers.seen,
             QStringList("Select lens camera profiles Database directory|All Files (*)|17"_s)); // only folders
    Host().calls.clear();
    desk.process.OnValidatePage();
    QCOMPARE(Host().calls.join(QLatin1Char(' ')), "set Disto set CA set Falloff set LCPfilename set LensPath"_s);
    for (const QString &file : {kA, kB, kC}) // the last is not in the job
        QCOMPARE(file + desk.Record(file), file + "0 1 0 "_s + m_whole);
    QCOMPARE(KVitreluxOne2One().LensPath(), m_dir.path());
}

// The profile found by a fitted render is shown but not stored as a choice. A chosen profile may use any XML form.
void tst_UIVitreluxPage::fittedRecordFindsProfile()
{
    using namespace profiletext;
    const QTemporaryDir profiles;
    const QByteArray text = profiletext::Profile(Entry(
        Size("400", "300") + Metadata("24", "3", "2")
        + Resource("PerspectiveModel", Place("0.8", "0.8", "0.5", "0.5") + Value("RadialDistortParam1", "-0.3"))));
    const QString found = WriteFile(profiles.filePath("any name.lcp"_s), text);
    const QString photo = m_dir.filePath("photo.jpg"_s), other = m_dir.filePath("other.jpg"_s);
    for (const QString &file : {photo, other}) {
        WriteJpeg(file, 400, 300);
        MakePicture(file, 400, 300);
        const auto image = Exiv2::ImageFactory::open(file.toStdString());
        Exiv2::ExifData &exif = image->exifData();
        exif["Exif.Image.Make"] = "Maker";
        exif["Exif.Image.Model"] = "MODEL 7";
        exif["Exif.Photo.LensModel"] = file == photo ? "Test lens 24mm F2.8" : "Strange lens 99mm F1.1";
        exif["Exif.Photo.FocalLength"] = "24/1";
        exif["Exif.Photo.FNumber"] = "28/10";
        image->writeMetadata();
    }
    TestWizard desk;
    desk.process.SetLensPath(profiles.path());
    desk.process.setProperty("Correction", "fitted"_s);
    desk.process.SetFiles({photo});
    const auto *row = desk.Find<QLineEdit>("lineEditLensFile");
    QTRY_VERIFY(desk.IsUpToDate());
    const QImage uncorrected = desk.Frame();
    desk.Click("m_cbDistortion");
    QTRY_VERIFY(desk.IsUpToDate());
    QCOMPARE(row->text() + row->placeholderText(), "Found: any name.lcp"_s);
    QCOMPARE(row->toolTip(), found + "\n24 mm f/2.8 2 m 100 %"_s);
    QVERIFY(desk.Frame() != uncorrected);
    desk.Click("pushButtonApplyAll");
    desk.process.OnValidatePage(); // stores the defaults for later pictures
    QCOMPARE(desk.Record(photo) + desk.Record(other), "1 0 0 1 0 0 "_s);

    desk.process.SetFiles({other});
    QCOMPARE(row->placeholderText(), QString()); // not that of the previous picture
    QTRY_VERIFY(desk.IsUpToDate());
    const QString why =
        "no profile for the lens \"Strange lens 99mm F1.1\"; lensfun doesn't know the camera \"MODEL 7\""_s;
    QCOMPARE(row->placeholderText() + row->toolTip(), "None found: "_s + why + why);
    QVERIFY(desk.Frame() == uncorrected);

    WriteFile(found, R"(<r:RDF xmlns:r="http://www.w3.org/1999/02/22-rdf-syntax-ns#"
        xmlns:s="http://ns.adobe.com/photoshop/1.0/camera-profile" xmlns:p="http://ns.adobe.com/photoshop/1.0/">
        <r:Description><p:CameraProfiles><r:Seq><r:li><r:Description s:FocalLength="24"
        s:Make="Maker" s:Model="MODEL 7" s:ImageWidth="400" s:ImageLength="300" s:SensorFormatFactor="1.5">
        <s:PerspectiveModel s:FocalLengthX="0.8" s:RadialDistortParam1="-0.3"/></r:Description></r:li></r:Seq>
        </p:CameraProfiles></r:Description></r:RDF>)");
    QCOMPARE(desk.ChooseProfile(found).size(), 1); // no warning
    QCOMPARE(desk.Boxes(), "100100"_s);
    QCOMPARE(desk.Record(other), "1 0 0 "_s + found);
    QTRY_VERIFY(desk.IsUpToDate());
    const QImage filled = desk.Frame();
    QVERIFY(filled != uncorrected);
    StoreSettings(true, found);
    Host().settings.insert(desk.process.UID() + "/Framing"_s, "all"_s);
    desk.process.SetFiles({other});
    desk.Click("m_cbCA");
    desk.Click("m_cbVignetting");
    QTRY_VERIFY(desk.IsUpToDate());
    QVERIFY2(desk.Frame() != filled && desk.Frame() != uncorrected, "the preview must show the framing");
    row->actions().first()->trigger();
    QCOMPARE(desk.Record(other), "1 0 0 "_s);
    QTRY_VERIFY(row->placeholderText().startsWith("None found: "_s) && !row->actions().first()->isVisible());

    const auto image = Exiv2::ImageFactory::open(other.toStdString());
    image->readMetadata();
    for (const char *key : {"AlreadyApplied", "LensProfileEnable"})
        image->xmpData()[std::string("Xmp.crs.") + key] = "True";
    image->exifData()["Exif.Photo.LensModel"] = "Test lens 24mm F2.8";
    image->writeMetadata();
    StoreSettings(true, QString());
    desk.process.SetFiles({other});
    QTRY_VERIFY2(row->placeholderText().startsWith("Not corrected: distortion, vignetting: corrected before"_s),
                 qPrintable(row->placeholderText()));
}

void tst_UIVitreluxPage::unavailablePicture()
{
    for (const QString &file : {kB, kC}) { // kB was deleted after it was described; kC has no pixels
        const Case named(file);
        MakePicture(kA, 400, 300);
        MakePicture(kB, 40, 30)->gone = true;
        TestWizard desk({kA});
        QTRY_VERIFY(desk.IsUpToDate());
        desk.process.SetFiles({file});
        QCOMPARE(desk.State(), "unset waiting next"_s);
        QCOMPARE(desk.Find<QComboBox>("comboBoxImageDef")->currentText(), file.mid(1));
        desk.Click("m_cbCA"); // there is no current record to change
        QCOMPARE(desk.Record(file), "0 0 0 "_s);
        desk.process.SetFiles({kA});
        QTRY_VERIFY(desk.IsUpToDate());
    }
}

void tst_UIVitreluxPage::endsDuringARender()
{
    MakePicture(kA, 1000, 1000);
    for (int i = 0; i < 20; ++i) {
        TestWizard desk({kA});
        desk.Click("m_cbVignetting");
        QTest::qWait(i % 4);
        desk.Click("m_cbCA");
        if (i % 2)
            delete desk.page;
        desk.process.SetFiles({kA});
        QVERIFY2(desk.process.WizardPage(), QByteArray::number(i));
    }
}

void tst_UIVitreluxPage::renderThatThrows()
{
    KVitreluxOne2One process;
    ComputePreview worker(&process, nullptr);
    FakeImageDef *def = MakePicture(kA, 400, 300);
    KVitreluxOne2One::Params params;
    params.disto = true;
    params.lcpFilename = m_whole;
    KImage empty; // makes every render throw
    QImage shown;
    for (KImage *image : {&empty, &def->pixels}) {
        worker.setImage(def, image, &params);
        worker.start();
        const char *name = image == &empty ? "empty image" : "picture";
        QVERIFY2(worker.wait(30000) && worker.IsCurrent(), name);
        worker.getPreview(shown);
        QVERIFY2(shown.isNull() == (image == &empty), name);
    }
    worker.start(); // the worker's destructor waits
}

void tst_UIVitreluxPage::animatedLabel()
{
    QStringList files;
    for (int width = 5; width < 8; ++width) {
        files.append(m_dir.filePath("%1.png"_s.arg(width)));
        QVERIFY(QImage(width, 9, QImage::Format_RGB32).save(files.last()));
    }
    QAnimatedLabel label(nullptr);
    const auto width = [&] { return label.pixmap() ? label.pixmap()->width() : 0; };
    label.setSequence({files[0], files[1]}, 20);
    for (const int next : {5, 6, 5})
        QTRY_COMPARE(width(), next);
    QCOMPARE(label.minimumSize(), QSize(5, 9));
    label.setSequence({}, 20); // stops
    label.setSequence({files[2]}, 20);
    QTRY_COMPARE(width(), 7);
    QCOMPARE(label.minimumSize(), QSize(7, 9));
}

void tst_UIVitreluxPage::sharedHelpers()
{
    QDesktopServices::setUrlHandler("file"_s, this, "NoteUrl");
    const auto url = [](const char *path) { return QUrl(QLatin1String("file:///") + QLatin1String(path)); };
    KUI::SelectInFileBrowser(nullptr, {url("a/1.jpg"), url("a/2.jpg"), url("b/3.jpg")});
    QDesktopServices::unsetUrlHandler("file"_s);
    m_opened.sort();
    QCOMPARE(m_opened, QStringList({"file:///a/"_s, "file:///b/"_s})); // each folder once
    QTest::ignoreMessage(QtCriticalMsg, "Cannot load closure-library.rcc file needed by KUI");
    KUI::loadJSLibraries();
}

int main(int argc, char **argv)
{
    FakeHost host(argc, argv);
    KUI::init(nullptr);
    tst_UIVitreluxPage test;
    const int failures = QTest::qExec(&test, argc, argv);
    host.Clear();
    KUI::exit();
    return failures;
}

#include "UIVitreluxPage_test.moc"
