// Tests of the program's fitted corrections: which profile is used, where it comes from, messages about it, and runs
// without a profile.
#include "Case.h"
#include "ExpectedText.h"
#include "FittedFiles.h"
#include "ProgramTest.h"
#include "Table.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <exiv2/exiv2.hpp>

namespace {

const QString kFound = "lenses/deep/down/x.lcp"_s;

/// Returns the first part of a value that doesn't match the schema, or "" if all of it matches. Supports only the
/// keywords that our schema uses.
QString Mismatch(const QJsonValue &value, const QJsonObject &schema)
{
    const QString text = value.toVariant().toString(), type = schema.value("type"_s).toString();
    const QMap<QString, QJsonValue::Type> types = {{"string"_s, QJsonValue::String},
                                                   {"number"_s, QJsonValue::Double},
                                                   {"array"_s, QJsonValue::Array},
                                                   {"object"_s, QJsonValue::Object}};
    const QJsonObject properties = schema.value("properties"_s).toObject(), object = value.toObject();
    for (const QJsonValue &key : schema.value("required"_s).toArray()) {
        if (!object.contains(key.toString()))
            return key.toString();
    }
    for (const QString &key : object.keys()) {
        const QString fault =
            properties.contains(key) ? Mismatch(object.value(key), properties.value(key).toObject()) : key;
        if (!fault.isEmpty())
            return fault;
    }
    for (const QJsonValue &item : value.toArray()) {
        if (const QString fault = Mismatch(item, schema.value("items"_s).toObject()); !fault.isEmpty())
            return fault;
    }
    const bool isGood = (type.isEmpty() || types.value(type) == value.type())
        && (!schema.contains("enum"_s) || schema.value("enum"_s).toArray().contains(value))
        && text.contains(QRegularExpression(schema.value("pattern"_s).toString()))
        && text.size() >= schema.value("minLength"_s).toInt()
        && (!schema.contains("minimum"_s) || value.toDouble() >= schema.value("minimum"_s).toDouble());
    return isGood ? QString() : text;
}

} // namespace

class FittedRunTest : public ProgramTest {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void correct_data();
    void correct();
    void whileDecoding();
    void records();
    void secondRun();
    void info();
    void lenses();
};

/// Creates pictures named after their metadata, and a folder with a profile of their lens among profiles of similar
/// lenses.
void FittedRunTest::init()
{
    ProgramTest::init();
    const std::pair<const char *, PictureMetadata> pictures[] = {
        {"named.jpg", {kLens, "50/1", "8/1"}},
        {"again.jpg", {kLens, "50/1", "8/1", true}},
        {"unnamed.jpg", {}},
        {"known.jpg", {"EF135mm f/2L USM", "135041/1000", "8/1"}}, // a lens in lensfun's database
        {"none.jpg", {"EF24-105mm f/4L IS III USM", "50/1", "8/1"}},
    };
    for (const auto &[name, metadata] : pictures) {
        WriteJpeg(Path(QLatin1String(name)), 60, 40);
        WriteMetadata(Path(QLatin1String(name)), metadata);
    }
    for (const char *folder : {"lenses/deep/down", "empty", "alike", "unlike"})
        QVERIFY(QDir().mkpath(Path(QLatin1String(folder))));
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_TABLES "/lens-profiles.tsv")))
        WriteFile(Path(row[0]), Profile(qPrintable(row[1])));
    WriteFile(Path("alike/b.lcp"_s), Profile(kLens) + "<!-- other bytes -->");
    WriteFile(Path("unlike/b.lcp"_s), Profile(kLens).replace("'-0.5'", "'-5'"));
    WriteFile(Path("light.lcp"_s), Profile(kLens, /*hasVignetting=*/false));
    for (const char *variable : {"HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"})
        m_run->Set(variable, Path("empty"_s));
    m_run->Set("VITRELUX_PROBE_NOTES", Path("notes"_s));
}

void FittedRunTest::correct_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<int>("written");
    QTest::addColumn<QStringList>("messages"); // in this order
    for (const QByteArray &text : ExpectedText("fitted runs").trimmed().split('\n')) {
        const QStringList cells = QString::fromLatin1(text).split(" => "_s);
        QTest::newRow(qPrintable(cells[0]))
            << QString(cells.value(1)).replace("%1"_s, QStringLiteral(PROBE_PLUGIN)) << cells.value(2).toInt()
            << cells.value(3).toInt() << QString(cells.value(4)).replace("\\n"_s, "\n"_s).split(" | "_s);
    }
}

void FittedRunTest::correct()
{
    QFETCH(QString, line);
    QFETCH(int, exitCode);
    QFETCH(int, written);
    QFETCH(QStringList, messages);
    QStringList arguments = ("correct -o out "_s + line).split(QLatin1Char(' '));
    for (QString &argument : arguments) {
        if (argument.startsWith("--lens="_s)) // underscores represent spaces
            argument.replace(QLatin1Char('_'), QLatin1Char(' '));
    }
    const ProgramResult result = m_run->Run(arguments);
    QVERIFY2(result.exitCode == exitCode, result.error);
    QCOMPARE(result.output.count('\n'), written);
    QCOMPARE(Names(Path("out"_s)).size(), written);
    const QString error = QString::fromUtf8(result.error);
    int from = 0;
    for (const QString &text : messages) {
        const int at = error.indexOf(text, from);
        QVERIFY2(at >= 0, qPrintable(text + " is missing from: "_s + error));
        from = at + text.size();
    }
    QVERIFY2(result.errorLines.size() == line.count(".jpg"_s) || line.startsWith("-v"_s), result.error);
}

/// With several threads per picture, large JPEGs are corrected while they are decoded; with one thread, afterward. Both
/// give the same files.
void FittedRunTest::whileDecoding()
{
    const QSize sizes[] = {{1300, 900}, {900, 1300}, {1200, 1000}};
    const char *const names[] = {"wide.jpg", "tall.jpg", "cut.jpg"};
    for (int i = 0; i < 3; ++i) {
        WriteJpeg(Path(QLatin1String(names[i])), sizes[i].width(), sizes[i].height());
        WriteMetadata(Path(QLatin1String(names[i])), {kLens, "50/1", "8/1"});
    }
    const QByteArray whole = ReadFile(Path("cut.jpg"_s));
    WriteFile(Path("cut.jpg"_s), whole.left(whole.size() - 2000)); // only the last rows are missing
    const QString line = "correct --profile lenses/0.lcp wide.jpg tall.jpg cut.jpg -o "_s;
    const ProgramResult after = Run(line + "after -j 3"_s), meanwhile = Run(line + "meanwhile -j 1"_s);
    QStringList failures[2];
    for (const QString &error : after.errorLines + meanwhile.errorLines)
        if (error.contains("cut.jpg"_s))
            failures[failures[0].size()] << error;
    QVERIFY2(after.exitCode == 1 && meanwhile.exitCode == 1, meanwhile.error);
    QCOMPARE(failures[0].size(), 1);
    QCOMPARE(failures[1], failures[0]);
    QCOMPARE(Names(Path("after"_s)), QStringList({"tall_corrected.tiff"_s, "wide_corrected.tiff"_s}));
    QCOMPARE(Names(Path("meanwhile"_s)), Names(Path("after"_s)));
    for (const QString &name : Names(Path("after"_s)))
        QVERIFY2(ReadFile(Path("after/"_s + name)) == ReadFile(Path("meanwhile/"_s + name)), qPrintable(name));
}

/// All kinds of records match the schema, and `report` reads them. A dry run makes the same decisions as a real one.
void FittedRunTest::records()
{
    const QJsonObject schema = QJsonDocument::fromJson(ReadFile(QStringLiteral(RECORD_SCHEMA))).object();
    const QDateTime taken(QDate(2001, 2, 3), QTime(4, 5, 6));
    QFile picture(Path("named.jpg"_s));
    QVERIFY(picture.open(QIODevice::ReadWrite) && picture.setFileTime(taken, QFileDevice::FileModificationTime));
    picture.close();
    const QString options = "--keep-time --suffix -{ext} --format jpeg --lens-path lenses "_s;
    const std::pair<QString, QStringList> rows[] = {
        {options + "-n named.jpg again.jpg none.jpg"_s, {"planned"_s, "corrected before"_s, "failed"_s}},
        {options + "named.jpg again.jpg none.jpg"_s, {"corrected"_s, "corrected before"_s, "failed"_s}},
        {options + "--skip-existing named.jpg ./named.jpg gone.jpg"_s, {"skipped"_s, "skipped"_s, "failed"_s}},
        {"--plain --profile p.lcp a.jpg a.png"_s, {"failed"_s, "corrected"_s}}, // the conflict is reported first
    };
    QByteArray all;
    int made = 0;
    for (const auto &[line, expected] : rows) {
        const Case named(line);
        const ProgramResult result = Run("correct --json -q -j 1 -o out "_s + line);
        QCOMPARE(result.exitCode, 1);
        QVERIFY2(result.errorLines.size() == 1 && result.summary.isEmpty(), result.error); // the failure
        all += result.output;
        QStringList outcomes;
        const QList<QByteArray> lines = result.output.trimmed().split('\n');
        for (const QByteArray &one : lines) {
            const QJsonObject record = QJsonDocument::fromJson(one).object();
            QVERIFY2(Mismatch(record, schema).isEmpty(), one + qPrintable(Mismatch(record, schema)));
            outcomes << record.value("outcome"_s).toString();
        }
        QCOMPARE(outcomes, expected);
        made += outcomes.count("corrected"_s);
        QCOMPARE(Names(Path("out"_s)).size(), made);
        if (!line.contains("again"_s))
            continue;
        QJsonObject first = QJsonDocument::fromJson(lines[0]).object();
        const QString assumed = first.take("assumed"_s).toArray().first().toString(), note = "; assumed: "_s + assumed;
        QCOMPARE(assumed, expected[0] == "planned"_s ? QString() : "no color profile with curves: treated as sRGB"_s);
        QVERIFY(first.take("seconds"_s).isDouble());
        QCOMPARE(first.take("notes"_s).toArray().first().toString(),
                 "profile \"%1\"; entries: 50 mm f/8 10 m 100 %%2; left out: %3"_s.arg(
                     Path(kFound), assumed.isEmpty() ? assumed : note, first.value("why"_s).toString()));
        const QByteArray record = ExpectedText("vitrelux correct --json named.jpg");
        QCOMPARE(QJsonDocument(first),
                 QJsonDocument::fromJson(
                     QByteArray(record).replace("%1", m_dir->path().toUtf8()).replace("%2", expected[0].toUtf8())));
    }
    QCOMPARE(QFileInfo(Path("out/named-{ext}.jpg"_s)).lastModified(), taken);
    QVERIFY(Mismatch(QJsonObject{{"picture"_s, "a"_s}, {"outcome"_s, "lost"_s}, {"seconds"_s, 0}}, schema) == "lost"_s);
    WriteFile(Path("records"_s), all + "\n{}");
    const ProgramResult report = Run("report records"_s);
    QCOMPARE(report.errorLines, QStringList("vitrelux: records: line 13 is not a record of 'correct --json'"_s));
    QVERIFY2(report.exitCode == 1 && report.output.startsWith("7 pictures: 2 corrected, "), report.output);
}

/// A run leaves a record in the result's XMP, by which later runs and other programs recognize the correction.
void FittedRunTest::secondRun()
{
    const QString first = "out/named_corrected.tiff"_s;
    Run("correct -o out --amount distortion=80 --lens-path lenses named.jpg"_s);
    const auto image = Exiv2::ImageFactory::open(Path(first).toStdString());
    image->readMetadata();
    QByteArray record;
    for (const Exiv2::Xmpdatum &one : image->xmpData())
        if (one.key() != "Xmp.vitrelux.Version" && one.key() != "Xmp.vitrelux.Zoom")
            record += (one.key() + " = " + one.toString() + '\n').c_str();
    const QByteArray digest =
        QCryptographicHash::hash(ReadFile(Path(kFound)), QCryptographicHash::Md5).toHex().toUpper();
    QVERIFY2(record == ExpectedText("XMP of the first run").replace("%1", digest), record);

    Run("correct -o part --distortion --lens-path lenses named.jpg"_s);
    for (const QByteArray &text : ExpectedText("second runs").trimmed().split('\n')) {
        const QStringList row = QString::fromLatin1(text).split(" => "_s); // options, exit code, part of the messages
        const QString line = "correct --overwrite -o later "_s + row[0];
        const ProgramResult result = Run(line.endsWith(".tiff"_s) ? line : line + QLatin1Char(' ') + first);
        QVERIFY2(result.exitCode == row[1].toInt() && QString::fromUtf8(result.error).contains(row[2]),
                 text + ": " + result.error);
    }
}

void FittedRunTest::info()
{
    static const QRegularExpression kZoom("zoom \\d\\.\\d{4}"_s); // another test checks its value
    const auto printed = [this](const QString &line) {
        return QString::fromUtf8(Run(line).output).replace(m_dir->path(), "%1"_s).replace(kZoom, "zoom %2"_s).toUtf8();
    };
    const QByteArray text = printed("info --lens-path lenses named.jpg again.jpg"_s);
    QVERIFY2(text == ExpectedText("vitrelux info named.jpg again.jpg"), text);
    const QByteArray objects = printed("info --json --lens-path lenses named.jpg again.jpg"_s).trimmed();
    const QByteArray expected = ExpectedText("vitrelux info --json named.jpg again.jpg, as a list");
    const QJsonDocument list = QJsonDocument::fromJson('[' + QByteArray(objects).replace('\n', ',') + ']');
    QVERIFY2(list == QJsonDocument::fromJson(expected), objects);
    const QJsonObject none = QJsonDocument::fromJson(printed("info --json --lens-path lenses none.jpg"_s)).object();
    const QString nearest =
        "\"Canon EF 24-105mm f/4L IS USM\" on Canon EOS 40D (%1/lenses/deep/down/x.lcp): another generation"_s;
    QVERIFY(none.value("noProfile"_s).toString().contains("IS III"_s) && !none.contains("profile"_s));
    QCOMPARE(none.value("nearest"_s).toArray().first().toString(), nearest);
    QVERIFY(printed("info --lens-path lenses none.jpg"_s).contains("\n  Nearest       " + nearest.toUtf8() + '\n'));
    // A picture without metadata, whose facts are all given as options: only profiles of the given body match.
    WriteJpeg(Path("bare.jpg"_s), 60, 40);
    const QJsonObject typed =
        QJsonDocument::fromJson(m_run
                                    ->Run({"info"_s, "--json"_s, "--lens-path"_s, "lenses"_s, "--focal"_s, "50"_s,
                                           "--aperture"_s, "8"_s, "--distance"_s, "10"_s, "--lens"_s,
                                           "EF24-105mm f/4L IS USM"_s, "--body"_s, "Canon EOS 40D"_s, "bare.jpg"_s})
                                    .output)
            .object();
    QCOMPARE(typed.value("profile"_s).toString(), Path(kFound));
    const QByteArray assumed = QJsonDocument(typed.value("assumed"_s).toArray()).toJson();
    QVERIFY2(!assumed.contains("another"), assumed);
    QVERIFY(Run("info --lens-path empty known.jpg"_s).output.contains("  Profile       lensfun:Canon/Canon EF 135mm"));
}

void FittedRunTest::lenses()
{
    WriteFile(Path("lenses/broken.lcp"_s), "no profile");
    QVERIFY(QFile::link(Path("lenses"_s), Path("link"_s)) && QDir().mkpath(Path("lenses/shut"_s)));
    QVERIFY(QFile::setPermissions(Path("lenses/shut"_s), {}));
    m_run->beforeStart = RespectPermissions;
    static const QRegularExpression kCount("lensfun(\n  |\",\"lenses\":)\\d{4,}"_s); // lenses in the database
    const auto printed = [this](const QString &line) {
        const ProgramResult result = Run("lenses --lens-path "_s + line);
        [&] { QVERIFY2(result.exitCode == 0 && result.error.isEmpty(), result.error); }();
        return QString::fromUtf8(result.output)
            .replace(m_dir->path(), "%1"_s)
            .replace(kCount, "lensfun\\1%2"_s)
            .toUtf8();
    };
    QVERIFY2(printed("link"_s) == ExpectedText("vitrelux lenses"), printed("link"_s));
    const QByteArray found = printed("lenses 24-105 f/4"_s);
    QVERIFY2(found.startsWith(ExpectedText("vitrelux lenses 24-105 f/4, without lensfun") + "lensfun:Canon/"), found);
    QVERIFY2(found.contains("\nlensfun:Sigma/"), found);
    const QByteArray objects = '[' + printed("link --json"_s).replace('\n', ',').replace("%2},", "0}]");
    const QByteArray expected = ExpectedText("vitrelux lenses --json, as a list");
    QVERIFY2(QJsonDocument::fromJson(objects) == QJsonDocument::fromJson(expected), objects);
    const QByteArray lens = "{\"lens\":\"Sigma 24-105mm f/4 DG OS HSM\",\"profiles\":[\"%1/lenses/3.lcp\"]}\n";
    QVERIFY(printed("lenses --json sigma 24-105"_s).startsWith(lens + "{\"lens\":\"lensfun:Sigma/"));
    for (const QByteArray &text : ExpectedText("failures without a picture").trimmed().split('\n')) {
        const QStringList row = QString::fromLatin1(text).replace("%1"_s, m_dir->path()).split(" => "_s);
        const ProgramResult failed = Run(row[0]);
        QCOMPARE(failed.exitCode, 1);
        QCOMPARE(failed.errorLines, QStringList("vitrelux: "_s + row.value(1)));
    }
    for (const char *line :
         {"lenses --lens-path link --plugin none.so", "info --lens-path gone --plugin none.so named.jpg"}) {
        const ProgramResult noted = Run(QLatin1String(line));
        QVERIFY2(noted.exitCode == 0 && noted.error.startsWith("vitrelux: note: plug-in \""), noted.error);
        QVERIFY2(noted.output.contains(QByteArray(line).contains("info") ? "none: there is no profile folder"
                                                                         : "\n  7 files for 6"),
                 noted.output);
    }
}

QTEST_GUILESS_MAIN(FittedRunTest)
#include "FittedRun_test.moc"
