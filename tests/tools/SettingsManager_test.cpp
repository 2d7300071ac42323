#include "KSRFromKSettingsManager.h"
#include "KSettingsManager.h"

#include <QTemporaryDir>
#include <QtTest>

class tst_SettingsManager : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();

    void storeOutlivesTheObject();
    void defaultsOnlySkipsTheStore();
    void twoFamilies();
    void firstDefaultWins();
    void askingEntersANullDefault();
    void notConvertible();
    void colors_data();
    void colors();
    void readerSkipsTheTable();

private:
    QTemporaryDir m_dir;
};

namespace {

const QString kOrganization = QStringLiteral("TestOrganization");
const QString kApplication = QStringLiteral("TestApplication");
const QString a = QStringLiteral("group/a");

/// A manager with a store of its own, empty at the start of each test.
class StoredManager : public KSettingsManager {
public:
    StoredManager() : KSettingsManager(QSettings::UserScope, kOrganization, kApplication) { }
};

} // namespace

void tst_SettingsManager::initTestCase()
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.path());
    QCoreApplication::setOrganizationName(kOrganization);
    QCoreApplication::setApplicationName(kApplication);
}

void tst_SettingsManager::init()
{
    QSettings(QSettings::UserScope, kOrganization, kApplication).clear();
}

void tst_SettingsManager::storeOutlivesTheObject()
{
    const QRect rect(1, -2, 300, 400);
    const QDateTime time(QDate(2016, 2, 29), QTime(12, 30, 1), Qt::UTC);
    const QByteArray bytes("a\0b\xff", 4);
    const QStringList list{QStringLiteral("one"), QStringLiteral("t,wo"), QString()};
    {
        StoredManager manager;
        manager.Set(QStringLiteral("bool"), true);
        manager.Set(QStringLiteral("int"), -5);
        manager.Set(QStringLiteral("double"), 0.1);
        manager.Set(QStringLiteral("string"), QStringLiteral("ü; \"x\""));
        manager.Set(QStringLiteral("list"), list);
        manager.Set(QStringLiteral("color"), QColor(1, 2, 3, 4));
        manager.Set(QStringLiteral("bytes"), bytes);
        manager.Set(QStringLiteral("rect"), rect);
        manager.Set(QStringLiteral("time"), time);
    }
    QVERIFY(QDir(m_dir.path()).exists(kOrganization + QStringLiteral("/TestApplication.conf")));
    StoredManager manager;
    QCOMPARE(manager.GetBool(QStringLiteral("bool")), true);
    QCOMPARE(manager.GetBool(QStringLiteral("bool"), false), true);
    QCOMPARE(manager.GetInt(QStringLiteral("int")), -5);
    QCOMPARE(manager.GetInt(QStringLiteral("int"), 1), -5);
    QCOMPARE(manager.GetDouble(QStringLiteral("double")), 0.1);
    QCOMPARE(manager.GetDouble(QStringLiteral("double"), 1.0), 0.1);
    QCOMPARE(manager.GetString(QStringLiteral("string")), QStringLiteral("ü; \"x\""));
    QCOMPARE(manager.GetString(QStringLiteral("string"), QString()), QStringLiteral("ü; \"x\""));
    QCOMPARE(manager.GetStringList(QStringLiteral("list")), list);
    QCOMPARE(manager.GetStringList(QStringLiteral("list"), QStringList()), list);
    QCOMPARE(manager.GetColor(QStringLiteral("color")), QColor(1, 2, 3, 4));
    QCOMPARE(manager.GetColor(QStringLiteral("color"), Qt::red), QColor(1, 2, 3, 4));
    QCOMPARE(manager.GetByteArray(QStringLiteral("bytes")), bytes);
    QCOMPARE(manager.GetByteArray(QStringLiteral("bytes"), QByteArray()), bytes);
    QCOMPARE(manager.GetRect(QStringLiteral("rect")), rect);
    QCOMPARE(manager.GetRect(QStringLiteral("rect"), QRect()), rect);
    QCOMPARE(manager.GetDateTime(QStringLiteral("time")), time);
    QCOMPARE(manager.GetDateTime(QStringLiteral("time"), QDateTime()), time);
}

void tst_SettingsManager::defaultsOnlySkipsTheStore()
{
    KSettingsManager manager;
    manager.Set(a, 1);
    QCOMPARE(manager.GetInt(a), 0);
    QCOMPARE(manager.GetInt(a, 7), 1);
    QCOMPARE(manager.Get(a, 7), QVariant(1)); // and enters nothing: the read above made a null default
    QCOMPARE(manager.GetInt(a), 0);
    manager.SetDefault(a, 5, /*overwrite=*/true);
    QCOMPARE(manager.GetInt(a), 5);
    QCOMPARE(StoredManager().GetInt(a), 1); // it was written all the same
}

void tst_SettingsManager::twoFamilies()
{
    StoredManager manager;
    manager.SetDefault(a, 5, /*overwrite=*/false);
    QCOMPARE(manager.GetInt(a), 5);
    QCOMPARE(manager.GetInt(a, 7), 7);
    manager.Set(a, 1);
    QCOMPARE(manager.GetInt(a), 1);
    QCOMPARE(manager.GetInt(a, 7), 1);
    QCOMPARE(manager.GetInt(QStringLiteral("GROUP/A"), 7), 7);
}

void tst_SettingsManager::firstDefaultWins()
{
    StoredManager manager;
    manager.SetDefault(a, 5, /*overwrite=*/false);
    manager.SetDefault(a, 6, /*overwrite=*/false);
    QCOMPARE(manager.GetInt(a), 5);
    manager.SetDefault(a, 6, /*overwrite=*/true);
    QCOMPARE(manager.GetInt(a), 6);

    const QString b = QStringLiteral("b");
    QCOMPARE(manager.Get(b, 5), QVariant(5));
    QCOMPARE(manager.Get(b, 6), QVariant(6)); // the argument, not the table
    QCOMPARE(manager.GetInt(b), 5);
    manager.Set(b, 4);
    QCOMPARE(manager.Get(b, 6), QVariant(4));
}

void tst_SettingsManager::askingEntersANullDefault()
{
    StoredManager manager;
    QCOMPARE(manager.GetBool(a), false);
    manager.SetDefault(a, true, /*overwrite=*/false);
    QCOMPARE(manager.GetBool(a), false);
}

void tst_SettingsManager::notConvertible()
{
    StoredManager manager;
    manager.Set(a, QStringLiteral("abc"));
    QCOMPARE(manager.GetInt(a, 9), 9);
    QCOMPARE(manager.GetInt(a), 0);
    QCOMPARE(manager.GetDouble(a, 9.5), 9.5);
    QCOMPARE(manager.GetDouble(a), 0.0);
    QCOMPARE(manager.GetBool(a, false), true); // any other text is true
    QVERIFY(!manager.GetRect(a, QRect(1, 2, 3, 4)).isValid());
    QVERIFY(!manager.GetDateTime(a, QDateTime::currentDateTime()).isValid());
}

void tst_SettingsManager::colors_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QColor>("color");
    QTest::newRow("color") << QVariant(QColor(1, 2, 3)) << QColor(1, 2, 3);
    QTest::newRow("invalid color") << QVariant(QColor()) << QColor();
    QTest::newRow("name") << QVariant(QStringLiteral("#010203")) << QColor(1, 2, 3);
    QTest::newRow("number") << QVariant(3.5) << QColor();
}

void tst_SettingsManager::colors()
{
    QFETCH(QVariant, stored);
    StoredManager manager;
    manager.Set(a, stored);
    QTEST(manager.GetColor(a), "color");
    QTEST(manager.GetColor(a, Qt::red), "color"); // never the caller's default for what is stored
}

void tst_SettingsManager::readerSkipsTheTable()
{
    StoredManager manager;
    KSRFromKSettingsManager reader(&manager);
    const QString text = QStringLiteral("text");
    for (const QVariant &value : {QVariant(5), QVariant(true)})
        manager.SetDefault(a, value, /*overwrite=*/true);
    QCOMPARE(reader.GetInt(a, 7), 7);
    QCOMPARE(reader.GetBool(a, false), false);
    QCOMPARE(reader.GetDouble(a, 7.5), 7.5);
    QCOMPARE(reader.GetString(a, text), text);
    manager.Set(a, 1);
    QCOMPARE(reader.GetInt(a, 7), 1);
    QCOMPARE(reader.GetBool(a, false), true);
    QCOMPARE(reader.GetDouble(a, 7.5), 1.0);
    QCOMPARE(reader.GetString(a, text), QStringLiteral("1"));
}

QTEST_GUILESS_MAIN(tst_SettingsManager)
#include "SettingsManager_test.moc"
