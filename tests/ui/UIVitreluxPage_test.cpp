// The plug-in's wizard page, driven as a user does, against runs of the process itself.
#include "UIVitreluxPage.h"

#include "ComputePreview.h"
#include "FakeHost.h"
#include "KUI.h"
#include "QAnimatedLabel.h"
#include "TestFiles.h"

#include <QtTest>
#include <QtWidgets>

namespace {

const QString kA = QStringLiteral("/a.jpg"), kB = QStringLiteral("/b.jpg"), kC = QStringLiteral("/c.jpg");

FakeHost &Host()
{
    return *static_cast<FakeHost *>(QCoreApplication::instance());
}

/// A picture without any symmetry: a gradient in each direction and a checked pattern.
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

/// Answers the modal windows that come up: a file dialog by typing a path, or Escape for none; a box by Enter.
class ModalAnswers : public QObject {
public:
    explicit ModalAnswers(const QString &typed) : m_typed(typed) { startTimer(5); }
    QStringList seen; // titles of file dialogs, texts of boxes

protected:
    void timerEvent(QTimerEvent *) override
    {
        QWidget *window = QApplication::activeModalWidget();
        if (auto *box = qobject_cast<QMessageBox *>(window)) {
            seen.append(box->text());
            QTest::keyClick(box, Qt::Key_Enter);
        } else if (window) {
            seen.append(window->windowTitle());
            auto *edit = window->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
            edit->clear();
            QTest::keyClicks(edit, m_typed);
            QTest::keyClick(edit, m_typed.isEmpty() ? Qt::Key_Escape : Qt::Key_Enter);
        }
    }

private:
    QString m_typed;
};

/// A wizard with the page in it and one behind it.
class Desk {
public:
    explicit Desk(const QStringList &files = {}) : page(process.WizardPage()), worker(page->findChild<QThread *>())
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
        auto *button = Find<QAbstractButton>(name); // a box is clicked on its mark, not in its middle
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(10, button->height() / 2));
    }
    QStringList ChooseProfile(const QString &path) const
    {
        ModalAnswers answers(path);
        Click("toolButtonLensFile");
        return answers.seen;
    }
    /// "isComplete", the wait label, and what the wizard's Next says to that.
    QString State() const
    {
        const QVariant complete = preview->property("isComplete");
        return (complete.isValid() ? complete.toString() : QStringLiteral("unset"))
            + (Find<QWidget>("labelState")->isVisible() ? QStringLiteral(" waiting") : QString())
            + (wizard.button(QWizard::NextButton)->isEnabled() ? QStringLiteral(" next") : QString());
    }
    bool IsUpToDate() const { return State() == QLatin1String("true next"); }
    /// "Disto CA Falloff profile" of a file's record.
    QString Record(const QString &file)
    {
        const QDomElement e = process.GetFileXmlParams(file);
        QStringList values;
        for (const char *key : {"Disto", "CA", "Falloff", "LCPfilename"})
            values.append(e.attribute(QLatin1String(key)));
        return values.join(QLatin1Char(' '));
    }
    /// "100": of the three correction boxes, the first is.
    template <typename Is> QString Boxes(Is is) const
    {
        QString text;
        for (const char *name : {"m_cbDistortion", "m_cbCA", "m_cbVignetting"})
            text += QLatin1Char((Find<QCheckBox>(name)->*is)() ? '1' : '0');
        return text;
    }

    KVitreluxOne2One process;
    QWizard wizard; // deletes the page
    QWizardPage *page;
    QThread *worker;
    QWidget *preview;
};

/// What the frame holds, without its border.
QImage Inside(const QImage &image)
{
    return image.convertToFormat(QImage::Format_RGB32).copy(image.rect().adjusted(2, 2, -2, -2));
}

/// A picture as the frame has to show it.
QImage InFrame(KImage &image, const QWidget &frame)
{
    QImage picture, shown(frame.size(), QImage::Format_RGB32);
    image.ToQImage(picture);
    picture = picture.scaled(frame.size(), Qt::KeepAspectRatio, Qt::FastTransformation);
    shown.fill(frame.palette().window().color());
    QPainter(&shown).drawImage((shown.width() - picture.width()) / 2, (shown.height() - picture.height()) / 2, picture);
    return Inside(shown);
}

} // namespace

class tst_UIVitreluxPage : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init() { Host().Clear(); }
    void cleanup() { QVERIFY(QApplication::topLevelWidgets().isEmpty()); }

    void listWalksAround();
    void reducedSize();
    void states();
    void picture();
    void profileChosen();
    void quickToggles();
    void applyToAllAndStore();
    void pictureGone();
    void endsDuringARender();
    void renderThatThrows();
    void animatedLabel();

private:
    void CheckPicture(QSize size, bool split);
    QString Profile(const ProfileModels &models, int width, int height);

    QTemporaryDir m_dir;
    QString m_whole; // a profile with all models
};

QString tst_UIVitreluxPage::Profile(const ProfileModels &models, int width, int height)
{
    const QString name = QStringLiteral("%1%2%3.lcp").arg(models.chromatic).arg(models.vignetting).arg(width);
    WriteFile(m_dir.filePath(name), ProfileText(models, width, height));
    return m_dir.filePath(name);
}

void tst_UIVitreluxPage::initTestCase()
{
    KUI::SetUseSystemFileDialog(false);
    m_whole = Profile({true, true, true}, 400, 300);
}

void tst_UIVitreluxPage::listWalksAround()
{
    for (const QString &file : {kA, kB, kC})
        MakePicture(file, 40, 30);
    Desk desk({kA, kB, kC});
    auto *list = desk.Find<QComboBox>("comboBoxImageDef");
    QCOMPARE(list->count(), 3);
    const auto lent = [](const QString &file) { return Host().Def(file)->reducedSizes.size(); };
    QCOMPARE(lent(kA) + lent(kB) + lent(kC), 1); // only the first image is shown
    desk.Click("QToolButton_Prev");
    QCOMPARE(list->currentIndex(), 2);
    desk.Click("QToolButton_Next");
    desk.Click("QToolButton_Next");
    QCOMPARE(list->currentIndex(), 1);
    auto *shown = static_cast<KIImageDef *>(list->currentData().value<void *>());
    desk.Click("m_cbVignetting"); // edits the record of the image in the list's row, no other
    for (const QString &file : {kA, kB, kC})
        QCOMPARE(desk.Record(file), Host().Def(file) == shown ? QStringLiteral("0 0 1 ") : QStringLiteral("0 0 0 "));
}

void tst_UIVitreluxPage::reducedSize()
{
    // Small enough; landscape; portrait; one pixel; a line, whose width truncates to 0.
    const std::pair<QSize, QSize> rows[] = {{{800, 600}, {800, 600}},
                                            {{6000, 4000}, {1024, 682}},
                                            {{4000, 6000}, {682, 1024}},
                                            {{1, 1}, {1, 1}},
                                            {{1, 3000}, {1, 1024}}};
    for (const auto &[whole, reduced] : rows) {
        Host().Clear();
        FakeImageDef *def = Host().Def(kA);
        def->pixels.AllocBitmap(whole.width(), whole.height(), GFL_GREY, 8, /*clear=*/true, nullptr, 0);
        Desk desk({kA});
        QTRY_VERIFY(desk.IsUpToDate());
        QCOMPARE(def->reducedSizes.value(0), reduced);
        QCOMPARE(def->locks, 0);
    }
}

void tst_UIVitreluxPage::states()
{
    MakePicture(kA, 400, 300);
    Desk desk;
    QCOMPARE(desk.State(), QStringLiteral("unset waiting next"));
    QSignalSpy told(desk.page, &QWizardPage::completeChanged);
    desk.process.SetFiles({kA});
    QCOMPARE(told.count(), 2); // the old job's end and one render, though the boxes change
    QCOMPARE(desk.State(), QStringLiteral("false waiting"));
    QCOMPARE(desk.Boxes(&QWidget::isEnabled), QStringLiteral("111"));
    desk.wizard.resize(900, 700);
    const auto centre = [&](const char *name) { return desk.Find<QWidget>(name)->geometry().center(); };
    QVERIFY((centre("labelState") - centre("frame")).manhattanLength() <= 2);
    QTRY_COMPARE(desk.State(), QStringLiteral("true next"));

    QSignalSpy renders(desk.worker, &QThread::started);
    desk.wizard.resize(760, 560);
    desk.Click("m_cbPreview");
    QTest::qWait(50);
    QCOMPARE(renders.count(), 0); // neither a resize nor the split needs a render
    desk.process.SetFiles({});    // a job of no pictures
    for (const char *name : {"m_cbDistortion", "pushButtonApplyAll", "QToolButton_Next", "toolButtonLensFile"})
        desk.Click(name);
    QCOMPARE(desk.State(), QStringLiteral("unset waiting next"));
}

void tst_UIVitreluxPage::picture()
{
    const std::pair<QSize, bool> rows[] = {
        {{400, 300}, false}, {{300, 401}, true}, {{2048, 1536}, false}}; // the last is reduced to a half
    for (const auto &[size, split] : rows) {
        Host().Clear();
        CheckPicture(size, split);
    }
}

void tst_UIVitreluxPage::CheckPicture(QSize size, bool split)
{
    FakeImageDef *def = MakePicture(kA, size.width(), size.height());
    KVitreluxOne2One::Params params;
    params.disto = true;
    params.lcpFilename = Profile({}, qMax(size.width(), size.height()), qMin(size.width(), size.height()));
    Desk desk({kA});
    desk.ChooseProfile(params.lcpFilename);
    desk.Click("m_cbDistortion");
    if (split)
        QTest::keyClick(desk.Find<QCheckBox>("m_cbPreview"), Qt::Key_Space);
    QCOMPARE(desk.Record(kA), QStringLiteral("1 0 0 ") + params.lcpFilename);

    const QWidget *frame = desk.Find<QWidget>("frame");
    const QSize lent = def->reducedSizes.value(0);
    params.scale = float(lent.width()) / float(size.width());
    KImage reduced, work;
    def->pixels.Resize(reduced, lent.width(), lent.height());
    reduced.Convert(work, GFL_RGBA, 32);
    const QImage source = InFrame(work, *frame);
    desk.process.Process(qMakePair(static_cast<KIImageDef *>(def), &work), &params);
    QImage expected = InFrame(work, *frame);
    QVERIFY(expected != source);
    if (split)
        QPainter(&expected).drawImage(0, 0, source, 0, 0, frame->width() / 2 - 2);
    const auto shown = [&] { return Inside(desk.preview->grab(frame->geometry()).toImage()); };
    QTRY_VERIFY(desk.IsUpToDate());
    QCOMPARE(shown(), expected);
    desk.Click("m_cbDistortion"); // only the uncorrected picture while a render runs; the wait label hides its middle
    QCOMPARE(shown().copy(0, 0, 100, 400), source.copy(0, 0, 100, 400));
}

void tst_UIVitreluxPage::profileChosen()
{
    const QString text = m_dir.filePath(QStringLiteral("text.lcp"));
    WriteFile(text, "no profile");
    const struct {
        QString typed;
        const char *enabled, *checked; // of the boxes; all three were checked
    } rows[] = {{m_whole, "111", "011"},
                {Profile({}, 400, 300), "100", "000"},
                {Profile({true, true, false}, 400, 300), "110", "010"}, // no vignette
                {text, "000", "000"},
                {QString(), "111", "111"}}; // cancelled
    const QString prefix = KVitreluxOne2One().UID() + QLatin1Char('/'), before = QStringLiteral("/before.lcp");
    for (const auto &row : rows) {
        Host().Clear();
        for (const char *key : {"Disto", "CA", "Falloff"})
            Host().settings.insert(prefix + QLatin1String(key), true);
        Host().settings.insert(prefix + QStringLiteral("LCPfilename"), before);
        MakePicture(kA, 400, 300);
        Desk desk({kA});
        QStringList windows = {QStringLiteral("Select lens camera profile")};
        if (row.typed == text)
            windows.append(QStringLiteral("Non supported file format"));
        QCOMPARE(desk.ChooseProfile(row.typed), windows);
        const QString profile = row.typed.isEmpty() ? before : row.typed, checked = QString::fromLatin1(row.checked);
        QCOMPARE(desk.Boxes(&QWidget::isEnabled), QString::fromLatin1(row.enabled));
        QCOMPARE(desk.Boxes(&QCheckBox::isChecked), checked);
        QCOMPARE(desk.Record(kA).remove(QLatin1Char(' ')), checked + profile);
        QCOMPARE(desk.Find<QLineEdit>("lineEditLensFile")->text(), profile);
        QTRY_VERIFY(desk.IsUpToDate());
        desk.ChooseProfile(m_whole); // all can be switched again, and nothing that was off is on
        QCOMPARE(desk.Boxes(&QWidget::isEnabled), QStringLiteral("111"));
        QCOMPARE(desk.Boxes(&QCheckBox::isChecked), QLatin1Char('0') + checked.mid(1));
    }
}

void tst_UIVitreluxPage::quickToggles()
{
    MakePicture(kA, 1000, 750);
    Desk desk({kA});
    desk.ChooseProfile(m_whole);
    auto *box = desk.Find<QCheckBox>("m_cbDistortion");
    QImage pictures[2]; // without and with the correction, by single clicks
    for (const int toggles : {1, 1, 3, 4, 5, 102, 103, 10000, 1}) {
        QTRY_VERIFY(desk.IsUpToDate());
        QSignalSpy renders(desk.worker, &QThread::started), told(desk.page, &QWizardPage::completeChanged);
        for (int i = 0; i < toggles; ++i) { // without the event loop: no end of a render is noticed meanwhile
            box->click();
            if (toggles == 5)
                desk.worker->wait(); // the next render begins before the page hears that this one ended
        }
        QVERIFY(!desk.State().contains(QLatin1String("next")));
        QTRY_VERIFY(desk.IsUpToDate());
        QTest::qWait(20);
        QVERIFY2(renders.count() <= toggles, QByteArray::number(renders.count()));
        QVERIFY2(told.count() <= toggles + renders.count(), QByteArray::number(told.count())); // nothing piled up
        const bool on = box->isChecked();
        QCOMPARE(desk.Record(kA).startsWith(QLatin1Char('1')), on);
        const QImage shown = desk.preview->grab(desk.Find<QWidget>("frame")->geometry()).toImage();
        if (pictures[on].isNull())
            pictures[on] = shown;
        QCOMPARE(shown, pictures[on]);
    }
    QVERIFY(pictures[0] != pictures[1]);
}

void tst_UIVitreluxPage::applyToAllAndStore()
{
    for (const QString &file : {kA, kB})
        MakePicture(file, 400, 300);
    Desk desk({kA, kB});
    desk.ChooseProfile(m_whole);
    desk.Click("m_cbCA");
    desk.Click("pushButtonApplyAll");
    desk.Click("QToolButton_Next");
    QCOMPARE(desk.Boxes(&QCheckBox::isChecked), QStringLiteral("010"));
    QCOMPARE(desk.Find<QLineEdit>("lineEditLensFile")->text(), m_whole);
    ModalAnswers answers(m_dir.path());
    desk.Find<QAbstractButton>("toolButtonLensPath")->click(); // hidden, but alive
    QCOMPARE(answers.seen, QStringList(QStringLiteral("Select lens camera profiles Database directory")));
    desk.process.OnValidatePage();
    for (const QString &file : {kA, kB, kC}) // the last is not in the job
        QCOMPARE(desk.Record(file), QStringLiteral("0 1 0 ") + m_whole);
    QCOMPARE(KVitreluxOne2One().LensPath(), m_dir.path());
}

void tst_UIVitreluxPage::pictureGone()
{
    MakePicture(kA, 400, 300);
    MakePicture(kB, 40, 30)->gone = true;
    Desk desk({kA});
    for (const QString &file : {kB, kC}) { // gone since it was described; never a picture, of size 0
        QTRY_VERIFY(desk.IsUpToDate());
        desk.process.SetFiles({file});
        QCOMPARE(desk.State(), QStringLiteral("unset waiting next"));
        QCOMPARE(desk.Find<QComboBox>("comboBoxImageDef")->currentText(), file.mid(1));
        desk.Click("m_cbCA"); // there is no record on show that it could change
        QCOMPARE(desk.Record(file), QStringLiteral("0 0 0 "));
        desk.process.SetFiles({kA});
    }
    QTRY_VERIFY(desk.IsUpToDate());
}

void tst_UIVitreluxPage::endsDuringARender()
{
    MakePicture(kA, 1000, 1000);
    for (int i = 0; i < 20; ++i) {
        Desk desk({kA});
        desk.Click("m_cbVignetting");
        QTest::qWait(i % 4);
        desk.Click("m_cbCA");
        if (i % 2)
            delete desk.page;
        desk.process.SetFiles({kA});
        QVERIFY(desk.process.WizardPage());
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
    KImage empty; // which no render can begin with
    QImage shown;
    for (KImage *image : {&empty, &def->pixels}) {
        worker.setImage(def, image, &params);
        worker.start();
        QVERIFY(worker.wait(30000) && worker.IsCurrent());
        worker.getPreview(shown);
        QCOMPARE(shown.isNull(), image == &empty);
    }
}

void tst_UIVitreluxPage::animatedLabel()
{
    QStringList files;
    for (int width = 5; width < 8; ++width) {
        files.append(m_dir.filePath(QStringLiteral("%1.png").arg(width)));
        QVERIFY(QImage(width, 9, QImage::Format_RGB32).save(files.last()));
    }
    QAnimatedLabel label(nullptr);
    const auto width = [&] { return label.pixmap() ? label.pixmap()->width() : 0; };
    label.setSequence({files[0], files[1]}, 20);
    for (const int next : {5, 6, 5})
        QTRY_COMPARE(width(), next);
    label.setSequence({files[2]}, 20);
    QTRY_COMPARE(width(), 7);
}

int main(int argc, char **argv)
{
    FakeHost host(argc, argv);
    KImage::init(nullptr);
    KUI::init(nullptr);
    tst_UIVitreluxPage test;
    const int failures = QTest::qExec(&test, argc, argv);
    host.Clear();
    KUI::exit();
    KImage::exit();
    return failures;
}

#include "UIVitreluxPage_test.moc"
