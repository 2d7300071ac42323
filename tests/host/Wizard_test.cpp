// Tests of the wizard, which operate it as a user would, with a process object in place of the plug-in's.
#include "Case.h"
#include "ExpectedText.h"
#include "KImage.h"
#include "Table.h"
#include "WizardTest.h"
#include "wizard/CompareDialog.h"
#include "wizard/ComparedView.h"
#include "wizard/RunPage.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QTreeWidget>

#include <csignal>
#include <limits>

class tst_Wizard : public WizardTest {
    Q_OBJECT
public Q_SLOTS:
    void Open(const QUrl &url)
    {
        m_opened = url;
        sigset_t blocked;
        pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
        QVERIFY(!sigismember(&blocked, SIGTERM)); // otherwise the file manager would inherit the mask
    }

private Q_SLOTS:
    void picturesByDialogAndDrop();
    void comparesLight();
    void movesAndZooms();
    void reportsEachResult();
    void replacesOnRequest();
    void savesAsChosen();
    void correctsSeveralAtATime();
    void estimatesTheTimeLeft();
    void stopsAtOnce();
    void backKeepsChoices();

private:
    QUrl m_opened;
};

void tst_Wizard::picturesByDialogAndDrop()
{
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
        WriteJpeg(Path(name), 60, 40);
    WriteFile(Path("d.jpg"), "no picture");
    WriteFile(Path("a_corrected.tiff"), "result");
    Show(QString());
    QStringList dialogs;
    const auto choose = [&](const char *button, const QString &path) {
        QTimer::singleShot(0, this, [&path, &dialogs] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            dialogs << dialog->windowTitle() + QLatin1Char('|') + dialog->nameFilters().last()
                    << dialog->directory().path();
            dialog->findChild<QLineEdit *>("fileNameEdit"_s)->setText(path);
            static_cast<QDialog *>(dialog)->done(!path.isEmpty());
        });
        Click(button);
    };
    for (const char *button : {"add", "addFolder", "chooseOutputFolder"})
        choose(button, QString()); // canceled
    CheckLooks(*m_wizard, "no pictures");
    choose("add", Path("b.jpg"));
    QCOMPARE(m_host->Settings().value("Wizard/PictureFolder"_s), m_dir->path());
    QCOMPARE(Rows("pictures", 1), QStringList("b.jpg"_s));
    QTRY_VERIFY(CanGoOn());
    QCOMPARE(Rows("pictures"), QStringList("b.jpg|60 × 40"_s));

    Drop({QUrl::fromLocalFile(Path("c.jpg")), QUrl::fromLocalFile(m_dir->path()), QUrl("ftp://elsewhere/e.jpg"_s)});
    QCOMPARE(Rows("pictures", 1), QStringList({"b.jpg"_s, "c.jpg"_s, "a.jpg"_s, "d.jpg"_s}));
    QCOMPARE(Find<QLabel>("reading")->text(), "1 of 4 pictures read"_s);
    QTRY_COMPARE(Rows("pictures").at(2), "a.jpg|60 × 40"_s);
    QTRY_VERIFY(Rows("pictures").at(3).size() > 6); // says why it is not a picture
    QVERIFY(Find<QLabel>("reading")->text().isEmpty());
    auto *list = Find<QTreeWidget>("pictures");
    for (int i = 0; i < 4; ++i) { // a thumbnail, or a warning sign with the reason
        const auto *row = list->topLevelItem(i);
        QVERIFY2(row->icon(0).isNull() != (i < 3) && row->icon(1).isNull() == (i < 3), qPrintable(QString::number(i)));
        QCOMPARE(row->toolTip(0) + row->toolTip(1) + row->toolTip(2),
                 m_dir->filePath(row->text(0)) + (i < 3 ? QString() : row->text(1)) + m_dir->path());
        QCOMPARE(list->visualItemRect(row).height(), 52); // thumbnails of 48 pixels
    }
    const auto *notice = Find<QLabel>("notice");
    QVERIFY(!notice->isVisible());
    choose("addFolder", m_dir->path());
    CheckLooks(*m_wizard, "pictures");
    choose("chooseOutputFolder", m_dir->path());
    QCOMPARE(Find<QLineEdit>("outputFolder")->text(), m_dir->path());
    QVERIFY(!notice->isVisible() && CanGoOn() && !Find<QAbstractButton>("remove")->isEnabled());

    m_wizard->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_wizard.get()));
    list->selectAll();
    QVERIFY(Find<QAbstractButton>("remove")->isEnabled());
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Delete);
    QVERIFY(Rows("pictures").isEmpty());
    Find<QLineEdit>("outputFolder")->clear();
    CheckLooks(*m_wizard, "no pictures");
    m_wizard->close();
    const QByteArray asked = ExpectedText("dialogs and their folders").replace("%1", QDir::homePath().toUtf8());
    QCOMPARE(dialogs.join(QLatin1Char('\n')).toUtf8() + '\n', QByteArray(asked).replace("%2", m_dir->path().toUtf8()));
}

/// OpenEXR holds linear light, which is shown as sRGB (IEC 61966-2-1): 0.2 becomes 0.4845. Opacity isn't converted.
void tst_Wizard::comparesLight()
{
    WriteJpeg(Path("a.jpg"), 4, 3);
    KImage light(4, 3, GFL_RGBA, 32, /*clear=*/true, nullptr, 0);
    const float pixel[] = {0.2F, 2.0F, std::numeric_limits<float>::quiet_NaN(), 0.2F};
    for (int i = 0; i < 12; ++i)
        std::copy_n(pixel, 4, reinterpret_cast<float *>(light.getData(i % 4, i / 4)));
    light.Write(Path("a.exr"), "exr"_s, 0, QString());
    CompareDialog dialog(m_host, Path("a.jpg"), Path("a.exr"), nullptr);
    const auto *after = dialog.findChild<ComparedView *>("after"_s);
    QTRY_COMPARE(after->Image().size(), QSize(4, 3));
    QCOMPARE(after->Image().pixel(1, 1), qRgba(124, 255, 0, 51));
    dialog.resize(700, 400);
    dialog.done(0);
    WriteJpeg(Path("wide.jpg"), 8192, 2);
    WriteJpeg(Path("tall.jpg"), 2, 8192);
    CompareDialog again(m_host, Path("wide.jpg"), Path("tall.jpg"), nullptr);
    QCOMPARE(again.size(), QSize(700, 400));
    QTRY_COMPARE(again.findChild<ComparedView *>("before"_s)->Image().size(), QSize(4096, 1));
    QCOMPARE(again.findChild<ComparedView *>("after"_s)->Image().size(), QSize(1, 4096));
}

/// At zoom 1, the 4 x 3 picture fills 120 x 90 of its 300 x 90 view. A step zooms by a factor of 1.5, or moves by 12 or
/// 9 pixels.
void tst_Wizard::movesAndZooms()
{
    WriteJpeg(Path("a.jpg"), 4, 3);
    CompareDialog dialog(m_host, Path("a.jpg"), Path("p.lcp"), nullptr);
    dialog.show();
    QCOMPARE(dialog.size(), QSize(1000, 520));
    CheckLooks(dialog, "before and after");
    auto *view = dialog.findChild<ComparedView *>("before"_s), *other = dialog.findChild<ComparedView *>("after"_s);
    QTRY_COMPARE(view->Image().size(), QSize(4, 3));
    const QList<QPushButton *> buttons = dialog.findChildren<QPushButton *>();
    for (const QPushButton *button : buttons)
        QCOMPARE(button->size(), button->sizeHint());
    for (ComparedView *each : {view, other})
        each->setFixedSize(300, 90);
    const auto place = [view] {
        const QRectF rect = view->PictureRect();
        return "%1 %2 %3 %4"_s.arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
    };
    for (const QStringList &row : ReadTable(QStringLiteral(MOVES))) {
        const Case named(row);
        const QStringList words = row[0].split(QLatin1Char(' '));
        QWidget *widget = words[0].endsWith("-other"_s) ? other : view;
        const auto point = [&](int i) { return QPoint(words.at(i).toInt(), words.at(i + 1).toInt()); };
        if (words[0] == "key"_s)
            QTest::keyClick(view, Qt::Key(QKeySequence(words[1])[0]));
        else if (words[0] == "click"_s)
            buttons.value(words[1].toInt())->click();
        else if (words[0].startsWith("drag"_s))
            QTest::mousePress(widget, Qt::LeftButton, {}, point(1));
        for (int i = 3; i < words.size() && words[0].startsWith("drag"_s); i += 2) {
            QMouseEvent move(QEvent::MouseMove, point(i), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(widget, &move);
        }
        if (words[0].startsWith("turn"_s)) {
            QWheelEvent event(point(1), point(1), QPoint(), {0, words[3].toInt() * 8}, {}, {}, Qt::NoScrollPhase,
                              /*inverted=*/false);
            QApplication::sendEvent(widget, &event);
        }
        QCOMPARE(place(), row[1]);
    }

    SharedPlace unused;
    ComparedView failed(&unused);
    failed.setFixedSize(300, 90);
    failed.Show("The picture cannot be read: "_s + m_host->ProblemOf(Path("p.lcp")).simplified());
    QVERIFY(other->grab().toImage().convertToFormat(QImage::Format_RGB32)
            == failed.grab().toImage().convertToFormat(QImage::Format_RGB32));
    QVERIFY(QTest::qWaitForWindowActive(&dialog) && other->hasFocus());
    const auto show = [view](const QImage &image) {
        view->Show(image);
        return view->grab().toImage().convertToFormat(QImage::Format_RGB32);
    };
    QImage red(4, 3, QImage::Format_RGB32), expected = show(red);
    red.fill(Qt::red);
    expected.fill(view->palette().color(QPalette::Dark));
    QPainter(&expected).fillRect(90, 0, 120, 90, Qt::red);
    QCOMPARE(show(red), expected);
    view->setFocus();
    QPainter painter(&expected);
    painter.setPen(view->palette().color(QPalette::Highlight));
    painter.drawRect(0, 0, 299, 89);
    painter.end();
    QCOMPARE(show(red), expected);
    QTest::keyClick(view, Qt::Key_Return); // presses the button Close
    QVERIFY(!dialog.isVisible());
}

void tst_Wizard::reportsEachResult()
{
    const QString toPlugin = "good.jpg bad.jpg there.jpg good.tif off.jpg open.jpg none.jpg plain.jpg"_s;
    constexpr int kPictures = 9;
    WriteFile(Path("text.jpg"), "no picture");
    WriteFile(Path("there_corrected.tiff"), "old");
    Show(toPlugin + " text.jpg"_s);
    Next();
    Next();
    QTRY_VERIFY(m_wizard->button(QWizard::FinishButton)->isEnabled());
    CheckLooks(*m_wizard, "results");
    QVERIFY(Close());
    QCOMPARE(m_process->calls, QStringList({"files "_s + toPlugin, "validate"_s}));
    const QByteArray problem = m_host->ProblemOf(Path("text.jpg")).simplified().toUtf8();
    QCOMPARE(Rows("results").join(QLatin1Char('\n')).toUtf8() + '\n',
             ExpectedText("results of all kinds").replace("%1", Path("good.jpg").toUtf8()).replace("%2", problem));
    const QAbstractItemModel *results = Find<QAbstractItemView>("results")->model();
    QCOMPARE(results->index(5, 0).data(Qt::ToolTipRole), Path("open.jpg"));
    QCOMPARE(results->index(5, 1).data(Qt::ToolTipRole), "/lenses/found.lcp"_s);
    QCOMPARE(ReadFile(Path("open_corrected.tiff")), QByteArray("filltiff")); // the user chose no profile
    QVERIFY(!QFile::exists(Path("plain_corrected.tiff")));
    QCOMPARE(m_wizard->FailedCount(), 6);
    QCOMPARE(ReadFile(Path("good_corrected.tiff")), m_process->profile.toUtf8() + "filltiff");
    QCOMPARE(ReadFile(Path("there_corrected.tiff")), QByteArray("old"));
    QCOMPARE(Names(m_dir->path()).size(), kPictures + 4); // the profile and three outputs: no work folder is left

    QDesktopServices::setUrlHandler("file"_s, this, "Open");
    Click("showInFolder");
    QDesktopServices::unsetUrlHandler("file"_s);
    QCOMPARE(m_opened.toLocalFile(), m_dir->path());
}

void tst_Wizard::replacesOnRequest()
{
    m_process->page.reset(); // without a page, the run follows the list of pictures
    WriteFile(Path("slow_corrected.tiff"), "old");
    Show("slow.jpg"_s);
    Click("replace");
    m_process->go.release();
    Next();
    QTRY_VERIFY(m_wizard->button(QWizard::FinishButton)->isEnabled());
    QCOMPARE(ReadFile(Path("slow_corrected.tiff")), m_process->profile.toUtf8() + "filltiff");
    m_wizard->back();
    Next(); // a second run, whose results are not there yet
    for (const char *name : {"compare", "showInFolder"})
        QVERIFY2(!Find<QAbstractButton>(name)->isEnabled(), name);
    m_process->go.release();
    QTRY_VERIFY(Close());
}

void tst_Wizard::savesAsChosen()
{
    m_process->page.reset();
    QVERIFY(QDir(m_dir->path()).mkpath("in/sub"_s));
    for (const char *name : {"in/a.jpg", "in/sub/a.jpg"})
        WriteJpeg(Path(name), 60, 40);
    Show(QString());
    Drop({QUrl::fromLocalFile(Path("in"))});
    QTRY_VERIFY(CanGoOn());
    auto *folder = Find<QLineEdit>("outputFolder");
    for (const QString &wrong : {"corrected"_s, Path("p.lcp")}) {
        folder->setText(wrong);
        QVERIFY2(!CanGoOn() && Find<QLabel>("notice")->text().contains(wrong), qPrintable(wrong));
    }
    QVERIFY(!Find<QAbstractScrollArea>("pictures")->viewport()->acceptDrops()); // the page accepts them
    folder->setText("file://"_s + Path("in/out"));                              // as inserted by a drop
    Find<QComboBox>("format")->setCurrentIndex(2);
    Next();
    QTRY_VERIFY(Close());
    for (const char *name : {"in/out/a_corrected.png", "in/out/sub/a_corrected.png"})
        QVERIFY2(ReadFile(Path(name)).endsWith("fillpng"), name);
    Show(QString()); // remembers the choices
    QVERIFY(Find<QLineEdit>("outputFolder")->text().endsWith("/in/out"_s));
    QCOMPARE(Find<QComboBox>("format")->currentData(), "png"_s);
    const QByteArray home = qgetenv("HOME");
    qputenv("HOME", Path("in").toUtf8());
    Find<QLineEdit>("outputFolder")->setText("~/out"_s);
    Drop({QUrl::fromLocalFile(Path("in"))});
    QCOMPARE(Rows("pictures", 3), QStringList({"a.jpg||"_s + Path("in"), "a.jpg||"_s + Path("in/sub")})); // not in/out
    qputenv("HOME", home);
    m_wizard->close();
    m_host->Settings().setValue("Wizard/OutputFolder"_s, Path("p.lcp"));
    Show(QString());
    QCOMPARE(Find<QLabel>("notice")->text(), "\"%1\" is not a folder"_s.arg(Path("p.lcp")));
    m_wizard->close();
}

void tst_Wizard::correctsSeveralAtATime()
{
    StandInProcess second;
    Show({m_process.get(), &second}, "slow1.jpg slow2.jpg bad.jpg slow3.jpg"_s);
    Next();
    Next();
    QVERIFY(m_process->began.tryAcquire(2, 10000)); // both wait at the same time
    m_process->go.release(3);
    QTRY_VERIFY(Close());
    const QStringList rows = Rows("results");
    QVERIFY2(rows[0].startsWith("slow1.jpg|Corrected"_s) && rows[1].startsWith("slow2.jpg|Corrected"_s)
                 && rows[2] == "bad.jpg|Failed: pixels are lost"_s && rows[3].startsWith("slow3.jpg|Corrected"_s),
             qPrintable(rows.join(QLatin1Char('\n'))));
    QCOMPARE(Find<QLabel>("state")->text(), "3 pictures corrected, 1 failed"_s);
    QCOMPARE(second.records.load(), 0);
    m_wizard.reset(); // must be deleted before the second process
}

/// The estimate counts pixels, not pictures: after 1, 4 million take many minutes; after 4 million, 1 takes a second.
void tst_Wizard::estimatesTheTimeLeft()
{
    m_process->page.reset();
    for (const char *name : {"tiny.jpg", "slow1.jpg", "slow3.jpg"})
        WriteJpeg(Path(name), 1, 1);
    for (const char *name : {"large.jpg", "slow2.jpg"})
        WriteJpeg(Path(name), 2000, 2000);
    const std::pair<const char *, const char *> rows[] = {{"bad.jpg slow1.jpg", "^$"},
                                                          {"tiny.jpg slow2.jpg", "^About \\d\\d+ minutes left$"},
                                                          {"large.jpg slow3.jpg", "^About 1 second left$"}};
    for (const auto &[names, expected] : rows) {
        const Case named(names);
        Show(QLatin1String(names));
        Next();
        QVERIFY(m_process->began.tryAcquire(1, 10000));
        const auto *left = Find<QLabel>("timeLeft");
        QTRY_COMPARE(Find<QLabel>("state")->text(), "1 of 2 pictures finished"_s);
        QTRY_VERIFY2(QRegularExpression(QLatin1String(expected)).match(left->text()).hasMatch(),
                     qPrintable(left->text()));
        m_process->go.release();
        QTRY_VERIFY(Close());
        QCOMPARE(left->text(), QString());
    }
}

void tst_Wizard::stopsAtOnce()
{
    for (const QString &manner : {"button"_s, "window closed"_s, "window closed twice"_s, "deleted"_s}) {
        const Case named(manner);
        Show("slow.jpg next.jpg"_s);
        Next();
        Next();
        QVERIFY(m_process->began.tryAcquire(1, 10000));
        QVERIFY(!Close());
        CheckLooks(*m_wizard, "a run");
        if (manner == "button"_s)
            Click("stop");
        if (manner.startsWith("window closed"_s))
            m_wizard->close();
        QVERIFY(m_wizard->isVisible());
        if (manner == "window closed twice"_s) {
            m_wizard->close();
            QVERIFY(!m_wizard->isVisible());
        } else if (manner != "deleted"_s) {
            QTRY_VERIFY(!m_wizard->findChild<RunPage *>()->IsRunning());
            const QString stopped = "|Not corrected: the run was stopped"_s;
            QCOMPARE(Rows("results"), QStringList({"slow.jpg"_s + stopped, "next.jpg"_s + stopped}));
            QVERIFY(m_wizard->isVisible());
        }
        m_wizard.reset();
        QCOMPARE(Names(m_dir->path()), QStringList({"next.jpg"_s, "p.lcp"_s, "slow.jpg"_s}));
    }
}

void tst_Wizard::backKeepsChoices()
{
    WriteJpeg(Path("b.jpg"), 60, 40);
    Show("a.jpg"_s);
    Next();
    m_wizard->back();
    Next(); // the same pictures: their records are kept
    m_wizard->back();
    m_wizard->Add({Path("b.jpg")});
    Next();
    QCOMPARE(m_process->calls, QStringList({"files a.jpg"_s, "files a.jpg b.jpg"_s}));
    m_wizard->back();
    Find<QComboBox>("framing")->setCurrentIndex(2);
    Next();
    QCOMPARE(m_process->calls.size(), 3);
    QCOMPARE(m_process->framing, "all"_s);
    const QSize chosen = m_wizard->size() + QSize(-57, 31);
    m_wizard->resize(chosen);
    m_wizard->close();
    Show(QString());
    QCOMPARE(m_wizard->size(), chosen);
    QCOMPARE(Find<QComboBox>("framing")->currentData(), "all"_s);
    m_wizard->close();
}

int main(int argc, char **argv)
{
    return WizardTest::RunAll<tst_Wizard>(argc, argv);
}
#include "Wizard_test.moc"
