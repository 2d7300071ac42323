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
    void firstDefaultWins();
    void notConvertible();
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
    StoredManager manager;
    QCOMPARE(manager.GetBool(QStringLiteral("bool"), false), true);
    QCOMPARE(manager.GetInt(QStringLiteral("int"), 1), -5);
    QCOMPARE(manager.GetDouble(QStringLiteral("double")), 0.1);
    QCOMPARE(manager.GetString(QStringLiteral("string"), QString()), QStringLiteral("ü; \"x\""));
    QCOMPARE(manager.GetStringList(QStringLiteral("list")), list);
    QCOMPARE(manager.GetColor(QStringLiteral("color"), Qt::red), QColor(1, 2, 3, 4));
    QCOMPARE(manager.GetByteArray(QStringLiteral("bytes")), bytes);
    QCOMPARE(manager.GetRect(QStringLiteral("rect"), QRect()), rect);
    QCOMPARE(manager.GetDateTime(QStringLiteral("time")), time);
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

void tst_SettingsManager::firstDefaultWins()
{
    StoredManager manager;
    QCOMPARE(manager.GetBool(QStringLiteral("asked")), false); // enters a default
    manager.SetDefault(QStringLiteral("asked"), true, /*overwrite=*/false);
    QCOMPARE(manager.GetBool(QStringLiteral("asked")), false);
    manager.SetDefault(a, 5, /*overwrite=*/false);
    manager.SetDefault(a, 6, /*overwrite=*/false);
    QCOMPARE(manager.GetInt(a), 5);
    manager.SetDefault(a, 6, /*overwrite=*/true);
    QCOMPARE(manager.GetInt(a), 6);
    QCOMPARE(manager.GetInt(a, 7), 7); // the argument, not the table
    manager.Set(a, 4);
    QCOMPARE(manager.GetInt(a), 4);
    QCOMPARE(manager.Get(a, 7), QVariant(4));
    QCOMPARE(manager.GetInt(QStringLiteral("GROUP/A"), 7), 7);

    const QString b = QStringLiteral("b");
    QCOMPARE(manager.Get(b, 5), QVariant(5));
    QCOMPARE(manager.Get(b, 6), QVariant(6));
    QCOMPARE(manager.GetInt(b), 5);
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

void tst_SettingsManager::colors()
{
    StoredManager manager;
    const std::pair<QVariant, QColor> rows[] = {{QColor(1, 2, 3), QColor(1, 2, 3)},
                                                {QColor(), QColor()},
                                                {QStringLiteral("#010203"), QColor(1, 2, 3)},
                                                {3.5, QColor()}};
    for (const auto &[stored, color] : rows) {
        manager.Set(a, stored);
        QCOMPARE(manager.GetColor(a), color);
        QCOMPARE(manager.GetColor(a, Qt::red), color); // never the caller's default for what is stored
    }
}

void tst_SettingsManager::readerSkipsTheTable()
{
    StoredManager manager;
    KSRFromKSettingsManager reader(&manager);
    manager.SetDefault(a, 5, /*overwrite=*/true);
    for (const QString &key : {a, QStringLiteral("stored")}) {
        const bool stored = key != a;
        QCOMPARE(reader.GetInt(key, 7), stored ? 1 : 7);
        QCOMPARE(reader.GetBool(key, false), stored);
        QCOMPARE(reader.GetDouble(key, 7.5), stored ? 1.0 : 7.5);
        QCOMPARE(reader.GetString(key, QStringLiteral("x")), stored ? QStringLiteral("1") : QStringLiteral("x"));
        manager.Set(QStringLiteral("stored"), 1);
    }
}

QTEST_GUILESS_MAIN(tst_SettingsManager)
#include "SettingsManager_test.moc"
