// The plug-in's wizard page, driven as a user does, against runs of the process itself.
#include "UIVitreluxPage.h"

#include "ComputePreview.h"
#include "FakeHost.h"
#include "KUI.h"
#include "QAnimatedLabel.h"
#include "TestFiles.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QWizard>
#include <QtTest>

namespace {

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
    FakeImageDef *def = Host().Def(file);
    def->pixels.FromQImage(image);
    return def;
}

/// Answers the modal windows that come up: a file dialog by typing a path, or Escape for none; a box by Enter.
class ModalAnswers : public QObject {
public:
    explicit ModalAnswers(const QString &typed) : m_typed(typed) { m_timer = startTimer(5); }
    QStringList seen; // titles of file dialogs, texts of boxes

protected:
    void timerEvent(QTimerEvent *) override
    {
        QWidget *window = QApplication::activeModalWidget();
        if (auto *box = qobject_cast<QMessageBox *>(window)) {
            seen.append(box->text());
            QTest::keyClick(box, Qt::Key_Enter);
        } else if (auto *dialog = qobject_cast<QFileDialog *>(window)) {
            seen.append(dialog->windowTitle());
            auto *edit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
            edit->clear();
            QTest::keyClicks(edit, m_typed);
            QTest::keyClick(edit, m_typed.isEmpty() ? Qt::Key_Escape : Qt::Key_Enter);
        }
    }

private:
    QString m_typed;
    int m_timer;
};

/// A wizard with the page in it and one behind it.
class Desk {
public:
    explicit Desk(const QStringList &files = {})
    {
        page = process.WizardPage();
        wizard.addPage(page);
        wizard.addPage(new QWizardPage);
        preview = Find<QWidget>("UIVitreluxPreviewClass");
        worker = page->findChild<QThread *>();
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
    QCheckBox *Box(const char *name) const { return Find<QCheckBox>(name); }
    void Click(const char *name) const
    {
        auto *button = Find<QAbstractButton>(name);
        // A box is clicked on its mark, not in its middle.
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(10, button->height() / 2));
    }
    bool NextIsOn() const { return wizard.button(QWizard::NextButton)->isEnabled(); }
    bool Waiting() const { return Find<QWidget>("labelState")->isVisible(); }
    bool IsUpToDate() const { return preview->property("isComplete") == true && !Waiting() && NextIsOn(); }
    /// "Disto CA Falloff profile" of a file's record.
    QString Record(const QString &file)
    {
        const QDomElement e = process.GetFileXmlParams(file);
        QStringList values;
        for (const char *key : {"Disto", "CA", "Falloff", "LCPfilename"})
            values.append(e.attribute(QLatin1String(key)));
        return values.join(QLatin1Char(' '));
    }
    QStringList ChooseProfile(const QString &path)
    {
        ModalAnswers answers(path);
        Click("toolButtonLensFile");
        return answers.seen;
    }

    KVitreluxOne2One process;
    QWizard wizard; // deletes the page
    QWizardPage *page;
    QWidget *preview;
    QThread *worker;
};

/// What the frame holds, without its border.
QImage Inside(const QImage &image)
{
    return image.convertToFormat(QImage::Format_RGB32).copy(image.rect().adjusted(2, 2, -2, -2));
}

/// A picture as the frame has to show it.
QImage InFrame(KImage &image, const QWidget &frame)
{
    QImage picture;
    image.ToQImage(picture);
    picture = picture.scaled(frame.size(), Qt::KeepAspectRatio, Qt::FastTransformation);
    QImage shown(frame.size(), QImage::Format_RGB32);
    shown.fill(frame.palette().window().color());
    QPainter(&shown).drawImage((shown.width() - picture.width()) / 2, (shown.height() - picture.height()) / 2, picture);
    return Inside(shown);
}

const QString kA = QStringLiteral("/a.jpg"), kB = QStringLiteral("/b.jpg"), kC = QStringLiteral("/c.jpg");

} // namespace

class tst_UIVitreluxPage : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init() { Host().Clear(); }
    void cleanup() { QVERIFY(QApplication::topLevelWidgets().isEmpty()); }

    void listWalksAround();
    void reducedSize_data();
    void reducedSize();
    void statesOfARender();
    void picture_data();
    void picture();
    void profileChosen_data();
    void profileChosen();
    void lensFolderChosen();
    void quickToggles_data();
    void quickToggles();
    void applyToAll();
    void pictureGone_data();
    void pictureGone();
    void endsDuringARender();
    void renderThatThrows();
    void animatedLabel();
    void fileDialogSetting();

private:
    QString Profile(const ProfileModels &models, int width, int height);

    QTemporaryDir m_dir;
    QString m_whole; // a profile with all models
};

void tst_UIVitreluxPage::initTestCase()
{
    m_whole = Profile({true, true, true}, 400, 300);
    KUI::SetUseSystemFileDialog(false);
}

QString tst_UIVitreluxPage::Profile(const ProfileModels &models, int width, int height)
{
    const QString path =
        m_dir.filePath(QStringLiteral("%1%2%3.lcp").arg(models.chromatic).arg(models.vignetting).arg(width));
    WriteBytes(path, ProfileText(models, width, height));
    return path;
}

void tst_UIVitreluxPage::listWalksAround()
{
    for (const QString &file : {kA, kB, kC})
        MakePicture(file, 40, 30);
    Desk desk({kA, kB, kC});
    auto *list = desk.Find<QComboBox>("comboBoxImageDef");
    QCOMPARE(list->count(), 3);
    QCOMPARE(list->currentIndex(), 0);
    int lent = 0;
    for (const QString &file : {kA, kB, kC})
        lent += Host().Def(file)->reducedSizes.size();
    QCOMPARE(lent, 1); // only the first image is shown
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

void tst_UIVitreluxPage::reducedSize_data()
{
    QTest::addColumn<QSize>("whole");
    QTest::addColumn<QSize>("reduced");
    QTest::newRow("small enough") << QSize(800, 600) << QSize(800, 600);
    QTest::newRow("landscape") << QSize(6000, 4000) << QSize(1024, 682);
    QTest::newRow("portrait") << QSize(4000, 6000) << QSize(682, 1024);
    QTest::newRow("one pixel") << QSize(1, 1) << QSize(1, 1);
    QTest::newRow("a line, whose width truncates to 0") << QSize(1, 3000) << QSize(1, 1024);
}

void tst_UIVitreluxPage::reducedSize()
{
    QFETCH(QSize, whole);
    FakeImageDef *def = Host().Def(kA);
    def->pixels.AllocBitmap(whole.width(), whole.height(), GFL_GREY, 8, /*clear=*/true, nullptr, 0);
    Desk desk({kA});
    QTRY_VERIFY(desk.IsUpToDate());
    QCOMPARE(def->reducedSizes.size(), 1);
    QTEST(def->reducedSizes.first(), "reduced");
    QCOMPARE(def->locks, 0);
}

void tst_UIVitreluxPage::statesOfARender()
{
    MakePicture(kA, 400, 300);
    Desk desk;
    QVERIFY(!desk.preview->property("isComplete").isValid() && desk.NextIsOn() && desk.Waiting());
    desk.process.SetFiles({kA});
    QVERIFY(desk.preview->property("isComplete") == false && !desk.NextIsOn() && desk.Waiting());
    QVERIFY(desk.Box("m_cbDistortion")->isEnabled());
    desk.wizard.resize(900, 700);
    QCoreApplication::processEvents();
    const QPoint off =
        desk.Find<QWidget>("labelState")->geometry().center() - desk.Find<QWidget>("frame")->geometry().center();
    QVERIFY2(off.manhattanLength() <= 2, "the wait label isn't at the frame's centre");
    QTRY_VERIFY(desk.IsUpToDate());

    QSignalSpy renders(desk.worker, &QThread::started);
    desk.wizard.resize(760, 560);
    desk.Click("m_cbPreview");
    QTest::qWait(50);
    QCOMPARE(renders.count(), 0); // neither a resize nor the split needs a render
    QVERIFY(desk.IsUpToDate());
    desk.process.SetFiles({}); // a job of no pictures
    QVERIFY(!desk.preview->property("isComplete").isValid() && desk.NextIsOn() && desk.Waiting());
    for (const char *name : {"m_cbDistortion", "pushButtonApplyAll", "QToolButton_Next", "toolButtonLensFile"})
        desk.Click(name);
    QVERIFY(desk.NextIsOn());
}

void tst_UIVitreluxPage::picture_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("split");
    QTest::newRow("landscape") << 400 << 300 << false;
    QTest::newRow("landscape, split") << 400 << 300 << true;
    QTest::newRow("portrait") << 300 << 401 << false;
    QTest::newRow("portrait, split") << 300 << 401 << true;
}

void tst_UIVitreluxPage::picture()
{
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(bool, split);
    FakeImageDef *def = MakePicture(kA, width, height);
    const QString profile = Profile({}, qMax(width, height), qMin(width, height));
    Desk desk({kA});
    desk.ChooseProfile(profile);
    desk.Click("m_cbDistortion");
    if (split)
        QTest::keyClick(desk.Box("m_cbPreview"), Qt::Key_Space);
    QCOMPARE(desk.Record(kA), QStringLiteral("1 0 0 ") + profile);

    const QWidget *frame = desk.Find<QWidget>("frame");
    KVitreluxOne2One::Params params;
    params.disto = true;
    params.lcpFilename = profile;
    KImage work;
    def->pixels.Convert(work, GFL_RGBA, 32);
    const QImage source = InFrame(work, *frame);
    desk.process.Process(qMakePair(static_cast<KIImageDef *>(def), &work), &params);
    QImage expected = InFrame(work, *frame);
    QVERIFY(expected != source);
    if (split) {
        QPainter painter(&expected);
        painter.drawImage(0, 0, source, 0, 0, frame->width() / 2 - 2);
    }
    const auto shown = [&] { return Inside(desk.preview->grab(frame->geometry()).toImage()); };
    QTRY_VERIFY(desk.IsUpToDate());
    QCOMPARE(shown(), expected);
    desk.Click("m_cbDistortion"); // only the uncorrected picture while a render runs; the wait label hides its middle
    QVERIFY(shown().copy(0, 0, 100, 400) == source.copy(0, 0, 100, 400));
}

void tst_UIVitreluxPage::profileChosen_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("record");  // 1 for what was switched on before and stays so
    QTest::addColumn<QString>("enabled"); // of the boxes
    QTest::addColumn<QString>("message");
    const QString absent = m_dir.filePath(QStringLiteral("text.lcp"));
    WriteBytes(absent, "no profile");
    QTest::newRow("whole") << m_whole << QStringLiteral("0 1 1 ") + m_whole << "111" << QString();
    const QString plain = Profile({}, 400, 300), colour = Profile({true, true, false}, 400, 300);
    QTest::newRow("no colour, no vignette") << plain << QStringLiteral("0 0 0 ") + plain << "100" << QString();
    QTest::newRow("no vignette") << colour << QStringLiteral("0 1 0 ") + colour << "110" << QString();
    QTest::newRow("no profile") << absent << QStringLiteral("0 0 0 ") + absent << "000"
                                << QStringLiteral("Non supported file format");
    QTest::newRow("cancelled") << QString() << QStringLiteral("1 1 1 /before.lcp") << "111" << QString();
}

void tst_UIVitreluxPage::profileChosen()
{
    QFETCH(QString, typed);
    QFETCH(QString, message);
    const QString uid = KVitreluxOne2One().UID();
    for (const char *key : {"/Disto", "/CA", "/Falloff"})
        Host().settings.insert(uid + QLatin1String(key), true);
    Host().settings.insert(uid + QStringLiteral("/LCPfilename"), QStringLiteral("/before.lcp"));
    MakePicture(kA, 400, 300);
    Desk desk({kA});
    QStringList seen = {QStringLiteral("Select lens camera profile")};
    if (!message.isEmpty())
        seen.append(message);
    QCOMPARE(desk.ChooseProfile(typed), seen);
    const auto boxes = [&](auto is) {
        QString text;
        for (const char *name : {"m_cbDistortion", "m_cbCA", "m_cbVignetting"})
            text += QLatin1Char(is(desk.Box(name)) ? '1' : '0');
        return text;
    };
    QTEST(desk.Record(kA), "record");
    QTEST(boxes([](QCheckBox *box) { return box->isEnabled(); }), "enabled");
    QCOMPARE(boxes([](QCheckBox *box) { return box->isChecked(); }), desk.Record(kA).left(5).remove(QLatin1Char(' ')));
    QCOMPARE(desk.Find<QLineEdit>("lineEditLensFile")->text(), desk.Record(kA).mid(6));
    QTRY_VERIFY(desk.IsUpToDate());
    const QString before = desk.Record(kA);
    if (typed.isEmpty())
        return;
    desk.ChooseProfile(m_whole); // all can be switched again, and nothing that was off is on
    QCOMPARE(boxes([](QCheckBox *box) { return box->isEnabled(); }), QStringLiteral("111"));
    QCOMPARE(desk.Record(kA), before.left(6) + m_whole);
}

void tst_UIVitreluxPage::lensFolderChosen()
{
    Desk desk;
    ModalAnswers answers(m_dir.path());
    desk.Find<QAbstractButton>("toolButtonLensPath")->click(); // hidden, but alive
    QCOMPARE(answers.seen, QStringList(QStringLiteral("Select lens camera profiles Database directory")));
    QCOMPARE(desk.process.LensPath(), m_dir.path());
    desk.process.OnValidatePage();
    QCOMPARE(Host().settings.value(desk.process.UID() + QStringLiteral("/LensPath")).toString(), m_dir.path());
}

void tst_UIVitreluxPage::quickToggles_data()
{
    QTest::addColumn<int>("toggles");
    QTest::newRow("three") << 3;
    QTest::newRow("10,001") << 10001;
}

void tst_UIVitreluxPage::quickToggles()
{
    QFETCH(int, toggles);
    MakePicture(kA, 400, 300);
    Desk desk({kA});
    desk.ChooseProfile(m_whole);
    QTRY_VERIFY(desk.IsUpToDate());
    QSignalSpy renders(desk.worker, &QThread::started);
    auto *box = desk.Box("m_cbDistortion");
    for (int i = 0; i < toggles; ++i)
        box->click(); // without the event loop, so that no end of a render is noticed meanwhile
    QVERIFY(!desk.NextIsOn());
    QTRY_VERIFY(desk.IsUpToDate());
    const int first = renders.count();
    QVERIFY2(first <= (toggles == 3 ? 3 : toggles / 10), qPrintable(QString::number(first)));
    QVERIFY(box->isChecked() && desk.Record(kA).startsWith(QLatin1Char('1')));
    QSignalSpy changes(desk.page, &QWizardPage::completeChanged);
    box->click(); // nothing has piled up: one change is one render, told twice
    QTRY_VERIFY(desk.IsUpToDate());
    QTest::qWait(20);
    QCOMPARE(renders.count(), first + 1);
    QCOMPARE(changes.count(), 2);
}

void tst_UIVitreluxPage::applyToAll()
{
    for (const QString &file : {kA, kB})
        MakePicture(file, 400, 300);
    Desk desk({kA, kB});
    desk.ChooseProfile(m_whole);
    desk.Click("m_cbCA");
    desk.Click("pushButtonApplyAll");
    const QString chosen = QStringLiteral("0 1 0 ") + m_whole;
    QCOMPARE(desk.Record(kA), chosen);
    QCOMPARE(desk.Record(kB), chosen);
    desk.Click("QToolButton_Next");
    QVERIFY(desk.Box("m_cbCA")->isChecked());
    QCOMPARE(desk.Find<QLineEdit>("lineEditLensFile")->text(), m_whole);
    desk.process.OnValidatePage();
    QCOMPARE(desk.Record(QStringLiteral("/not in the job.jpg")), chosen);
}

void tst_UIVitreluxPage::pictureGone_data()
{
    QTest::addColumn<bool>("wasThere");
    QTest::newRow("gone since it was described") << true;
    QTest::newRow("never a picture, of size 0") << false;
}

void tst_UIVitreluxPage::pictureGone()
{
    QFETCH(bool, wasThere);
    MakePicture(kA, 400, 300);
    if (wasThere)
        MakePicture(kB, 40, 30)->gone = true;
    Desk desk({kA});
    QTRY_VERIFY(desk.IsUpToDate());
    desk.process.SetFiles({kB});
    QVERIFY(desk.NextIsOn());
    QCOMPARE(desk.Find<QComboBox>("comboBoxImageDef")->currentText(), QStringLiteral("b.jpg"));
    desk.Click("m_cbCA"); // there is no record on show that it could change
    QCOMPARE(desk.Record(kB), QStringLiteral("0 0 0 "));
    desk.process.SetFiles({kA});
    QTRY_VERIFY(desk.IsUpToDate());
    QCOMPARE(Host().Def(kA)->locks, 0);
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
    KImage empty; // which the correction refuses
    QImage shown;
    for (KImage *image : {&empty, &def->pixels}) {
        worker.setImage(def, image, &params);
        QVERIFY(!worker.IsCurrent());
        worker.start();
        QVERIFY(worker.wait(30000) && worker.IsCurrent());
        worker.getPreview(shown);
        QCOMPARE(shown.isNull(), image == &empty);
    }
}

void tst_UIVitreluxPage::animatedLabel()
{
    QStringList files;
    for (const Qt::GlobalColor colour : {Qt::red, Qt::green, Qt::blue}) {
        QImage image(5 + files.size(), 7, QImage::Format_RGB32);
        image.fill(colour);
        files.append(m_dir.filePath(QStringLiteral("%1.png").arg(files.size())));
        QVERIFY(image.save(files.last()));
    }
    QAnimatedLabel label(nullptr);
    const auto next = [&] {
        const qint64 before = label.pixmap() ? label.pixmap()->cacheKey() : 0;
        return QTest::qWaitFor([&] { return label.pixmap() && label.pixmap()->cacheKey() != before; })
            ? label.pixmap()->width()
            : 0;
    };
    label.setSequence({files[0], files[1]}, 20);
    QCOMPARE(label.minimumSize(), QSize(5, 7));
    for (const int width : {5, 6, 5})
        QCOMPARE(next(), width);
    label.setSequence({files[2], files[0]}, 20); // starts at its own first picture
    QCOMPARE(next(), 7);
    label.setSequence({}, 20);
    QTest::qWait(50);
    QCOMPARE(label.pixmap()->width(), 7);
}

void tst_UIVitreluxPage::fileDialogSetting()
{
    KUI::exit();
    QCOMPARE(KUI::UseSystemFileDialog(), 0);
    KUI::init(nullptr);
    QCOMPARE(KUI::UseSystemFileDialog(), 0);
    KUI::SetUseSystemFileDialog(false);
    KUI::init(nullptr); // changes nothing any more
    QCOMPARE(KUI::UseSystemFileDialog(), 16);
    QCOMPARE(QDir::searchPaths(QStringLiteral("UI")), QStringList(QStringLiteral(":/UI")));
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
