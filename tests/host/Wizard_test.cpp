// The desktop wizard, driven as a user does, around a process that stands in for the plug-in's.
#include "wizard/CorrectionWizard.h"

#include "HostApplication.h"
#include "InterruptGuard.h"
#include "KException.h"
#include "PluginLoader.h"
#include "TestFiles.h"
#include "wizard/RunPage.h"

#include <QAbstractButton>
#include <QAbstractItemView>
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

/// Notes its calls. Pictures are told apart by their names: "bad" fails, "slow" waits for `go`.
class StandInProcess : public KIPluginOne2One {
public:
    QString Name() const override { return QStringLiteral("Stand-in"); }
    QString Author() const override { return QString(); }
    QString Company() const override { return QString(); }
    QString Comment() const override { return QString(); }
    QString Version() const override { return QString(); }
    QIcon Icon() const override { return QIcon(); }
    QString UID() const override { return QString(); }
    QIcon BeforeAfter() const override { return QIcon(); }
    QWizardPage *WizardPage() override { return page.get(); }
    void OnValidatePage() override { calls << QStringLiteral("validate"); }
    void *AllocParameters(QDomElement element) override
    {
        ++records;
        return new PictureParameters(ReadParameters(element));
    }
    void FreeParameters(void *record) override
    {
        --records;
        delete static_cast<PictureParameters *>(record);
    }
    void SetFiles(QStringList files) override
    {
        QStringList names;
        for (const QString &file : qAsConst(files))
            names << QFileInfo(file).fileName();
        calls << QLatin1String("files ") + names.join(QLatin1Char(' '));
    }
    QDomElement GetFileXmlParams(QString file) override
    {
        const bool off = file.contains(QLatin1String("off"));
        const bool open = file.contains(QLatin1String("open")) || file.contains(QLatin1String("none"));
        return DescribeParameters(Name(), {{!off, false, false}, open ? QString() : profile});
    }
    void Process(QString fileName, void *record, QString &output) override
    {
        const QFileInfo info(fileName);
        if (info.fileName().startsWith(QLatin1String("slow"))) {
            began.release();
            while (!go.tryAcquire(1, 1) && !(goesWhenStopped && QThread::currentThread()->isInterruptionRequested())) {
            }
        }
        if (info.fileName().startsWith(QLatin1String("bad")))
            throw KException(fileName + QStringLiteral(": pixels\nare lost"), KPlace());
        output = info.path() + QLatin1Char('/') + info.completeBaseName() + QLatin1String("_corrected.tiff");
        WriteBytes(output, static_cast<PictureParameters *>(record)->profile.toUtf8());
    }

    std::unique_ptr<QWizardPage> page;
    QString profile;
    QStringList calls; // on the GUI thread
    std::atomic<int> records{0};
    QSemaphore began, go;
    bool goesWhenStopped = false;
};

} // namespace

class WizardTest : public QObject {
    Q_OBJECT
public Q_SLOTS:
    void Open(const QUrl &url)
    {
        m_opened = url;
        sigset_t blocked;
        pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
        QVERIFY(!sigismember(&blocked, SIGTERM)); // or the file manager would be deaf to it
    }

private Q_SLOTS:
    void init();
    void cleanup();
    void picturesByDialogAndDrop();
    void runTellsWhatCameOfEach();
    void replacesWhereToldTo();
    void stopEndsBehindThePictureUnderWay_data();
    void stopEndsBehindThePictureUnderWay();
    void backKeepsWhatWasChosen();
    void remembersItsSize();
    void realPluginCorrects();
    void speaksTheUsersLanguage_data();
    void speaksTheUsersLanguage();

private:
    QString Path(const QString &name) const { return m_dir->filePath(name); }
    void Pictures(const QStringList &names)
    {
        for (const QString &name : names)
            WriteJpeg(Path(name), 60, 40);
    }
    QStringList Paths(const QStringList &names) const
    {
        QStringList paths;
        for (const QString &name : names)
            paths << Path(name);
        return paths;
    }
    template <typename Widget> Widget *Find(const char *name) const
    {
        return m_wizard->findChild<Widget *>(QLatin1String(name));
    }
    void Click(const char *name) const { Find<QAbstractButton>(name)->click(); }
    void Next() const
    {
        QTRY_VERIFY(CanGoOn()); // once the pictures are looked at, once the preview is there
        m_wizard->button(QWizard::NextButton)->click();
    }
    bool CanGoOn() const { return m_wizard->button(QWizard::NextButton)->isEnabled(); }
    /// The rows of a list: its columns joined by '|'.
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
    void Show(KIPluginOne2One *process, const QStringList &names)
    {
        const auto find = [this](const QString &picture) {
            return picture.contains(QLatin1String("open")) ? m_process->profile : QString();
        };
        m_wizard = std::make_unique<CorrectionWizard>(static_cast<HostApplication *>(qApp), process, find, g_guard);
        m_wizard->Add(Paths(names));
        m_wizard->show();
    }
    bool Close() const { return m_wizard->button(QWizard::FinishButton)->isEnabled() && m_wizard->close(); }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<StandInProcess> m_process;
    std::unique_ptr<CorrectionWizard> m_wizard;
    QUrl m_opened;
};

void WizardTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_process = std::make_unique<StandInProcess>();
    m_process->page = std::make_unique<QWizardPage>();
    m_process->profile = Path(QStringLiteral("p.lcp"));
    WriteBytes(m_process->profile, ProfileText(ProfileModels(), 60, 40));
}

void WizardTest::cleanup()
{
    m_process->go.release(2); // a test that failed may have left the run waiting
    m_wizard.reset();
    QCOMPARE(m_process->records.load(), 0);
    QVERIFY(!m_process->page || !m_process->page->parent()); // given back, or it would be deleted twice
    for (const QWidget *window : QApplication::topLevelWidgets())
        QVERIFY2(!window->isVisible(), window->metaObject()->className());
}

void WizardTest::picturesByDialogAndDrop()
{
    Pictures({QStringLiteral("a.jpg"), QStringLiteral("b.jpg"), QStringLiteral("c.jpg")});
    WriteBytes(Path(QStringLiteral("d.jpg")), "no picture");
    Show(m_process.get(), {});
    QVERIFY(!CanGoOn());

    QTimer::singleShot(0, this, [this] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->setText(Path(QStringLiteral("b.jpg")));
        static_cast<QDialog *>(dialog)->accept();
    });
    Click("add");
    QCOMPARE(Rows("pictures", 1), QStringList(QStringLiteral("b.jpg")));
    QTRY_VERIFY(CanGoOn());

    QMimeData files; // the folder holds b.jpg again
    files.setUrls({QUrl::fromLocalFile(Path(QStringLiteral("c.jpg"))), QUrl::fromLocalFile(m_dir->path()),
                   QUrl(QStringLiteral("ftp://elsewhere/e.jpg"))});
    QWidget *page = m_wizard->currentPage();
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(page, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPoint(5, 5), Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(page, &drop);
    QCOMPARE(Rows("pictures", 1),
             QStringList(
                 {QStringLiteral("b.jpg"), QStringLiteral("c.jpg"), QStringLiteral("a.jpg"), QStringLiteral("d.jpg")}));
    QTRY_COMPARE(Rows("pictures").at(2), QStringLiteral("a.jpg|60 × 40"));
    QTRY_VERIFY(Rows("pictures").at(3).size() > 6); // why it is none

    Find<QAbstractItemView>("pictures")->selectAll();
    Click("remove");
    QVERIFY(!CanGoOn());
    m_wizard->close();
}

void WizardTest::runTellsWhatCameOfEach()
{
    const QStringList names{QStringLiteral("good.jpg"), QStringLiteral("bad.jpg"), QStringLiteral("there.jpg"),
                            QStringLiteral("good.tif"), QStringLiteral("off.jpg"), QStringLiteral("open.jpg"),
                            QStringLiteral("none.jpg"), QStringLiteral("text.jpg")};
    Pictures(names);
    WriteBytes(Path(QStringLiteral("text.jpg")), "no picture");
    WriteBytes(Path(QStringLiteral("there_corrected.tiff")), "old");
    Show(m_process.get(), names);
    Next();
    Next();
    QTRY_VERIFY(Close());
    QCOMPARE(
        m_process->calls,
        QStringList({QLatin1String("files ") + names.mid(0, 7).join(QLatin1Char(' ')), QStringLiteral("validate")}));
    const QStringList rows = Rows("results");
    QCOMPARE(rows[0], QStringLiteral("good.jpg|Corrected"));
    QCOMPARE(rows[1], QStringLiteral("bad.jpg|Failed: pixels are lost"));
    QVERIFY(rows[2].contains(QLatin1String("exists already")));
    QVERIFY2(rows[3].contains(QLatin1String("good.jpg\"")), qPrintable(rows[3])); // whose output it would replace
    QVERIFY(rows[4].contains(QLatin1String("No correction")));
    QCOMPARE(rows[5], QStringLiteral("open.jpg|Corrected"));
    QCOMPARE(ReadBytes(Path(QStringLiteral("open_corrected.tiff"))), m_process->profile.toUtf8());
    QVERIFY(rows[6].contains(QLatin1String("No lens profile")));
    QVERIFY(rows[7].startsWith(QLatin1String("text.jpg|Failed: ")));
    QCOMPARE(m_wizard->FailedCount(), 5);
    QCOMPARE(Find<QLabel>("state")->text(), QStringLiteral("2 pictures corrected, 1 left as it was, 5 failed"));
    QCOMPARE(Find<QProgressBar>("progress")->value(), names.size());
    QCOMPARE(ReadBytes(Path(QStringLiteral("good_corrected.tiff"))), m_process->profile.toUtf8());
    QCOMPARE(ReadBytes(Path(QStringLiteral("there_corrected.tiff"))), QByteArray("old"));
    QCOMPARE(Names(m_dir->path()).size(), names.size() + 4); // the profile and three outputs: no work folder is left

    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "Open");
    Click("showInFolder");
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    QCOMPARE(m_opened.toLocalFile(), m_dir->path());
}

void WizardTest::replacesWhereToldTo()
{
    m_process->page.reset(); // and a process without a page: from the pictures right to the run
    Pictures({QStringLiteral("there.jpg")});
    WriteBytes(Path(QStringLiteral("there_corrected.tiff")), "old");
    WriteBytes(m_process->profile, ProfileText(ProfileModels(), 600, 400));
    Show(m_process.get(), {QStringLiteral("there.jpg")});
    Click("replace");
    Next();
    QTRY_VERIFY(Close());
    QVERIFY2(Rows("results")[0].contains(QLatin1String("600x400")), qPrintable(Rows("results")[0]));
    QCOMPARE(ReadBytes(Path(QStringLiteral("there_corrected.tiff"))), m_process->profile.toUtf8());
}

void WizardTest::stopEndsBehindThePictureUnderWay_data()
{
    QTest::addColumn<QString>("manner");
    for (const char *manner : {"button", "window closed", "window closed twice", "deleted"})
        QTest::newRow(manner) << QString::fromLatin1(manner);
}

void WizardTest::stopEndsBehindThePictureUnderWay()
{
    QFETCH(QString, manner);
    const QStringList names{QStringLiteral("slow.jpg"), QStringLiteral("next.jpg")};
    Pictures(names);
    m_process->goesWhenStopped = manner == QLatin1String("deleted");
    Show(m_process.get(), names);
    Next();
    Next();
    m_process->began.acquire();
    QVERIFY(!Close());
    QVERIFY(!m_wizard->button(QWizard::BackButton)->isEnabled());
    if (manner == QLatin1String("button"))
        Click("stop");
    if (manner.startsWith(QLatin1String("window closed")))
        m_wizard->close();
    QVERIFY(m_wizard->isVisible());
    if (manner == QLatin1String("window closed twice"))
        m_wizard->close();
    QCOMPARE(m_wizard->isVisible(), manner != QLatin1String("window closed twice"));
    if (!m_process->goesWhenStopped) {
        m_process->go.release();
        QTRY_VERIFY(!m_wizard->findChild<RunPage *>()->IsRunning());
        QCOMPARE(Rows("results"),
                 QStringList(
                     {QStringLiteral("slow.jpg|Corrected"), QStringLiteral("next.jpg|Not corrected: stopped before")}));
    }
    m_wizard.reset();
    QVERIFY(!QFile::exists(Path(QStringLiteral("next_corrected.tiff"))));
}

void WizardTest::backKeepsWhatWasChosen()
{
    Pictures({QStringLiteral("a.jpg"), QStringLiteral("b.jpg")});
    Show(m_process.get(), {QStringLiteral("a.jpg")});
    Next();
    m_wizard->back();
    Next(); // the same pictures: their records stay
    m_wizard->back();
    m_wizard->Add({Path(QStringLiteral("b.jpg"))});
    Next();
    QCOMPARE(m_process->calls, QStringList({QStringLiteral("files a.jpg"), QStringLiteral("files a.jpg b.jpg")}));
    m_wizard->close();
}

void WizardTest::remembersItsSize()
{
    Show(m_process.get(), {});
    const QSize chosen = m_wizard->size() + QSize(-57, 31);
    m_wizard->resize(chosen);
    m_wizard->close();
    Show(m_process.get(), {});
    QCOMPARE(m_wizard->size(), chosen);
    m_wizard->close();
}

void WizardTest::realPluginCorrects()
{
    Pictures({QStringLiteral("a.jpg")});
    const PluginLoader plugin(QStringLiteral(VITRELUX_PLUGIN));
    QVERIFY2(plugin.Process(), qPrintable(plugin.Problem()));
    auto *host = static_cast<HostApplication *>(qApp);
    host->SetPluginSetting(plugin.Process()->UID(), QStringLiteral("Disto"), true);
    host->SetPluginSetting(plugin.Process()->UID(), QStringLiteral("LCPfilename"), m_process->profile);
    Show(plugin.Process(), {QStringLiteral("a.jpg")});
    do {
        Next();
    } while (m_wizard->nextId() != -1);
    QTRY_VERIFY(Close());
    QCOMPARE(Rows("results"), QStringList(QStringLiteral("a.jpg|Corrected")));
    QCOMPARE(ReadBytes(Path(QStringLiteral("a_corrected.tiff"))).left(2), QByteArray("II"));
    m_wizard.reset(); // ahead of the plug-in
}

void WizardTest::speaksTheUsersLanguage_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("ofPlugin"); // a part of it
    QTest::addColumn<QString>("ofWindow");
    QTest::newRow("none, so English") << QStringLiteral("fi_FI") << QStringLiteral("This plugin reuse")
                                      << QStringLiteral("lens correction"); // translators stay: it goes first
    QTest::newRow("its country's") << QStringLiteral("zh_TW") << QStringLiteral("描述檔") << QStringLiteral("鏡頭校正");
    QTest::newRow("another country's") << QStringLiteral("de_AT") << QStringLiteral("Verzeichnung")
                                       << QStringLiteral("korrektur");
}

void WizardTest::speaksTheUsersLanguage()
{
    QFETCH(QString, locale);
    QFETCH(QString, ofPlugin);
    QFETCH(QString, ofWindow);
    QLocale::setDefault(QLocale(locale));
    static_cast<HostApplication *>(qApp)->TranslateWindows();
    const PluginLoader plugin(QStringLiteral(VITRELUX_PLUGIN));
    QVERIFY2(plugin.Process()->Comment().contains(ofPlugin), qPrintable(plugin.Process()->Comment()));
    Show(plugin.Process(), {});
    QVERIFY2(m_wizard->windowTitle().contains(ofWindow), qPrintable(m_wizard->windowTitle()));

    m_wizard->resize(1, 1); // what the plug-in's page says of itself shows whole, however narrow the window
    m_wizard->Add({m_process->profile});
    Next();
    QApplication::processEvents();
    const QList<QLabel *> labels = m_wizard->findChildren<QLabel *>();
    const auto header = std::find_if(labels.begin(), labels.end(), [this](const QLabel *label) {
        return label->text() == m_wizard->currentPage()->subTitle();
    });
    QVERIFY(header != labels.end());
    QVERIFY((*header)->heightForWidth((*header)->width()) <= (*header)->height());
    m_wizard->close();
    m_wizard.reset();
}

int main(int argc, char **argv)
{
    QTemporaryDir settings; // not the user's
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(settings.path()));
    InterruptGuard guard;
    g_guard = &guard;
    ChooseDisplayless();
    HostApplication application(argc, argv);
    application.TranslateWindows();
    WizardTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "Wizard_test.moc"
