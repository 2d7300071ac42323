#include "Files.h"
#include "KSRFromKSRs.h"
#include "KSRFromQHash.h"
#include "KSRFromXMLFile.h"
#include "XmlLimits.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

/// Columns for what the four reads of a key give; an invalid value stands for the caller's default.
void AddReadColumns()
{
    for (const char *column : {"asBool", "asInt", "asDouble", "asString"})
        QTest::addColumn<QVariant>(column);
}

const QVariant kDefault;

/// Compares the four reads with the row's columns, each with two defaults, so that a default can't pass for a value.
void CompareReads(KernelSettingsReader &reader, const QString &key)
{
    QFETCH(QVariant, asBool);
    QFETCH(QVariant, asInt);
    QFETCH(QVariant, asDouble);
    QFETCH(QVariant, asString);
    for (const int i : {0, 1}) {
        const QString text = QStringLiteral("default %1").arg(i);
        QCOMPARE(reader.GetBool(key, i != 0), asBool.isValid() ? asBool.toBool() : i != 0);
        QCOMPARE(reader.GetInt(key, i - 77), asInt.isValid() ? asInt.toInt() : i - 77);
        QCOMPARE(reader.GetDouble(key, i + 0.25), asDouble.isValid() ? asDouble.toDouble() : i + 0.25);
        QCOMPARE(reader.GetString(key, text), asString.isValid() ? asString.toString() : text);
    }
}

QString Text(const char *text)
{
    return QString::fromUtf8(text);
}

} // namespace

class tst_SettingsReaders : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void xmlTexts_data();
    void xmlTexts();
    void xmlKeys_data();
    void xmlKeys();
    void xmlUnusable();
    void xmlIsReadOnce();
    void hash_data();
    void hash();
    void chain();

private:
    QString FileOf(const QByteArray &content)
    {
        return WriteFile(m_dir.filePath(QStringLiteral("settings.xml")), content);
    }

    QTemporaryDir m_dir;
};

void tst_SettingsReaders::xmlTexts_data()
{
    QTest::addColumn<QByteArray>("text");
    AddReadColumns();
    const auto row = [](const char *text, const QVariant &asBool, const QVariant &asInt, const QVariant &asDouble) {
        QTest::newRow(text) << QByteArray(text) << asBool << asInt << asDouble << QVariant(Text(text));
    };
    row("TRUE", true, kDefault, kDefault);
    row("fALSE", false, kDefault, kDefault);
    row("2", true, 2, 2.0);
    row("0", false, 0, 0.0);
    row("yes", kDefault, kDefault, kDefault);
    row(" true", kDefault, kDefault, kDefault); // not trimmed
    row("", kDefault, kDefault, kDefault);
    row("0x10", kDefault, kDefault, kDefault); // base 10
    row("010", true, 10, 10.0);
    row("2.5", kDefault, kDefault, 2.5);
    row("2,5", kDefault, kDefault, kDefault);            // the point is the same everywhere
    row("4294967296", kDefault, kDefault, 4294967296.0); // beyond 32 bits
    row("Objektiv \xc3\xbc", kDefault, kDefault, kDefault);
}

void tst_SettingsReaders::xmlTexts()
{
    QFETCH(QByteArray, text);
    KSRFromXMLFile reader(FileOf("<r><a>" + text + "</a></r>"));
    CompareReads(reader, QStringLiteral("a"));
}

void tst_SettingsReaders::xmlKeys_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("found");
    const auto row = [](const char *name, const char *content, const char *key, bool found) {
        QTest::newRow(name) << QByteArray(content) << Text(key) << found;
    };
    row("path", "<r><image><m>5</m></image></r>", "image/m", true);
    row("empty parts are dropped", "<r><image><m>5</m></image></r>", "/image//m/", true);
    row("levels between are skipped", "<r><image><x><y><m>5</m></y></x></image></r>", "image/m", true);
    row("the first level too", "<r><image><m>5</m></image></r>", "m", true);
    row("the root is no part of the key", "<r><m>5</m></r>", "r/m", false);
    row("no part: the root's text", "<r>5</r>", "", true);
    row("twice side by side", "<r><m>5</m><m>5</m></r>", "m", false);
    row("once on the path, once below", "<r><m>5<x><m/></x></m></r>", "m", false);
    row("twice, but once below the first part", "<r><x><m>5</m></x><y><m>6</m></y></r>", "x/m", true);
    row("attributes are not looked at", "<r m='5'/>", "m", false);
    row("upper case is another tag", "<r><M>5</M></r>", "m", false);
    row("text in pieces", "<r><m><!-- five --><![CDATA[5]]></m></r>", "m", true);
    row("byte order mark, declaration, line ends", "\xef\xbb\xbf<?xml version='1.0'?>\r\n<r>\r\n<m>5</m>\r\n</r>", "m",
        true);
    row("declared encoding counts for nothing", "<?xml version='1.0' encoding='UTF-16'?><r><m>5</m></r>", "m", true);
    row("before a fault", "<r><m>5</m><x =></r>", "m", true);
    row("undeclared prefixes", "<p:r q:a='1'><p:m>5</p:m></p:r>", "p:m", true);
}

void tst_SettingsReaders::xmlKeys()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, key);
    QFETCH(bool, found);
    KSRFromXMLFile reader(FileOf(content));
    QCOMPARE(reader.GetInt(key, -1), found ? 5 : -1);
    QCOMPARE(reader.GetDouble(key, -1.5), found ? 5.0 : -1.5);
    QCOMPARE(reader.GetBool(key, false), found);
    QCOMPARE(reader.GetString(key, Text("default")), found ? Text("5") : Text("default"));
}

void tst_SettingsReaders::xmlUnusable()
{
    const QByteArray setting = "<a>5</a>";
    const int deep = 1000000; // tearing down such a tree overruns the stack
    const std::pair<const char *, QByteArray> rows[] = {
        {"empty", ""},
        {"ends in the first tag", "<r"},
        {"zero byte before the setting", "<r>" + QByteArray(1, '\0') + setting + "</r>"},
        {"deep", "<r>" + setting + QByteArray("<x>").repeated(deep) + QByteArray("</x>").repeated(deep) + "</r>"},
        {"too many elements", "<r>" + setting + QByteArray("<x/>").repeated(kMaxXmlNodes) + "</r>"},
        {"too many bytes", "<r>" + setting + QByteArray(int(kMaxXmlBytes), ' ') + "</r>"},
        {"entities",
         "<!DOCTYPE r [<!ENTITY e '" + QByteArray(4000, 'x') + "'>]><r>" + setting + "<b>"
             + QByteArray("&e;").repeated(100000) + "</b></r>"}};
    for (const auto &[name, content] : rows) {
        KSRFromXMLFile reader(FileOf(content));
        QVERIFY2(reader.GetInt(QStringLiteral("a"), 7) == 7, name);
    }
}

void tst_SettingsReaders::xmlIsReadOnce()
{
    const QString name = FileOf("<r><a>5</a></r>");
    KSRFromXMLFile reader(name);
    QVERIFY(QFile::remove(name));
    QCOMPARE(reader.GetInt(QStringLiteral("a"), 7), 5);
    for (const QString &unusable : {name, m_dir.path(), QStringLiteral("/dev/zero")}) {
        KSRFromXMLFile none(unusable);
        for (const char *key : {"a", "", "/"})
            QCOMPARE(none.GetInt(Text(key), 7), 7);
    }
}

void tst_SettingsReaders::hash_data()
{
    QTest::addColumn<QVariant>("value");
    AddReadColumns();
    const auto row = [](const char *name, const QVariant &value, const QVariant &asBool, const QVariant &asInt,
                        const QVariant &asDouble, const QVariant &asString) {
        QTest::newRow(name) << value << asBool << asInt << asDouble << asString;
    };
    row("int", 3, true, 3, 3.0, Text("3"));
    row("real", 2.5, true, 3, 2.5, Text("2.5")); // rounded, halves away from 0
    row("bool", true, true, 1, 1.0, Text("true"));
    row("number as text", Text("12"), true, 12, 12.0, Text("12"));
    row("text false", Text("FALSE"), false, kDefault, kDefault, Text("FALSE"));
    row("text that is no number", Text("yes"), true, kDefault, kDefault, Text("yes"));
    row("empty text", Text(""), false, kDefault, kDefault, Text(""));
    row("present without a value", QVariant(), false, kDefault, kDefault, Text(""));
    row("a list", QVariantList{1}, false, kDefault, kDefault, Text(""));
}

void tst_SettingsReaders::hash()
{
    QFETCH(QVariant, value);
    QHash<QString, QVariant> hash{{QStringLiteral("image/a"), value}};
    KSRFromQHash reader(&hash);
    CompareReads(reader, QStringLiteral("image/a"));
    QCOMPARE(reader.GetInt(QStringLiteral("a"), 7), 7); // keys are whole
    QCOMPARE(hash.size(), 1);                           // asking enters nothing
}

void tst_SettingsReaders::chain()
{
    const QString both = QStringLiteral("both"), first = QStringLiteral("first"), neither = QStringLiteral("neither");
    QHash<QString, QVariant> a{{both, 1}, {first, 2}, {QStringLiteral("broken"), 4}};
    QHash<QString, QVariant> b{{both, 0}, {QStringLiteral("broken"), Text("no number")}};
    KSRFromKSRs chain;
    QCOMPARE(chain.GetInt(both, 7), 7);
    chain.m_readers = {new KSRFromQHash(&a), nullptr, new KSRFromQHash(&b)};
    QCOMPARE(chain.GetInt(both, 7), 0);
    QCOMPARE(chain.GetBool(first, false), true);
    QCOMPARE(chain.GetDouble(first, 7.5), 2.0);
    QCOMPARE(chain.GetString(both, Text("default")), Text("0"));
    QCOMPARE(chain.GetString(neither, Text("default")), Text("default"));
    QCOMPARE(chain.GetInt(QStringLiteral("broken"), 7),
             4); // the weaker reader's value is the default of the failing one
}

QTEST_APPLESS_MAIN(tst_SettingsReaders)
#include "SettingsReaders_test.moc"
