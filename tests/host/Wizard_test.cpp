// Operates the wizard like a user, with a process that replaces the plug-in's.
#include "wizard/CorrectionWizard.h"

#include "FittedFiles.h"
#include "KException.h"
#include "app/HostApplication.h"
#include "app/InterruptGuard.h"
#include "app/PluginLoader.h"
#include "wizard/CompareDialog.h"
#include "wizard/RunPage.h"
#include "wizard/WizardPlugin.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QProgressBar>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <csignal>

namespace {

InterruptGuard *g_guard;

/// Records its calls, and reports like a fitted process. Picture names choose the behavior: "bad" fails, "slow" waits
/// for `go` and fails when it is interrupted, "none" finds no profile, "plain" reports nothing, "off" has no correction
/// switched on.
class StandInProcess : public KIPluginOne2One {
public:
    QString Name() const override { return "Stand-in"_s; }
    QString Author() const override { return QString(); }
    QString Company() const override { return QString(); }
    QString Comment() const override { return QString(); }
    QString Version() const override { return QString(); }
    QIcon Icon() const override { return QIcon(); }
    QString UID() const override { return QString(); }
    QIcon BeforeAfter() const override { return QIcon(); }
    QWizardPage *WizardPage() override { return page.get(); }
    void OnValidatePage() override { calls << "validate"_s; }
    void *AllocParameters(QDomElement element) override
    {
        ++records;
        return new Record{ReadParameters(element), element.attribute("Framing"_s), element.attribute("Format"_s), {}};
    }
    void FreeParameters(void *record) override
    {
        --records;
        delete static_cast<Record *>(record);
    }
    QDomElement GetXmlParameters(void *record) override
    {
        return DescribeParameters(Name(), static_cast<Record *>(record)->parameters,
                                  static_cast<Record *>(record)->results);
    }
    void SetFiles(QStringList files) override
    {
        QStringList names;
        for (const QString &file : qAsConst(files))
            names << QFileInfo(file).fileName();
        calls << "files "_s + names.join(QLatin1Char(' '));
        framing = static_cast<HostApplication *>(qApp)->GetPluginSetting(UID(), "Framing"_s, QString()).toString();
    }
    QDomElement GetFileXmlParams(QString file) override
    {
        const bool off = file.contains("off"_s);
        const bool open = file.contains("open"_s) || file.contains("none"_s);
        return DescribeParameters(Name(), {{!off, false, false}, open ? QString() : profile}, {{"Framing"_s, framing}});
    }
    void Process(QString fileName, void *record, QString &output) override
    {
        const QFileInfo info(fileName);
        if (info.fileName().startsWith("slow"_s)) {
            began.release();
            while (!go.tryAcquire(1, 1)) {
                if (QThread::currentThread()->isInterruptionRequested())
                    throw KException("interrupted"_s, KPlace());
            }
        }
        if (info.fileName().startsWith("bad"_s))
            throw KException(fileName + ": pixels\nare lost"_s, KPlace());
        const bool finds = !info.fileName().startsWith("none"_s);
        auto *done = static_cast<Record *>(record);
        if (!info.fileName().startsWith("plain"_s))
            done->results = {{"Profile"_s, finds ? "/lenses/found.lcp"_s : QString()},
                             {"Entries"_s, "50 mm 100 %"_s},
                             {"Done"_s, finds ? "distortion"_s : QString()},
                             {"Why"_s, finds ? "vignetting: no model"_s : "unknown lens"_s}};
        if (!finds)
            throw KException("unknown lens"_s, KPlace());
        output = info.path() + QLatin1Char('/') + info.completeBaseName() + "_corrected.tiff"_s;
        WriteFile(output, (done->parameters.profile + done->framing + done->format).toUtf8());
    }

    struct Record {
        PictureParameters parameters;
        QString framing, format;
        QVector<QPair<QString, QString>> results;
    };
    std::unique_ptr<QWizardPage> page;
    QString profile, framing;
    QStringList calls; // on the GUI thread
    std::atomic<int> records{0};
    static inline QSemaphore began{0}, go{0}; // of all processes
};

} // namespace

class tst_Wizard : public QObject {
    Q_OBJECT
public Q_SLOTS:
    void Open(const QUrl &url)
    {
        m_opened = url;
        sigset_t blocked;
        pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
        QVERIFY(!sigismember(&blocked, SIGTERM)); // otherwise the file manager would ignore it
    }

private Q_SLOTS:
    void init();
    void cleanup();
    void picturesByDialogAndDrop();
    void reportsTheResultOfEach();
    void replacesOnRequest();
    void savesAsChosen();
    void correctsSeveralAtATime();
    void stopsAtOnce_data();
    void stopsAtOnce();
    void backKeepsChoices();
    void choicesStayWithTheirPictures();
    void realPluginFits();
    void usesTheUsersLanguage_data();
    void usesTheUsersLanguage();

private:
    void compareByKeyboard();
    void checkKeyboard() const;
    QString Path(const char *name) const { return m_dir->filePath(QString::fromUtf8(name)); }
    template <typename Widget> Widget *Find(const char *name) const
    {
        return m_wizard->findChild<Widget *>(QLatin1String(name));
    }
    void Click(const char *name) const { Find<QAbstractButton>(name)->click(); }
    void Next() const
    {
        QTRY_VERIFY(CanGoOn()); // the pictures are described, or the preview is rendered
        m_wizard->button(QWizard::NextButton)->click();
    }
    bool CanGoOn() const { return m_wizard->button(QWizard::NextButton)->isEnabled(); }
    /// Returns the rows of a list, with columns joined by '|'.
    QStringList Rows(const char *list, int columns = 2) const
    {
        QStringList rows;
        const QAbstractItemModel *model = Find<QAbstractItemView>(list)->model();
        for (int i = 0; i < model->rowCount(); ++i) {
            QStringList texts;
            for (int column = 0; column < columns; ++column)
                texts << model->index(i, column).data().toString();
            rows << texts.join(QLatin1Char('|'));
        }
        return rows;
    }
    /// Starts with pictures of these names; missing ones are created.
    void Show(const std::vector<KIPluginOne2One *> &processes, const QString &names,
              FittedCorrection *correction = nullptr)
    {
        m_wizard.reset(); // returns the page
        m_wizard =
            std::make_unique<CorrectionWizard>(m_host, processes, correction ? correction : &m_correction, g_guard);
        for (const QString &name : names.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            const QString path = m_dir->filePath(name);
            if (!QFile::exists(path))
                WriteJpeg(path, 60, 40);
            m_wizard->Add({path});
        }
        m_wizard->show();
    }
    void Drop(const QList<QUrl> &urls) const
    {
        QMimeData files;
        files.setUrls(urls);
        QWidget *page = m_wizard->currentPage();
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(page, &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(QPoint(5, 5), Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(page, &drop);
    }
    void Show(const QString &names) { Show({m_process.get()}, names); }
    bool Close() const { return m_wizard->button(QWizard::FinishButton)->isEnabled() && m_wizard->close(); }

    HostApplication *m_host = static_cast<HostApplication *>(qApp);
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<StandInProcess> m_process;
    FittedCorrection m_correction{{}, m_host, g_guard};
    std::unique_ptr<CorrectionWizard> m_wizard;
    QUrl m_opened;
};

void tst_Wizard::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_process = std::make_unique<StandInProcess>();
    m_process->page = std::make_unique<QWizardPage>();
    m_process->profile = Path("p.lcp");
    WriteFile(m_process->profile, Profile(kLens));
    m_host->Settings().clear();
}

void tst_Wizard::cleanup()
{
    m_wizard.reset();
    m_process->go.acquire(m_process->go.available());
    m_process->began.acquire(m_process->began.available());
    QCOMPARE(m_process->records.load(), 0);
    QVERIFY(!m_process->page || !m_process->page->parent()); // detached, otherwise it would be deleted twice
    for (const QWidget *window : QApplication::topLevelWidgets())
        QVERIFY2(!window->isVisible(), window->metaObject()->className());
}

void tst_Wizard::picturesByDialogAndDrop()
{
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
        WriteJpeg(Path(name), 60, 40);
    WriteFile(Path("d.jpg"), "no picture");
    WriteFile(Path("a_corrected.tiff"), "result");
    Show(QString());
    QVERIFY(!CanGoOn());

    QTimer::singleShot(0, this, [this] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        dialog->findChild<QLineEdit *>("fileNameEdit"_s)->setText(Path("b.jpg"));
        static_cast<QDialog *>(dialog)->accept();
    });
    Click("add");
    QCOMPARE(Rows("pictures", 1), QStringList("b.jpg"_s));
    QTRY_VERIFY(CanGoOn());

    Drop({QUrl::fromLocalFile(Path("c.jpg")), QUrl::fromLocalFile(m_dir->path()), QUrl("ftp://elsewhere/e.jpg"_s)});
    QCOMPARE(Rows("pictures", 1), QStringList({"b.jpg"_s, "c.jpg"_s, "a.jpg"_s, "d.jpg"_s}));
    QTRY_COMPARE(Rows("pictures").at(2), "a.jpg|60 × 40"_s);
    QTRY_VERIFY(Rows("pictures").at(3).size() > 6); // why it is not a picture
    Drop({QUrl::fromLocalFile(m_dir->path())});
    QCOMPARE(Find<QLabel>("notice")->text(), "No new pictures were found."_s);

    Find<QAbstractItemView>("pictures")->selectAll();
    Click("remove");
    QVERIFY(!CanGoOn());
    m_wizard->close();
}

void tst_Wizard::reportsTheResultOfEach()
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
    QVERIFY2(rows[3].contains("good.jpg\""_s), qPrintable(rows[3])); // whose output it would replace
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
    m_process->page.reset(); // a process without a page: from the pictures directly to the run
    WriteFile(Path("there_corrected.tiff"), "old");
    Show("there.jpg"_s);
    Click("replace");
    Next();
    QTRY_VERIFY(Close());
    QCOMPARE(ReadFile(Path("there_corrected.tiff")), m_process->profile.toUtf8() + "filltiff");
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
    QVERIFY(!Find<QAbstractScrollArea>("pictures")->viewport()->acceptDrops()); // the page does
    folder->setText("file://"_s + Path("in/out"));                              // as dropped
    Find<QComboBox>("format")->setCurrentIndex(2);
    Next();
    QTRY_VERIFY(Close());
    for (const char *name : {"in/out/a_corrected.png", "in/out/sub/a_corrected.png"})
        QVERIFY2(ReadFile(Path(name)).endsWith("fillpng"), name);
    Show(QString()); // the choices stay
    QVERIFY(Find<QLineEdit>("outputFolder")->text().endsWith("/in/out"_s));
    QCOMPARE(Find<QComboBox>("format")->currentData(), "png"_s);
    Drop({QUrl::fromLocalFile(Path("in"))});
    QCOMPARE(Rows("pictures", 1).size(), 2); // not the results
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
    m_wizard.reset(); // before the second process
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
    Next(); // the same pictures: their records stay
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

void tst_Wizard::choicesStayWithTheirPictures()
{
    const PluginLoader plugin(QStringLiteral(VITRELUX_PLUGIN), CorrectionMode::Fitted);
    QVERIFY2(plugin.Process(), qPrintable(plugin.Problem()));
    const auto choices = [&](const char *name) {
        return ReadParameters(plugin.Process()->GetFileXmlParams(Path(name)));
    };
    m_host->SetPluginSetting(plugin.Process()->UID(), "Disto"_s, false);
    Show({plugin.Process()}, "gone.jpg a.jpg"_s);
    Next();
    auto *list = Find<QComboBox>("comboBoxImageDef");
    list->setCurrentText("a.jpg"_s);
    Click("m_cbDistortion");
    list->setCurrentText("gone.jpg"_s);
    Click("m_cbCA");
    QTRY_VERIFY(CanGoOn());
    m_wizard->back();
    auto *pictures = Find<QAbstractItemView>("pictures");
    pictures->setCurrentIndex(pictures->model()->index(0, 0));
    Click("remove");
    WriteJpeg(Path("b.jpg"), 60, 40);
    m_wizard->Add({Path("b.jpg")});
    Next();
    QVERIFY(choices("a.jpg").corrections.distortion);
    QVERIFY(!choices("a.jpg").corrections.chromatic);
    QVERIFY2(!choices("b.jpg").corrections.Any(), "a new picture has the stored settings");
    list->setCurrentText("a.jpg"_s);
    QVERIFY(Find<QCheckBox>("m_cbDistortion")->isChecked());
    QTRY_VERIFY(CanGoOn());
    m_wizard->close();
    m_wizard.reset(); // before the plug-in
}

void tst_Wizard::realPluginFits()
{
    QVERIFY(QDir(m_dir->path()).mkdir("lenses"_s));
    WriteFile(Path("lenses/x.lcp"), Profile("Canon EF 24-105mm f/4L IS USM"));
    const std::pair<const char *, Told> pictures[] = {
        {"found.jpg", {kLens, "50/1", "8/1"}},
        {"none.jpg", {"EF24-105mm f/4L IS III USM", "50/1", "8/1"}},
        {"before.jpg", {kLens, "50/1", "8/1", true}},
        {"known.jpg", {"EF135mm f/2L USM", "135/1", "8/1"}}, // a lens in lensfun's database
    };
    for (const auto &[name, metadata] : pictures) {
        WriteJpeg(Path(name), 60, 40);
        WriteMetadata(Path(name), metadata);
    }
    const QByteArray xmp("\xFF\xE1\0\x21http://ns.adobe.com/xap/1.0/\0<x", 35); // damaged
    WriteFile(Path("found.jpg"), ReadFile(Path("found.jpg")).insert(2, xmp));
    QVERIFY(WizardPlugin(m_host, QStringLiteral(VITRELUX_PLUGIN), Path("gone"), g_guard).Problem().contains("gone"_s));
    WizardPlugin plugin(m_host, QStringLiteral(VITRELUX_PLUGIN), Path("lenses"), g_guard);
    QCOMPARE(plugin.Problem(), QString());
    Show(plugin.Processes(), "found.jpg none.jpg before.jpg known.jpg"_s, plugin.Correction());
    Find<QComboBox>("framing")->setCurrentIndex(1);
    Next();
    Find<QComboBox>("comboBoxImageDef")->setCurrentText("found.jpg"_s);
    QTRY_COMPARE(Find<QLineEdit>("lineEditLensFile")->placeholderText(), "Found: x.lcp"_s);
    Click("pushButtonApplyAll");
    Next();
    QTRY_VERIFY(m_wizard->button(QWizard::FinishButton)->isEnabled());
    const QStringList rows = Rows("results");
    QVERIFY2(rows[0].startsWith("found.jpg|Corrected: profile \"x.lcp\"; entries: 50 mm f/8 10 m 100 %; "_s)
                 && rows[0].contains("damaged metadata"_s),
             qPrintable(rows[0]));
    QVERIFY2(rows[1].startsWith("none.jpg|Failed: No lens profile"_s) && rows[1].contains("; nearest: "_s),
             qPrintable(rows[1]));
    QVERIFY2(rows[2].startsWith("before.jpg|Skipped, corrected before: distortion"_s), qPrintable(rows[2]));
    QVERIFY2(rows[3].startsWith("known.jpg|Corrected: profile \"lensfun: Canon/Canon EF 135mm"_s), qPrintable(rows[3]));
    QCOMPARE(Find<QLabel>("state")->text(), "2 pictures corrected, 1 corrected before, 1 failed"_s);
    compareByKeyboard();
    for (const auto &[name, metadata] : pictures) {
        const QDomElement record = plugin.Processes().front()->GetFileXmlParams(Path(name));
        QVERIFY2(record.attribute("LCPfilename"_s).isEmpty(), name); // a profile that was found isn't a choice
        QVERIFY2(record.attribute("Framing"_s) == "keep"_s, name);
        const Corrections on = ReadParameters(record).corrections; // nothing else was ever stored
        QVERIFY2(on.distortion && on.chromatic && on.vignetting, name);
    }
    m_wizard.reset(); // before the plug-in
    QVERIFY(QFile::remove(Path("found_corrected.tiff")));
    QString problem; // of a run on an interrupted thread
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        QThread::currentThread()->requestInterruption();
        KIPluginOne2One *process = plugin.Processes().front();
        const ParameterRecord record(process, DescribeParameters(process->Name(), {{true, false, false}, QString()}));
        try {
            QString output;
            process->Process(Path("found.jpg"), record.Get(), output);
        } catch (const KException &e) {
            problem = e.what();
        }
    }));
    thread->start();
    thread->wait();
    QCOMPARE(problem, "interrupted"_s);
    QVERIFY(!QFile::exists(Path("found_corrected.tiff")));
}

/// Opens the first row of the results with Return, zooms, and closes the window with Escape.
void tst_Wizard::compareByKeyboard()
{
    bool isDone = false;
    QTimer::singleShot(0, m_wizard.get(), [&isDone] {
        auto *dialog = qobject_cast<CompareDialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        auto *before = dialog->findChild<ComparedView *>("before"_s),
             *after = dialog->findChild<ComparedView *>("after"_s);
        QTRY_COMPARE(after->Image().size(), QSize(60, 40));
        QVERIFY(before->Image().size() == after->Image().size() && before->Image() != after->Image());
        const QRectF whole = after->PictureRect();
        QTest::keyClick(after, Qt::Key_Plus);
        QTest::keyClick(after, Qt::Key_Right);
        QVERIFY(after->PictureRect().width() > whole.width() && after->PictureRect().right() > after->width());
        QCOMPARE(before->PictureRect(), after->PictureRect());
        QTest::keyClick(after, Qt::Key_0);
        QCOMPARE(after->PictureRect(), whole);
        isDone = true;
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    auto *results = Find<QAbstractItemView>("results");
    m_wizard->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_wizard.get()));
    results->setFocus();
    results->setCurrentIndex(results->model()->index(0, 0));
    QTest::keyClick(results, Qt::Key_Return);
    QVERIFY(isDone && m_wizard->isVisible());
    results->setCurrentIndex(results->model()->index(1, 0));
    QVERIFY(!Find<QAbstractButton>("compare")->isEnabled()); // a failed picture
    m_wizard->close();
}

void tst_Wizard::usesTheUsersLanguage_data()
{
    QTest::addColumn<QString>("ofPlugin"); // what its description contains
    QTest::addColumn<QString>("ofWindow"); // and the window's title
    const auto row = [](const char *locale, const char *ofPlugin, const char *ofWindow) {
        QTest::newRow(locale) << QString::fromUtf8(ofPlugin) << QString::fromUtf8(ofWindow);
    };
    row("fi_FI", "This plugin reuse", "lens correction"); // first: translators stay
    row("zh_TW", "描述檔", "鏡頭校正");
    row("zh_CN", "配置文件", "镜头校正");
    row("fr_FR", "profils", "correction d'objectif");
    row("es_ES", "perfiles", "corrección");
    row("pl_PL", "jego profili", "korekcja");
    row("ru_RU", "профилям", "коррекция");
    row("it_IT", "profili", "correzione");
    row("ja_JP", "プロファイル", "補正");
    row("de_AT", "Verzeichnung", "korrektur");
}

/// Checks that Tab reaches all widgets of the page in reading order, and that no button or label shares its key.
void tst_Wizard::checkKeyboard() const
{
    QMap<QString, QString> texts; // by key
    for (const QWidget *widget : m_wizard->findChildren<QWidget *>()) {
        const QString text = widget->property("text").toString();
        const QString key = QKeySequence::mnemonic(text).toString();
        if (!widget->isVisible() || key.isEmpty())
            continue;
        QVERIFY2(!texts.contains(key), qPrintable(text + " and "_s + texts[key]));
        texts[key] = text;
        QVERIFY2(widget->width() >= widget->sizeHint().width(), qPrintable(text)); // not cut off
    }
    QPoint last;
    const QWidget *page = m_wizard->currentPage();
    for (const QWidget *widget = page->nextInFocusChain(); widget != page; widget = widget->nextInFocusChain()) {
        if (!page->isAncestorOf(widget) || !widget->isVisible() || widget->focusPolicy() == Qt::NoFocus
            || (widget->parent() != page && !widget->property("text").isValid()))
            continue;
        const QPoint place = widget->mapTo(page, QPoint());
        QVERIFY2(place.y() > last.y() + 4 || place.x() > last.x(), qPrintable(widget->objectName()));
        last = place;
    }
}

void tst_Wizard::usesTheUsersLanguage()
{
    QFETCH(QString, ofPlugin);
    QFETCH(QString, ofWindow);
    QLocale::setDefault(QLocale(QString::fromLatin1(QTest::currentDataTag())));
    m_host->TranslateWindows();
    const PluginLoader plugin(QStringLiteral(VITRELUX_PLUGIN), CorrectionMode::Fitted);
    QVERIFY2(plugin.Process()->Comment().contains(ofPlugin), qPrintable(plugin.Process()->Comment()));
    m_host->SetPluginSetting(plugin.Process()->UID(), "Disto"_s, true);
    m_host->SetPluginSetting(plugin.Process()->UID(), "LCPfilename"_s, m_process->profile);
    Show({plugin.Process()}, QString());
    QVERIFY2(m_wizard->windowTitle().contains(ofWindow, Qt::CaseInsensitive), qPrintable(m_wizard->windowTitle()));

    m_wizard->resize(1, 1); // the description of the plug-in's page is fully visible in a narrow window
    WriteJpeg(Path("cut.jpg"), 60, 40);
    WriteMetadata(Path("cut.jpg"), {kLens, "50/1", "8/1"});
    WriteFile(Path("cut.jpg"), ReadFile(Path("cut.jpg")).chopped(500));
    m_wizard->Add({Path("cut.jpg")});
    QTRY_VERIFY(CanGoOn());
    checkKeyboard();
    Next();
    QApplication::processEvents();
    const QList<QLabel *> labels = m_wizard->findChildren<QLabel *>();
    const auto header = std::find_if(labels.begin(), labels.end(), [this](const QLabel *label) {
        return label->text() == m_wizard->currentPage()->subTitle();
    });
    QVERIFY(header != labels.end());
    QVERIFY((*header)->heightForWidth((*header)->width()) <= (*header)->height());
    Next();
    checkKeyboard();
    QTRY_VERIFY(Close());
    QVERIFY2(Rows("results")[0].contains("the file ends early"_s), qPrintable(Rows("results")[0])); // not its number
    m_wizard.reset(); // before the plug-in
}

int main(int argc, char **argv)
{
    QTemporaryDir settings; // not the user's
    for (const char *variable : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
        qputenv(variable, QFile::encodeName(settings.path()));
    InterruptGuard guard;
    g_guard = &guard;
    ChooseDisplayless();
    HostApplication application(argc, argv);
    application.TranslateWindows();
    tst_Wizard test;
    return QTest::qExec(&test, argc, argv);
}
#include "Wizard_test.moc"
