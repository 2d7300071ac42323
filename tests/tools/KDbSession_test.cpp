// Database sessions: commit and cancel, killed processes, copies, and locks.
#include "analytics/KDbSession.h"

#include "Case.h"

#include <QProcess>
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
    /// Returns the first column of all rows, separated by spaces.
    QString Texts(const char *query = "SELECT text FROM notes ORDER BY id")
    {
        QStringList texts;
        QSqlQuery rows = executeQuery(QString::fromLatin1(query));
        while (rows.next())
            texts << rows.value(0).toString();
        return texts.join(QLatin1Char(' '));
    }
};

/// Simulates a process that dies between commit and cancel.
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

    void commitAndCancel();
    void savepoint();
    void killedBetweenCommitAndCancel();
    void copyToOtherFile();
    void lockedNewFile();
    void readerBlocksBothSessions();
    void handlesAndFailures();

private:
    QString Path(const char *name = "notes.db") const { return m_dir->filePath(QString::fromLatin1(name)); }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void tst_KDbSession::commitAndCancel()
{
    for (const bool useRollBack : {true, false}) {
        const Case named("with savepoints", useRollBack);
        const QString path = Path(useRollBack ? "savepoints.db" : "each.db");
        Notes notes;
        notes.setUseRollBack(useRollBack);
        notes.setFilePath(path);
        QCOMPARE(notes.Texts("PRAGMA journal_mode"), QLatin1String(useRollBack ? "memory" : "off"));
        notes.Add(QStringLiteral("a"));
        notes.commitAll();
        notes.Add(QStringLiteral("b"));
        notes.cancelAll();
        notes.Add(QStringLiteral("c"));
        notes.cancelAll(); // returns to the same savepoint
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(notes.Texts(), QLatin1String(useRollBack ? "a" : "a b c"));
            notes.setFilePath(path);
        }
    }
}

void tst_KDbSession::savepoint()
{
    for (const int variant : {0, 1, 2}) { // close the session, clear its path, set the same path again
        const Case named("variant", variant);
        Notes notes;
        notes.setUseRollBack(true);
        notes.setFilePath(Path());
        notes.Add(QString::number(variant));
        notes.commitAll();
        for (int i = 0; i < 2000; ++i) // over many pages
            notes.Add(QString(200, QLatin1Char('x')));
        if (variant == 0)
            notes.close();
        else
            notes.setFilePath(variant == 1 ? QString() : Path());
        QCOMPARE(notes.checkDb(), variant == 2);
        notes.setFilePath(Path());
        QCOMPARE(notes.Texts(), QStringLiteral("0 1 2").left(2 * variant + 1));
    }
}

void tst_KDbSession::killedBetweenCommitAndCancel()
{
    QProcess victim;
    victim.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--die"), Path()});
    QVERIFY(victim.waitForFinished());
    QCOMPARE(victim.exitStatus(), QProcess::CrashExit);
    Notes notes;
    notes.setFilePath(Path());
    QCOMPARE(notes.Texts(), QStringLiteral("kept"));
    QCOMPARE(notes.Texts("PRAGMA integrity_check"), QStringLiteral("ok"));
}

void tst_KDbSession::copyToOtherFile()
{
    Notes notes;
    notes.setFilePath(Path());
    notes.Add(QStringLiteral("taken out again")); // deleted although the preceding statement fails
    notes.executeQueries(QStringList{QStringLiteral("NONSENSE"), QStringLiteral("DELETE FROM notes")});
    notes.Add(QStringLiteral("a'); --"));
    notes.copyDbTo(Path()); // onto itself: does nothing
    notes.copyDbTo(Path("copy.db"));
    Notes copy(kSqlite, QStringLiteral("other"));
    copy.setFilePath(Path("copy.db"));
    QCOMPARE(copy.Texts("SELECT id || text || n FROM notes"), QStringLiteral("1\"a'); --\"1.5"));
    notes.eraseDb();
    QVERIFY(!notes.checkDb() && !QFile::exists(Path()));
}

/// Opens a session with savepoints on a new file that another connection has locked.
void tst_KDbSession::lockedNewFile()
{
    Notes late;
    late.setUseRollBack(true);
    {
        QSqlDatabase holder = QSqlDatabase::addDatabase(kSqlite, QStringLiteral("holder"));
        holder.setDatabaseName(Path());
        QVERIFY(holder.open());
        QSqlQuery(QStringLiteral("BEGIN EXCLUSIVE"), holder);
        late.setFilePath(Path());
        late.Add(QStringLiteral("kept out"));
        late.commitAll();
        QVERIFY(late.Texts().isEmpty());
        holder.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("holder"));
    late.Add(QStringLiteral("a"));
    late.commitAll();
    late.Add(QStringLiteral("b"));
    late.cancelAll();
    QCOMPARE(late.Texts(), QStringLiteral("a"));
}

void tst_KDbSession::readerBlocksBothSessions()
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
        // An active query holds a lock on the file.
        QVERIFY(rows.exec(QStringLiteral("SELECT * FROM notes")) && rows.next());
        first.setFilePath(Path());
        second.setFilePath(Path());
        QCOMPARE(first.Texts() + second.Texts(), QStringLiteral("oldold"));
        rows.finish();
        reader.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("reader"));
    first.Add(QStringLiteral("new")); // must not be blocked by the second session's read
    QCOMPARE(first.Texts(), QStringLiteral("old new"));
    QVERIFY(second.Texts().isEmpty());
}

/// The handles are those of Qt's connection; a session that can't open says why and can be opened again.
void tst_KDbSession::handlesAndFailures()
{
    QTest::ignoreMessage(
        QtWarningMsg,
        QRegularExpression(QStringLiteral(
            "\\[openDb\\] \".*no folder/notes.db\" Error while opening \".*unable to open database file")));
    Notes notes;
    notes.setFilePath(Path("no folder/notes.db"));
    notes.Add(QStringLiteral("lost"));
    QVERIFY(!notes.checkDb() && !notes.fileDb(/*open=*/false).isOpen());
    QVERIFY(!notes.openDb(QStringLiteral("unused"), QString()).isValid());
    notes.setFilePath(Path());
    notes.executeQueries(QList<KDbQuery>{KDbQuery(QStringLiteral("NONSENSE"), {}),
                                         KDbQuery(QStringLiteral("INSERT INTO notes (text) VALUES('a')"), {})});
    for (const QSqlDatabase &db : {notes.database(), notes.fileDb(/*open=*/true)}) {
        QVERIFY(db.isOpen() && db.driver() == QSqlDatabase::database(QStringLiteral("notes"), false).driver());
        QCOMPARE(db.databaseName() + QLatin1Char(' ') + db.tables().join(QLatin1Char(' ')),
                 Path() + QStringLiteral(" notes"));
    }
    QCOMPARE(notes.Texts("SELECT text FROM notes UNION ALL SELECT * FROM pragma_page_size UNION ALL "
                         "SELECT * FROM pragma_cache_size UNION ALL SELECT * FROM pragma_temp_store UNION ALL "
                         "SELECT * FROM pragma_synchronous UNION ALL SELECT * FROM pragma_locking_mode"),
             QStringLiteral("a 4096 16384 2 0 exclusive")); // temporary tables in memory, no waiting for the disk
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
