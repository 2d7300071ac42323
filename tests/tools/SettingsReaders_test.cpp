// Settings readers: XML files, hashes and chains.
#include "Case.h"
#include "Files.h"
#include "InputLimits.h"
#include "KSRFromKSRs.h"
#include "KSRFromQHash.h"
#include "KSRFromXMLFile.h"
#include "Table.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

/// Results of the four reads of a key; an invalid value means the caller's default.
struct Reads {
    QVariant asBool, asInt, asDouble, asString;
};

const QVariant kDefault;

/// Returns whether a reader gives @p reads for a key. Reads each value with two defaults, so that a default can't be
/// mistaken for a value.
bool Gives(KernelSettingsReader &reader, const QString &key, const Reads &reads)
{
    bool same = true;
    for (const int i : {0, 1}) {
        const QString text = QStringLiteral("default %1").arg(i);
        same = same && reader.GetBool(key, i != 0) == (reads.asBool.isValid() ? reads.asBool.toBool() : i != 0)
            && reader.GetInt(key, i - 77) == (reads.asInt.isValid() ? reads.asInt.toInt() : i - 77)
            && reader.GetDouble(key, i + 0.25) == (reads.asDouble.isValid() ? reads.asDouble.toDouble() : i + 0.25)
            && reader.GetString(key, text) == (reads.asString.isValid() ? reads.asString.toString() : text);
    }
    return same;
}

QString Text(const char *text)
{
    return QString::fromUtf8(text);
}

} // namespace

class tst_SettingsReaders : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void xmlTexts();
    void xmlKeys();
    void xmlUnusable();
    void xmlIsReadOnce();
    void hash();
    void chain();

private:
    QString FileOf(const QByteArray &content)
    {
        return WriteFile(m_dir.filePath(QStringLiteral("settings.xml")), content);
    }

    QTemporaryDir m_dir;
};

void tst_SettingsReaders::xmlTexts()
{
    const auto orDefault = [](const QString &cell) { return cell.isEmpty() ? kDefault : QVariant(cell); };
    for (const QStringList &row : ReadTable(QStringLiteral(XML_TEXTS))) {
        const Case named(row);
        KSRFromXMLFile reader(FileOf("<r><a>" + row[0].toUtf8() + "</a></r>"));
        const Reads reads = {orDefault(row[1]), orDefault(row[2]), orDefault(row[3]), row[0]};
        QVERIFY(Gives(reader, QStringLiteral("a"), reads));
    }
}

void tst_SettingsReaders::xmlKeys()
{
    for (const QStringList &row : ReadTable(QStringLiteral(XML_KEYS))) {
        const Case named(row);
        KSRFromXMLFile reader(FileOf(row[0].toUtf8().replace("\\r", "\r")));
        QVERIFY(Gives(reader, row[1], row[2] == QLatin1String("yes") ? Reads{true, 5, 5.0, Text("5")} : Reads()));
    }
}

void tst_SettingsReaders::xmlUnusable()
{
    const QByteArray setting = "<a>5</a>";
    const int deep = 1000000; // destroying such a tree would overflow the stack
    const std::pair<const char *, QByteArray> rows[] = {
        {"empty", ""},
        {"ends in the first tag", "<r"},
        {"zero byte before the setting", "<r>" + QByteArray(1, '\0') + setting + "</r>"},
        {"nested too deeply",
         "<r>" + setting + QByteArray("<x>").repeated(deep) + QByteArray("</x>").repeated(deep) + "</r>"},
        {"external entity", "<!DOCTYPE r [<!ENTITY e SYSTEM 'x'>]><r>" + setting + "</r>"},
        {"entities",
         "<!DOCTYPE r [<!ENTITY e '" + QByteArray(4000, 'x') + "'>]><r>" + setting + "<b>"
             + QByteArray("&e;").repeated(100000) + "</b></r>"}};
    for (const auto &[name, content] : rows) {
        KSRFromXMLFile reader(FileOf(content));
        QVERIFY2(reader.GetInt(QStringLiteral("a"), 7) == 7, name);
    }
    for (int more : {0, 1}) // at each limit, and beyond it by one
        for (const QByteArray &content : {QByteArray("<x/>").repeated(kMaxXmlNodes - 2 + more),
                                          QByteArray("<x>").repeated(kMaxXmlDepth - 1 + more)
                                              + QByteArray("</x>").repeated(kMaxXmlDepth - 1 + more),
                                          QByteArray(int(kMaxXmlBytes) - 15 + more, ' ')}) {
            const Case named("more", more, "bytes", content.size());
            QCOMPARE(KSRFromXMLFile(FileOf("<r>" + setting + content + "</r>")).GetInt(QStringLiteral("a"), 7),
                     more ? 7 : 5);
        }
}

void tst_SettingsReaders::xmlIsReadOnce()
{
    const QString name = FileOf("<r><a>5</a></r>");
    KSRFromXMLFile reader(name);
    QVERIFY(QFile::remove(name));
    QCOMPARE(reader.GetInt(QStringLiteral("a"), 7), 5);
    for (const QString &unusable : {name, m_dir.path(), QStringLiteral("/dev/zero")}) {
        const Case named(unusable);
        KSRFromXMLFile none(unusable);
        for (const char *key : {"a", "", "/"})
            QCOMPARE(none.GetInt(Text(key), 7), 7);
    }
}

void tst_SettingsReaders::hash()
{
    const struct {
        QVariant value;
        Reads reads;
    } rows[] = {{2.5, {true, 3, 2.5, Text("2.5")}}, // rounded; halves go away from 0
                {true, {true, 1, 1.0, Text("true")}},
                {Text("12"), {true, 12, 12.0, Text("12")}},
                {Text("FALSE"), {false, kDefault, kDefault, Text("FALSE")}},
                {Text("yes"), {true, kDefault, kDefault, Text("yes")}},
                {QVariant(), {false, kDefault, kDefault, Text("")}}, // present without a value
                {QVariantList{1}, {false, kDefault, kDefault, Text("")}}};
    for (const auto &row : rows) {
        const Case named("row", &row - &*std::begin(rows));
        QHash<QString, QVariant> hash{{QStringLiteral("image/a"), row.value}};
        KSRFromQHash reader(&hash);
        QVERIFY2(Gives(reader, QStringLiteral("image/a"), row.reads), qPrintable(row.value.toString()));
        QVERIFY(Gives(reader, QStringLiteral("a"), {})); // keys must match completely
        QCOMPARE(hash.size(), 1);                        // reading adds nothing
    }
}

void tst_SettingsReaders::chain()
{
    const QString both = QStringLiteral("both"), first = QStringLiteral("first"), neither = QStringLiteral("neither");
    QHash<QString, QVariant> a{{both, 1}, {first, 2}, {QStringLiteral("broken"), 4}};
    QHash<QString, QVariant> b{{both, 0}, {QStringLiteral("broken"), Text("no number")}};
    KernelSettingsReader empty;
    QVERIFY(Gives(empty, both, {}));
    KSRFromKSRs chain;
    QCOMPARE(chain.GetInt(both, 7), 7);
    chain.m_readers = {new KSRFromQHash(&a), nullptr, new KSRFromQHash(&b)};
    QCOMPARE(chain.GetInt(both, 7), 0);
    QCOMPARE(chain.GetBool(first, false), true);
    QCOMPARE(chain.GetDouble(first, 7.5), 2.0);
    QCOMPARE(chain.GetString(both, Text("default")), Text("0"));
    QCOMPARE(chain.GetString(neither, Text("default")), Text("default"));
    // If a later reader fails, the value of an earlier one is kept.
    QCOMPARE(chain.GetInt(QStringLiteral("broken"), 7), 4);
}

QTEST_APPLESS_MAIN(tst_SettingsReaders)
#include "SettingsReaders_test.moc"
