// The profile report: its content, the problems that make a file unusable, and notes.
#include "ProfileReport.h"

#include "Case.h"
#include "Files.h"
#include "ProfileText.h"

#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

using namespace profiletext;

namespace {

const char *const kSubModels[] = {"ChromaticGreenModel", "ChromaticRedGreenModel", "ChromaticBlueGreenModel",
                                  "VignetteModel"};

QByteArray Radial(int count)
{
    return Value("RadialDistortParam1", "0.01").repeated(count);
}

QByteArray Vignette(int count)
{
    return Value("VignetteModelParam1", "0.01").repeated(count);
}

/// Returns all sub-models with valid values, except the one named by @p without.
QByteArray SubModels(const char *without = "")
{
    QByteArray models;
    for (const char *tag : kSubModels) {
        if (qstrcmp(tag, without) != 0)
            models += Resource(tag, Place("1", "1", "0.5", "0.5") + Radial(1) + Vignette(3));
    }
    return models;
}

QByteArray OneEntry(const char *model, const QByteArray &content)
{
    return Profile(Entry(Size("101", "51") + Resource(model, Place("1", "1", "0.5", "0.5") + content)));
}

} // namespace

class tst_ProfileReport : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void content();
    void littleContent();
    void problems();
    void problemsOfTheFileItself();
    void notes();

private:
    ProfileReport Report(const QByteArray &content)
    {
        return ReadProfileReport(WriteFile(m_folder.filePath(QStringLiteral("profile.lcp")), content));
    }

    QTemporaryDir m_folder;
};

void tst_ProfileReport::content()
{
    const ProfileReport report = Report(Profile(FullEntry(0) + FullEntry(0.3) + FullEntry(0.5)));
    QVERIFY2(report.usable, qPrintable(report.problem));
    QCOMPARE(report.problem, QString());
    const QStringList names{report.profileName, report.make, report.model, report.camera, report.lens};
    QCOMPARE(names.join(QLatin1Char('|')),
             QStringLiteral("Test body - Test lens 24mm|Maker|MODEL 7|Seven|Test lens 24mm"));
    QCOMPARE(report.focalLengthMm.value_or(0), 24.0);
    QCOMPARE(report.fNumber.value_or(0), 4.0); // APEX 4
    QCOMPARE(report.focusDistanceM.value_or(0), 1.25);
    QCOMPARE(report.entryCount, 3);
    QCOMPARE(report.imageWidth, 4001.0);
    QCOMPARE(report.imageLength, 3001.0);
    QVERIFY(!report.fisheye);

    QStringList found;
    for (const ProfileReportModel &model : report.models) {
        if (model.values.found)
            found << model.name;
    }
    QCOMPARE(found.join(QStringLiteral(", ")),
             QStringLiteral("distortion, green, red against green, blue against green, vignette"));
    QCOMPARE(report.models[2].values.scaleFactor, 0.999F);
    QCOMPARE(report.notes, QStringList{QStringLiteral("3 entries; the first one is used for every picture")});
}

void tst_ProfileReport::littleContent()
{
    const ProfileReport report =
        Report(Profile(Entry(Size("101", "51") + Value("Lens", "\n 24  mm ") + Value("UniqueCameraModel", "U")
                             + Value("FocalLength", "wide") + Resource("FisheyeModel", ""))));
    QVERIFY(report.usable);
    QVERIFY(report.fisheye);
    QCOMPARE(report.lens, QStringLiteral("24 mm"));
    QCOMPARE(report.camera, QStringLiteral("U"));
    QCOMPARE(report.make + report.model + report.profileName, QString());
    QVERIFY(!report.focalLengthMm && !report.fNumber && !report.focusDistanceM);
    QCOMPARE(report.models.size(), 5);
    QVERIFY(report.models[0].values.found && !report.models[1].values.found && !report.models[4].values.found);
}

void tst_ProfileReport::problems()
{
    // Matches the whole problem against a regular expression; "." matches no line break, so it must be a single line.
    const auto check = [this](const QByteArray &content, const QByteArray &expression) {
        const ProfileReport report = Report(content);
        const QRegularExpression whole(QRegularExpression::anchoredPattern(QString::fromLatin1(expression)));
        QVERIFY2(whole.match(report.problem).hasMatch(), qPrintable(report.problem.left(1000)));
        QVERIFY(!report.usable && report.notes.isEmpty());
    };
    const QByteArray whole = Profile(FullEntry(0));
    const QByteArray model = Resource("PerspectiveModel", Place("1", "1", "0.5", "0.5"));
    const int cut = whole.indexOf("<stCamera:Lens>");
    const QByteArray cutLine = QByteArray::number(whole.left(cut).count('\n') + 1);

    check("", "an empty file; expected an \\.lcp profile \\(XML\\)");
    check("Hello\n", "not XML: .* at line 1, column \\d+; expected an \\.lcp profile \\(XML\\)");
    check("\x89PNG\r\n\x1A\n", "not XML: .*");
    check(whole.left(cut),
          "damaged or cut short: unexpected end of file at line " + cutLine + ", column \\d+; expected complete XML");
    // newLCP would accept this file, but data may be missing.
    check(whole.left(whole.indexOf("</rdf:Seq>")), "damaged or cut short: .*");
    check(whole.left(cut) + "</a>", "damaged or cut short: .* at line .*");
    check("<svg><defs><g/></defs></svg>",
          "XML, but not a lens profile: its root is <svg>, and following first child elements down to <g> finds no "
          "<rdf:li>");
    check(Profile("<rdf:li><rdf:Description stCamera:Make=\"M\" stCamera:ImageWidth=\"9\"/></rdf:li>"),
          "the values are attributes of <rdf:Description>; only the element form is supported .*");
    check(Profile("<rdf:li>" + model + "</rdf:li>"),
          "the first <rdf:li> has no rdf:parseType=\"Resource\"; only that form is supported");
    check(Profile(Entry(Size("101", "51")) + FullEntry(0)),
          "no model in the first <rdf:li>; expected a <stCamera:PerspectiveModel> or .*");
    check(Profile(Entry(model)), "no <stCamera:ImageWidth>; .*");
    check(Profile(Entry(Value("ImageWidth", "101") + model)), "no <stCamera:ImageLength>; .*");
    check(Profile(Entry(Value("ImageWidth", "101") + model + Value("ImageLength", "51"))),
          "<stCamera:ImageLength> comes after the model, where it is ignored; it must come before");
    for (const char *size : {"1", "-5", "nan", "inf", "wide", ""})
        check(Profile(Entry(Size(size, "51") + model)),
              QByteArray("\"") + size + "\" as <stCamera:ImageWidth>; expected a number of pixels above 1");
    check("<!DOCTYPE x [<!ENTITY e \"eeee\">]>" + whole,
          "not a profile: the document declares an entity \\(\"e\"\\).*");
    check(Profile(Entry(QByteArray("<a>").repeated(1000) + QByteArray("</a>").repeated(1000))),
          "not a profile: elements nest deeper than 256 levels");
    check("<" + QByteArray(1 << 20, 'x') + "/>", "XML, but not a lens profile: .{0,600}");
}

void tst_ProfileReport::problemsOfTheFileItself()
{
    QCOMPARE(ReadProfileReport(m_folder.filePath(QStringLiteral("missing.lcp"))).problem,
             QStringLiteral("can't be opened: No such file or directory"));
    QCOMPARE(ReadProfileReport(m_folder.path()).problem, QStringLiteral("a folder; expected an .lcp profile (XML)"));
    QCOMPARE(Report(QByteArray((16 << 20) + 1, ' ')).problem,
             QStringLiteral("not a profile: the file is larger than 16 MiB"));
    const QString pipe = m_folder.filePath(QStringLiteral("pipe.lcp"));
    QCOMPARE(mkfifo(qPrintable(pipe), 0600), 0);
    QCOMPARE(ReadProfileReport(pipe).problem, QStringLiteral("not a regular file; expected an .lcp profile (XML)"));
}

void tst_ProfileReport::notes()
{
    // Compares the start of the only note; an empty string expects none.
    const auto check = [this](const QByteArray &content, const char *text) {
        const QString note = QString::fromLatin1(text);
        const ProfileReport report = Report(content);
        QVERIFY2(report.usable, qPrintable(report.problem));
        QCOMPARE(report.notes.size(), note.isEmpty() ? 0 : 1);
        QCOMPARE(report.notes.value(0).left(note.size()), note);
        // Flaws are also stored in the model, so that callers can skip its correction.
        for (const ProfileReportModel &model : report.models) {
            const Case named(model.name);
            const bool isFlaw = note.startsWith(model.name + QStringLiteral(" model: a f")); // "a focal", "a fisheye"
            QCOMPARE(model.flaw.isEmpty() ? QString() : model.name + QStringLiteral(" model: ") + model.flaw,
                     isFlaw ? report.notes.value(0) : QString());
        }
    };
    const char *const perspective = "PerspectiveModel";
    const char *const fisheye = "FisheyeModel";
    const QByteArray place = Place("1", "1", "0.5", "0.5");

    check(OneEntry(perspective, Radial(3) + SubModels()), "");
    check(OneEntry(perspective, SubModels()), "");
    check(OneEntry(perspective, Radial(4) + SubModels()),
          "distortion model: 4 radial coefficients are not supported (up to 3 are); none is applied");
    check(OneEntry(fisheye, Radial(3) + SubModels()),
          "distortion model: a fisheye with 3 coefficients is not supported");
    check(OneEntry(fisheye, SubModels()), "distortion model: a fisheye with 0 coefficients is not supported");
    check(OneEntry(fisheye,
                   Radial(1) + SubModels("ChromaticGreenModel") + Resource("ChromaticGreenModel", place + Radial(3))),
          "green model: a fisheye with 3 coefficients is not supported");
    check(OneEntry(perspective, SubModels("VignetteModel") + Resource("VignetteModel", place + Vignette(2))),
          "vignette model: 2 of 3 coefficients; the missing ones count as 0");
    check(OneEntry(perspective, SubModels("ChromaticBlueGreenModel") + Resource("ChromaticBlueGreenModel", Radial(1))),
          "blue against green model: a focal length is missing");
    check(OneEntry(perspective, Value("ImageXCenter", "nan") + SubModels()),
          "distortion model: a focal length is missing or a value is not a number");
    check(OneEntry(perspective, SubModels("ChromaticGreenModel")), "no green model: ");
    check(OneEntry(perspective, SubModels("VignetteModel")), "no vignette model: ");
    check(OneEntry("GeometricModel", SubModels()),
          "model of unknown kind, <stCamera:GeometricModel>, treated as perspective");
}

QTEST_APPLESS_MAIN(tst_ProfileReport)
#include "ProfileReport_test.moc"
