#include "analytics/KDbSession.h"

#include <QProcess>
#include <QSqlError>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <cstdlib>

namespace {

const QString kSqlite = QStringLiteral("QSQLITE");

class Notes : public KDbSession {
public:
    explicit Notes(QString driver = kSqlite, const QString &connection = QStringLiteral("notes"))
        : KDbSession(connection, driver, nullptr)
    {
    }
    void buildTables(QSqlDatabase &db) override
    {
        QSqlQuery(db).exec(
            QStringLiteral("CREATE TABLE IF NOT EXISTS notes(id INTEGER PRIMARY KEY, text TEXT, n REAL)"));
    }
    QStringList allTables() override { return {QStringLiteral("missing"), QStringLiteral("notes")}; }

    void Add(const QString &text)
    {
        executeQuery(KDbQuery(QStringLiteral("INSERT INTO notes (text, n) VALUES(:text, :n)"),
                              {{QStringLiteral("n"), 1.5}, {QStringLiteral("text"), text}}));
    }
    QStringList Texts()
    {
        QStringList texts;
        QSqlQuery rows = executeQuery(QStringLiteral("SELECT text FROM notes ORDER BY id"));
        while (rows.next())
            texts << rows.value(0).toString();
        return texts;
    }
};

/// Work of a process that dies between commit and cancel.
[[noreturn]] void DieInTheMiddle(const QString &path)
{
    Notes notes;
    notes.setUseRollBack(true);
    notes.setFilePath(path);
    notes.Add(QStringLiteral("kept"));
    notes.commitAll();
    notes.Add(QStringLiteral("lost"));
    raise(SIGKILL);
    abort();
}

} // namespace

class tst_KDbSession : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { m_dir = std::make_unique<QTemporaryDir>(); }

    void closedSession();
    void commitAndCancel_data();
    void commitAndCancel();
    void savepoint_data();
    void savepoint();
    void killedBetweenCommitAndCancel();
    void reopened();
    void failedStatementDoesntStopAList();
    void erased();
    void copied();
    void unusableFile_data();
    void unusableFile();
    void lockedByAnother();
    void twoKeptOutByAReader();

private:
    QString Path(const char *name = "notes.db") const { return m_dir->filePath(QString::fromLatin1(name)); }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void tst_KDbSession::closedSession()
{
    Notes notes;
    QVERIFY(!notes.checkDb());
    QVERIFY(!notes.executeQuery(QStringLiteral("SELECT 1")).isActive());
    QVERIFY(!notes.executeQuery(KDbQuery(QStringLiteral("SELECT 1"), {})).isActive());
    QVERIFY(!notes.executeQueries(QStringList{QStringLiteral("SELECT 1")}).isActive());
    QVERIFY(!notes.executeQueries(QList<KDbQuery>{}).isActive());
    notes.setUseRollBack(true);
    notes.commitAll();
    notes.cancelAll();
    notes.close();
    notes.eraseDb();
    QVERIFY(!notes.fileDb(/*open=*/false).isValid());
}

void tst_KDbSession::commitAndCancel_data()
{
    QTest::addColumn<bool>("useRollBack");
    QTest::addColumn<QStringList>("left");
    const QString a = QStringLiteral("a"), b = QStringLiteral("b"), c = QStringLiteral("c");
    QTest::newRow("within savepoints") << true << QStringList{a};
    QTest::newRow("each statement by itself") << false << QStringList{a, b, c};
}

void tst_KDbSession::commitAndCancel()
{
    QFETCH(bool, useRollBack);
    QFETCH(QStringList, left);
    Notes notes;
    notes.setUseRollBack(useRollBack);
    notes.setFilePath(Path());
    notes.Add(QStringLiteral("a"));
    notes.commitAll();
    notes.Add(QStringLiteral("b"));
    notes.cancelAll();
    notes.Add(QStringLiteral("c"));
    notes.cancelAll(); // the savepoint stays
    QCOMPARE(notes.Texts(), left);
    notes.setFilePath(Path());
    QCOMPARE(notes.Texts(), left);
    QCOMPARE(notes.executeQuery(QStringLiteral("PRAGMA integrity_check")).lastError().type(), QSqlError::NoError);
}

void tst_KDbSession::savepoint_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("closed") << 0;
    QTest::newRow("empty path") << 1;
    QTest::newRow("opened anew") << 2;
}

void tst_KDbSession::savepoint()
{
    QFETCH(int, way);
    Notes notes;
    notes.setUseRollBack(true);
    notes.setFilePath(Path());
    notes.Add(QStringLiteral("kept"));
    notes.commitAll();
    for (int i = 0; i < 2000; ++i) // over many pages
        notes.Add(QString(200, QLatin1Char('x')));
    if (way == 0)
        notes.close();
    else
        notes.setFilePath(way == 1 ? QString() : Path());
    QCOMPARE(notes.checkDb(), way == 2);
    notes.setFilePath(Path());
    QCOMPARE(notes.Texts(), QStringList{QStringLiteral("kept")});
}

void tst_KDbSession::killedBetweenCommitAndCancel()
{
    QProcess victim;
    victim.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--die"), Path()});
    QVERIFY(victim.waitForFinished());
    QCOMPARE(victim.exitStatus(), QProcess::CrashExit);
    Notes notes;
    notes.setFilePath(Path());
    QCOMPARE(notes.Texts(), QStringList{QStringLiteral("kept")});
    QSqlQuery check = notes.executeQuery(QStringLiteral("PRAGMA integrity_check"));
    QVERIFY(check.next());
    QCOMPARE(check.value(0).toString(), QStringLiteral("ok"));
}

void tst_KDbSession::reopened()
{
    {
        Notes notes;
        notes.setFilePath(Path());
        notes.Add(QStringLiteral("a"));
    } // the connection stays with Qt until its name is opened again
    Notes again;
    again.setFilePath(Path());
    again.Add(QStringLiteral("b"));
    QCOMPARE(again.Texts(), QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    QVERIFY(again.fileDb(/*open=*/false).isOpen());
    again.close();
    QVERIFY(!QSqlDatabase::contains(QStringLiteral("notes")));
}

void tst_KDbSession::failedStatementDoesntStopAList()
{
    Notes notes;
    notes.setFilePath(QStringLiteral(":memory:"));
    QSqlQuery last = notes.executeQueries(QStringList{QStringLiteral("NONSENSE"), QStringLiteral("SELECT 7")});
    QVERIFY(last.next());
    QCOMPARE(last.value(0).toInt(), 7);
    last = notes.executeQueries(QList<KDbQuery>{
        {QStringLiteral("INSERT INTO notes (text) VALUES(:t)"), {{QStringLiteral("t"), QStringLiteral("x'); --")}}},
        {QStringLiteral("SELECT text FROM notes"), {}}});
    QVERIFY(last.next());
    QCOMPARE(last.value(0).toString(), QStringLiteral("x'); --"));
    QVERIFY(notes.executeQuery(QStringLiteral("NONSENSE")).lastError().isValid());
}

void tst_KDbSession::erased()
{
    Notes notes;
    notes.setFilePath(Path());
    QVERIFY(QFile::exists(Path()));
    notes.eraseDb();
    QVERIFY(!notes.checkDb());
    QVERIFY(!QFile::exists(Path()));
    notes.setFilePath(QStringLiteral(":memory:"));
    notes.eraseDb();
    QVERIFY(!notes.checkDb());
}

void tst_KDbSession::copied()
{
    Notes notes;
    notes.setFilePath(Path());
    notes.Add(QStringLiteral("abc"));
    notes.copyDbTo(Path());
    QCOMPARE(notes.Texts().size(), 1); // onto itself: nothing
    notes.copyDbTo(Path("copy.db"));
    QVERIFY(!QSqlDatabase::contains(QStringLiteral("notes_copy")));
    Notes copy(kSqlite, QStringLiteral("other"));
    copy.setFilePath(Path("copy.db"));
    QSqlQuery row = copy.executeQuery(QStringLiteral("SELECT id, text, n FROM notes"));
    QVERIFY(row.next());
    QCOMPARE(row.value(0).toInt(), 1);
    QCOMPARE(row.value(1).toString(), QStringLiteral("\"abc\""));
    QCOMPARE(row.value(2).toDouble(), 1.5);
    QVERIFY(!row.next());
}

void tst_KDbSession::unusableFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("opens"); // SQLite looks into the file at the first statement
    QTest::newRow("folder missing") << QStringLiteral("absent/notes.db") << false;
    QTest::newRow("no database") << QStringLiteral("garbage.db") << true;
}

void tst_KDbSession::unusableFile()
{
    QFETCH(QString, path);
    QFETCH(bool, opens);
    QFile garbage(Path("garbage.db"));
    QVERIFY(garbage.open(QIODevice::WriteOnly));
    garbage.write(QByteArray(5000, 'g'));
    garbage.close();
    Notes notes;
    const QString full = m_dir->filePath(path);
    if (!opens)
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(QStringLiteral("\\[openDb\\].*notes.db.*Error while opening")));
    notes.setFilePath(full);
    QCOMPARE(notes.checkDb(), opens);
    notes.Add(QStringLiteral("a"));
    QVERIFY(notes.Texts().isEmpty());
    notes.copyDbTo(Path("copy.db"));
    notes.setFilePath(Path()); // the next file is fine
    notes.Add(QStringLiteral("b"));
    QCOMPARE(notes.Texts().size(), 1);
    QVERIFY(garbage.open(QIODevice::ReadOnly));
    QCOMPARE(garbage.readAll(), QByteArray(5000, 'g'));
}

void tst_KDbSession::lockedByAnother()
{
    Notes first, second(kSqlite, QStringLiteral("second"));
    first.setFilePath(Path());
    first.Add(QStringLiteral("first"));
    second.setFilePath(Path()); // as another process would: SQLite's locks are by connection
    second.Add(QStringLiteral("second"));
    QCOMPARE(second.executeQuery(QStringLiteral("SELECT 1 FROM notes")).lastError().nativeErrorCode(),
             QStringLiteral("5"));
    QVERIFY(second.database().connectOptions().contains(QStringLiteral("QSQLITE_BUSY_TIMEOUT=0")));
    QCOMPARE(first.Texts(), QStringList{QStringLiteral("first")});
    first.close();
    second.Add(QStringLiteral("later"));
    QCOMPARE(second.Texts(), QStringList({QStringLiteral("first"), QStringLiteral("later")}));
    QSqlQuery synchronous = second.executeQuery(QStringLiteral("PRAGMA synchronous"));
    QVERIFY(synchronous.next());
    QCOMPARE(synchronous.value(0).toInt(), 0); // opened in full as soon as it could be
}

void tst_KDbSession::twoKeptOutByAReader()
{
    Notes before(kSqlite, QStringLiteral("before"));
    before.setFilePath(Path());
    before.Add(QStringLiteral("old"));
    before.close();
    Notes first, second(kSqlite, QStringLiteral("second"));
    {
        QSqlDatabase reader = QSqlDatabase::addDatabase(kSqlite, QStringLiteral("reader"));
        reader.setDatabaseName(Path());
        QVERIFY(reader.open());
        QSqlQuery rows(reader);
        QVERIFY(rows.exec(QStringLiteral("SELECT * FROM notes"))
                && rows.next()); // holds the file while it stands there
        first.setFilePath(Path());
        second.setFilePath(Path());
        for (Notes *notes : {&first, &second})
            QCOMPARE(notes->Texts(), QStringList{QStringLiteral("old")});
        rows.finish();
        reader.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("reader"));
    first.Add(QStringLiteral("new")); // what the second read doesn't keep the first out
    QCOMPARE(first.Texts(), QStringList({QStringLiteral("old"), QStringLiteral("new")}));
    QVERIFY(second.Texts().isEmpty());
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], "--die") == 0)
        DieInTheMiddle(QString::fromLocal8Bit(argv[2]));
    tst_KDbSession test;
    return QTest::qExec(&test, argc, argv);
}

#include "KDbSession_test.moc"
