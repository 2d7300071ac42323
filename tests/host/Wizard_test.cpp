// Tests of the wizard, which operate it as a user would, with a process object in place of the plug-in's.
#include "KImage.h"
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
#include <QProgressBar>
#include <QTreeWidget>

#include <csignal>

class tst_Wizard : public WizardTest {
    Q_OBJECT
public Q_SLOTS:
    void Open(const QUrl &url)
    {
        m_opened = url;
        sigset_t blocked;
        pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
        QVERIFY(!sigismember(&blocked, SIGTERM)); // otherwise the file manager would inherit the block
    }

private Q_SLOTS:
    void picturesByDialogAndDrop();
    void comparesLight();
    void reportsEachResult();
    void replacesOnRequest();
    void savesAsChosen();
    void correctsSeveralAtATime();
    void stopsAtOnce_data();
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
    QVERIFY(!CanGoOn() && !m_wizard->button(QWizard::BackButton)->isEnabled());

    QTimer::singleShot(0, this, [this] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        dialog->findChild<QLineEdit *>("fileNameEdit"_s)->setText(Path("b.jpg"));
        static_cast<QDialog *>(dialog)->accept();
    });
    Click("add");
    QCOMPARE(Rows("pictures", 1), QStringList("b.jpg"_s));
    QTRY_VERIFY(CanGoOn());
    QCOMPARE(Rows("pictures"), QStringList("b.jpg|60 × 40"_s));

    Drop({QUrl::fromLocalFile(Path("c.jpg")), QUrl::fromLocalFile(m_dir->path()), QUrl("ftp://elsewhere/e.jpg"_s)});
    QCOMPARE(Rows("pictures", 1), QStringList({"b.jpg"_s, "c.jpg"_s, "a.jpg"_s, "d.jpg"_s}));
    QCOMPARE(Find<QLabel>("reading")->text(), "1 of 4 pictures read"_s);
    QTRY_COMPARE(Rows("pictures").at(2), "a.jpg|60 × 40"_s);
    QTRY_VERIFY(Rows("pictures").at(3).size() > 6); // says why it is not a picture
    QVERIFY(Find<QLabel>("reading")->text().isEmpty());
    const auto *list = Find<QTreeWidget>("pictures");
    for (int i = 0; i < 4; ++i) // the reason has a warning sign
        QVERIFY2(list->topLevelItem(i)->icon(1).isNull() == (i < 3), qPrintable(QString::number(i)));
    Drop({QUrl::fromLocalFile(m_dir->path())});
    QCOMPARE(Find<QLabel>("notice")->text(), "No new pictures were found."_s);

    Find<QAbstractItemView>("pictures")->selectAll();
    Click("remove");
    QVERIFY(!CanGoOn());
    m_wizard->close();
}

/// OpenEXR holds light, which is shown as sRGB (IEC 61966-2-1): 0.2 as 0.4845.
void tst_Wizard::comparesLight()
{
    WriteJpeg(Path("a.jpg"), 4, 3);
    KImage light(4, 3, GFL_RGB, 32, /*clear=*/true, nullptr, 0);
    std::fill_n(reinterpret_cast<float *>(light.getData(0, 0)), light.bytesPerLine() * 3 / sizeof(float), 0.2F);
    light.Write(Path("a.exr"), "exr"_s, 0, QString());
    CompareDialog dialog(m_host, Path("a.jpg"), Path("a.exr"), nullptr);
    auto *after = dialog.findChild<ComparedView *>("after"_s);
    QTRY_COMPARE(after->Image().size(), QSize(4, 3));
    QCOMPARE(QColor(after->Image().pixel(1, 1)), QColor(124, 124, 124));
    after->setFixedSize(300, 90);
    QCOMPARE(after->grab().toImage().pixel(2, 45), after->palette().color(QPalette::Dark).rgb()); // next to the picture
}

void tst_Wizard::reportsEachResult()
{
    const QString toPlugin = "good.jpg bad.jpg there.jpg good.tif off.jpg open.jpg none.jpg plain.jpg"_s;
    constexpr int kPictures = 9;
    const QString fit = "; entries: 50 mm 100 %; left out: vignetting: no model"_s;
    WriteFile(Path("text.jpg"), "no picture");
    WriteFile(Path("there_corrected.tiff"), "old");
    Show(toPlugin + " text.jpg"_s);
    Next();
    Next();
    QTRY_VERIFY(Close());
    QCOMPARE(m_process->calls, QStringList({"files "_s + toPlugin, "validate"_s}));
    const QStringList rows = Rows("results");
    QCOMPARE(rows[0], "good.jpg|Corrected: profile \"found.lcp\""_s + fit);
    QCOMPARE(rows[1], "bad.jpg|Failed: pixels are lost"_s);
    QVERIFY(rows[2].contains("already exists"_s));
    QVERIFY2(rows[3].contains("good.jpg\""_s), qPrintable(rows[3])); // names the picture with the same output
    QVERIFY(rows[4].contains("No correction"_s));
    QCOMPARE(Find<QAbstractItemView>("results")->model()->index(5, 1).data(Qt::ToolTipRole), "/lenses/found.lcp"_s);
    QCOMPARE(ReadFile(Path("open_corrected.tiff")), QByteArray("filltiff")); // the user chose no profile
    QVERIFY2(rows[6].endsWith("none was found for this picture: unknown lens"_s), qPrintable(rows[6]));
    QVERIFY2(rows[7].contains("doesn't support fitted"_s) && !QFile::exists(Path("plain_corrected.tiff")),
             qPrintable(rows[7]));
    QVERIFY(rows[8].startsWith("text.jpg|Failed: "_s));
    QCOMPARE(m_wizard->FailedCount(), 6);
    QCOMPARE(Find<QLabel>("state")->text(), "2 pictures corrected, 1 left as it was, 6 failed"_s);
    QCOMPARE(Find<QProgressBar>("progress")->value(), kPictures);
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
    Drop({QUrl::fromLocalFile(Path("in"))});
    QCOMPARE(Rows("pictures", 1).size(), 2); // without the results
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

void tst_Wizard::stopsAtOnce_data()
{
    QTest::addColumn<QString>("manner");
    for (const char *manner : {"button", "window closed", "window closed twice", "deleted"})
        QTest::newRow(manner) << QString::fromLatin1(manner);
}

void tst_Wizard::stopsAtOnce()
{
    QFETCH(QString, manner);
    Show("slow.jpg next.jpg"_s);
    Next();
    Next();
    QVERIFY(m_process->began.tryAcquire(1, 10000));
    QVERIFY(!Close());
    QVERIFY(!m_wizard->button(QWizard::BackButton)->isEnabled());
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
