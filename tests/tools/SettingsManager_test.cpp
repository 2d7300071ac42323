// Settings: stored values, defaults and conversions.
#include "Case.h"
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
    void unconvertibleValues();
    void readerSkipsTheTable();

private:
    QTemporaryDir m_dir;
};

namespace {

const QString kOrganization = QStringLiteral("TestOrganization");
const QString kApplication = QStringLiteral("TestApplication");
const QString a = QStringLiteral("group/a");

/// A manager with a separate store, empty at the start of each test.
class StoredManager : public KSettingsManager {
public:
    StoredManager() : KSettingsManager(QSettings::UserScope, kOrganization, kApplication) { }
};

/// Checks both reads of a key, first while it is missing, then with the value that another object stored.
template <typename T>
void CheckReads(const T &value, T (KSettingsManager::*read)(const QString &),
                T (KSettingsManager::*readOr)(const QString &, T))
{
    const Case named(QVariant::fromValue(value));
    QCOMPARE((StoredManager().*read)(a), T());
    QCOMPARE((StoredManager().*readOr)(a, value), value);
    StoredManager().Set(a, value);
    QCOMPARE((StoredManager().*read)(a), value);
    QCOMPARE((StoredManager().*readOr)(a, T()), value);
    QSettings(QSettings::UserScope, kOrganization, kApplication).clear();
}

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
    using M = KSettingsManager;
    CheckReads(true, &M::GetBool, &M::GetBool);
    CheckReads(-5, &M::GetInt, &M::GetInt);
    CheckReads(0.1, &M::GetDouble, &M::GetDouble);
    CheckReads(QStringLiteral("ü; \"x\""), &M::GetString, &M::GetString);
    CheckReads(QStringList{QStringLiteral("t,wo"), QString()}, &M::GetStringList, &M::GetStringList);
    CheckReads(QColor(1, 2, 3, 4), &M::GetColor, &M::GetColor);
    CheckReads(QByteArray("a\0b\xff", 4), &M::GetByteArray, &M::GetByteArray);
    CheckReads(QRect(1, -2, 300, 400), &M::GetRect, &M::GetRect);
    CheckReads(QDateTime({2016, 2, 29}, {12, 30, 1}, Qt::UTC), &M::GetDateTime, &M::GetDateTime);
}

void tst_SettingsManager::defaultsOnlySkipsTheStore()
{
    KSettingsManager manager;
    manager.Set(a, 1);
    QCOMPARE(manager.GetInt(a), 0);
    QCOMPARE(manager.GetInt(a, 7), 1);
    QCOMPARE(manager.Get(a, 7), QVariant(1)); // adds no default: the first read added a null one
    QCOMPARE(manager.GetInt(a), 0);
    manager.SetDefault(a, 5, /*overwrite=*/true);
    QCOMPARE(manager.GetInt(a), 5);
    QCOMPARE(StoredManager().GetInt(a), 1); // Set() wrote to the store anyway
}

void tst_SettingsManager::firstDefaultWins()
{
    StoredManager manager;
    QCOMPARE(manager.GetBool(QStringLiteral("asked")), false); // adds a default
    manager.SetDefault(QStringLiteral("asked"), true, /*overwrite=*/false);
    QCOMPARE(manager.GetBool(QStringLiteral("asked")), false);
    manager.SetDefault(a, 5, /*overwrite=*/false);
    QCOMPARE(manager.GetInt(a), 5);
    manager.SetDefault(a, 6, /*overwrite=*/true);
    QCOMPARE(manager.GetInt(a), 6);
    QCOMPARE(manager.GetInt(a, 7), 7); // the argument, not the table
    manager.Set(a, 4);
    QCOMPARE(manager.GetInt(a), 4);
    QCOMPARE(manager.GetInt(QStringLiteral("GROUP/A"), 7), 7);
    const QString b = QStringLiteral("b");
    for (const int argument : {5, 6}) {
        const Case named(argument);
        QCOMPARE(manager.Get(b, argument), QVariant(argument));
    }
    QCOMPARE(manager.GetInt(b), 5);
}

void tst_SettingsManager::unconvertibleValues()
{
    StoredManager manager;
    const std::pair<QVariant, QColor> rows[] = {
        {QColor(), QColor()}, {QStringLiteral("#010203"), QColor(1, 2, 3)}, {3.5, QColor()}};
    for (const auto &[stored, color] : rows) {
        const Case named(stored);
        manager.Set(a, stored);
        QCOMPARE(manager.GetColor(a), color);
        QCOMPARE(manager.GetColor(a, Qt::red), color); // never the caller's default for a stored value
    }
    manager.Set(a, QStringLiteral("abc"));
    QCOMPARE(manager.GetInt(a, 9), 9);
    QCOMPARE(manager.GetDouble(a, 9.5), 9.5);
    QCOMPARE(manager.GetBool(a, false), true); // any text is true, except "", "0" and "false"
    QVERIFY(!manager.GetRect(a, QRect(1, 2, 3, 4)).isValid());
    QVERIFY(!manager.GetDateTime(a, QDateTime::currentDateTime()).isValid());
}

void tst_SettingsManager::readerSkipsTheTable()
{
    StoredManager manager;
    KSRFromKSettingsManager reader(&manager);
    manager.SetDefault(a, 5, /*overwrite=*/true);
    for (const QString &key : {a, QStringLiteral("stored")}) {
        const Case named(key);
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
