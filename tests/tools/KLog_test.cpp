// The log: listeners, files that can't be written, and threads.
#include "KLog.h"

#include "Case.h"
#include "Files.h"
#include "KException.h"
#include "Threads.h"

#include <QApplication>
#include <QMessageBox>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QTimer>
#include <QtTest>

const QString kWithoutWidgets = QStringLiteral("--without-widgets");

class tst_KLog : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { KLog::init(nullptr); }
    void cleanup() { KLog::exit(); }

    void listenersWithoutFile();
    void fileContainsOnlyTheLine();
    void unwritableFileShowsABox();
    void fullDiskLeavesNothingBehind();
    void threadsKeepLinesWhole();
    void exceptionNamesItsSource();

private:
    QTemporaryDir m_dir;
};

void tst_KLog::listenersWithoutFile()
{
    QSignalSpy plain(KLog::ms_instance, SIGNAL(Logged(QString)));
    QSignalSpy numbered(KLog::ms_instance, SIGNAL(Logged(int, QString)));
    KLog::ms_instance->Log(QStringLiteral("a"));
    KLog::ms_instance->Log("%s %d", "c", 1);
    KLog::ms_instance->Log(3, "%s-%d", "b", 7);
    QCOMPARE(QList<QList<QVariant>>(plain), (QList<QList<QVariant>>{{QStringLiteral("a")}, {QStringLiteral("c 1")}}));
    QCOMPARE(QList<QList<QVariant>>(numbered), (QList<QList<QVariant>>{{3, QStringLiteral("b-7")}}));
}

void tst_KLog::fileContainsOnlyTheLine()
{
    QTextCodec *const own = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1")); // the file must still be UTF-8
    const QString name = m_dir.filePath(QStringLiteral("lines.log"));
    for (const bool append : {false, true, false}) {
        const Case named("append", append);
        KLog::ms_instance->EnableLogToFile(name, append);
        KLog::ms_instance->Log(QString::fromUtf8("Blende ƒ/2,8 — ü"));
        QCOMPARE(ReadFile(name), QByteArray("Blende ƒ/2,8 — ü\r\n").repeated(append ? 2 : 1));
    }
    QTextCodec::setCodecForLocale(own);
    KLog::ms_instance->Clear();
    KLog::ms_instance->Log(3, "abc");
    KLog::ms_instance->DisableLogToFile();
    KLog::ms_instance->Log(QStringLiteral("unheard"));
    QCOMPARE(ReadFile(name), QByteArray("abc\r\n"));
    KLog::ms_instance->Clear(); // doesn't switch logging on again
    KLog::ms_instance->Log(QStringLiteral("unheard"));
    QCOMPARE(ReadFile(name), QByteArray());
}

void tst_KLog::unwritableFileShowsABox()
{
    const QString name = m_dir.filePath(QStringLiteral("absent/x.log"));
    QString title, text;
    QTimer::singleShot(0, this, [&] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        QVERIFY(box);
        title = box->windowTitle();
        text = box->text();
        KLog::ms_instance->Log(QStringLiteral("while the box is up")); // from the box's event loop
        box->accept();
    });
    KLog::ms_instance->EnableLogToFile(name, /*append=*/false);
    QCOMPARE(title, QStringLiteral("Critical error"));
    QCOMPARE(text, QStringLiteral("Can not open file %1").arg(name));
    QSignalSpy heard(KLog::ms_instance, SIGNAL(Logged(QString)));
    KLog::ms_instance->Log(QStringLiteral("nowhere"));
    QCOMPARE(heard.size(), 1);
    QVERIFY(!QFile::exists(name));

    QProcess withoutWidgets;
    withoutWidgets.start(QCoreApplication::applicationFilePath(), {kWithoutWidgets, name});
    QVERIFY(withoutWidgets.waitForFinished() && withoutWidgets.exitStatus() == QProcess::NormalExit);
    QCOMPARE(withoutWidgets.readAllStandardError(),
             QStringLiteral("Can not open file %1: No such file or directory\n").arg(name).toUtf8());
}

void tst_KLog::fullDiskLeavesNothingBehind()
{
    KLog::ms_instance->EnableLogToFile(QStringLiteral("/dev/full"), /*append=*/false);
    for (int i = 0; i < 1000; ++i)
        KLog::ms_instance->Log(QString(100, QLatin1Char('x')));
    const QString name = m_dir.filePath(QStringLiteral("roomy.log"));
    KLog::ms_instance->EnableLogToFile(name, /*append=*/false);
    KLog::ms_instance->Log(QStringLiteral("after"));
    QCOMPARE(ReadFile(name), QByteArray("after\r\n")); // the lost lines weren't buffered
}

void tst_KLog::threadsKeepLinesWhole()
{
    const QString name = m_dir.filePath(QStringLiteral("threads.log"));
    KLog::ms_instance->EnableLogToFile(name, /*append=*/false);
    InThreads(4, [](int t) {
        for (int i = 0; i < 200; ++i)
            KLog::ms_instance->Log(QString(20, QLatin1Char(char('a' + t))));
    });
    KLog::ms_instance->DisableLogToFile();
    QMap<QByteArray, int> lines;
    for (const QByteArray &line : ReadFile(name).split('\n'))
        ++lines[line];
    for (int t = 0; t < 4; ++t)
        QCOMPARE(lines.value(QByteArray(20, char('a' + t)) + '\r'), 200);
}

void tst_KLog::exceptionNamesItsSource()
{
    QCOMPARE(KPlace("some/folder/KImage.cpp", 262), QStringLiteral("File: \"KImage\" Line: 262"));
    QCOMPARE(KPlace(), QStringLiteral("File: \"KLog_test\" Line: %1").arg(__LINE__));
}

int main(int argc, char **argv)
{
    if (argc == 3 && kWithoutWidgets == QLatin1String(argv[1])) {
        QCoreApplication application(argc, argv);
        KLog().EnableLogToFile(QString::fromLocal8Bit(argv[2]), /*append=*/false);
        return 0;
    }
    QApplication application(argc, argv);
    tst_KLog test;
    return QTest::qExec(&test, argc, argv);
}

#include "KLog_test.moc"
