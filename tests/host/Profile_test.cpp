// Tests of `vitrelux profile`: the grid of a profile, its unusual values, its effect on a picture, and its plot.
#include "Case.h"
#include "ExpectedText.h"
#include "ProfileText.h"
#include "ProgramTest.h"
#include "Table.h"

#include <QDomDocument>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <functional>

#include <exiv2/exiv2.hpp>

namespace {

const QByteArray kFrame = R"(s:Make="Canon" s:Model="Canon EOS 40D" s:ImageWidth="3888" s:ImageLength="2592" )"
                          R"(s:SensorFormatFactor="1.6" )";
const double kLongSide = 3888.0, kHalfDiagonal = std::hypot(3888.0, 2592.0) / 2.0;

QByteArray Number(double value)
{
    return QByteArray::number(value, 'g', 17);
}

QByteArray Setting(double focalMm, double distanceM, double apertureApex)
{
    return "s:FocalLength=\"" + Number(focalMm) + "\" s:FocusDistance=\"" + Number(distanceM) + "\" s:ApertureValue=\""
        + Number(apertureApex) + "\" ";
}

/// Returns a model on a separate line. Its focal length is the frame's long side.
QByteArray Model(const char *name, const QByteArray &values, const QByteArray &models = {})
{
    return "\n<s:" + QByteArray(name) + " s:FocalLengthX=\"1\" " + values + ">" + models + "</s:" + name + ">";
}

const QByteArray kRaw = R"(s:CameraRawProfile="True" )";
const QByteArray kBent = R"(s:RadialDistortParam1="-0.1" s:RadialDistortParam2="0.02")";

/// Returns a profile. The first line has no entry; each entry starts a new line.
QByteArray File(const QList<QByteArray> &entries)
{
    QByteArray text = R"(<x:xmpmeta xmlns:x="adobe:ns:meta/" )"
                      R"(xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#" )"
                      R"(xmlns:s="http://ns.adobe.com/photoshop/1.0/camera-profile" )"
                      R"(xmlns:p="http://ns.adobe.com/photoshop/1.0/"><rdf:RDF>)"
                      R"(<rdf:Description><p:CameraProfiles><rdf:Seq>)";
    for (const QByteArray &entry : entries)
        text += "\n<rdf:li " + entry + "</rdf:li>";
    return text + "</rdf:Seq></p:CameraProfiles></rdf:Description></rdf:RDF></x:xmpmeta>\n";
}

QByteArray Bent(const QByteArray &values)
{
    return values + ">" + Model("PerspectiveModel", kBent);
}

/// Returns an entry with a single distortion coefficient.
QByteArray Bent(double focalMm, double k)
{
    return kFrame + Setting(focalMm, 3.0, 3.0) + ">"
        + Model("PerspectiveModel", "s:RadialDistortParam1=\"" + Number(k) + '"');
}

/// Writes a 60 x 40 picture taken with the profiles' camera body.
void WritePicture(const QString &path, int focalMm)
{
    WriteJpeg(path, 60, 40);
    const auto image = Exiv2::ImageFactory::open(path.toStdString());
    image->exifData()["Exif.Image.Make"] = "Canon";
    image->exifData()["Exif.Image.Model"] = "Canon EOS 40D";
    image->exifData()["Exif.Photo.FocalLength"] = Exiv2::Rational(focalMm, 1);
    image->exifData()["Exif.Photo.FNumber"] = Exiv2::Rational(28, 10);
    image->writeMetadata();
}

/// Returns the weight, linear in 1/f, of the entry at focal length @p other when it is blended with the one at @p one.
double WeightOfOther(double one, double other, double at)
{
    return (1.0 / one - 1.0 / at) / (1.0 / one - 1.0 / other);
}

/// Reader of curves in a plot, which takes the scales from the axis labels, as a person would.
class ReadPlot {
public:
    explicit ReadPlot(const QByteArray &svg)
    {
        m_valid = m_document.setContent(svg);
        const QDomNodeList texts = m_document.elementsByTagName("text"_s);
        for (int i = 0; i < texts.size(); ++i)
            Take(texts.at(i).toElement());
    }

    bool Valid() const { return m_valid; }
    QString Texts() const { return m_texts.join(QLatin1Char('|')); }
    /// Returns the positions of a centered text.
    QVector<QPointF> Centered(const QString &text) const { return m_centered.value(text); }
    /// Returns the middle of a panel.
    QPointF Middle(int panel) const
    {
        return {(m_radii[panel].first().x() + m_radii[panel].last().x()) / 2.0,
                (m_values[panel].first().x() + m_values[panel].last().x()) / 2.0};
    }
    double ValuePerUnit(int panel) const { return std::abs(Slope(m_values[panel])); }

    /// Returns the points of the n-th curve with this title in a panel; x is the radius. @p pen gets color, width and
    /// dashes.
    QVector<QPointF> Curve(int panel, const QString &title, int n, QString *pen) const
    {
        const QDomNodeList lines = m_document.elementsByTagName("polyline"_s);
        for (int i = 0; i < lines.size(); ++i) {
            const QDomElement line = lines.at(i).toElement();
            const QVector<QPointF> points = PointsOf(line);
            const bool isThere = points.first().x() > m_radii[panel].first().x() - 1.0
                && points.last().x() < m_radii[panel].last().x() + 1.0;
            if (!isThere || line.firstChildElement("title"_s).text() != title || n-- > 0)
                continue;
            *pen = line.attribute("stroke"_s) + QLatin1Char(' ') + line.attribute("stroke-width"_s)
                + line.attribute("stroke-dasharray"_s).prepend(QLatin1Char(' '));
            QVector<QPointF> values;
            for (const QPointF &point : points)
                values.append({At(m_radii[panel], point.x()), At(m_values[panel], point.y())});
            return values;
        }
        return {};
    }

private:
    using Scale = QVector<QPointF>; // x: position in the drawing, y: value

    void Take(const QDomElement &text)
    {
        m_texts << text.text();
        const double x = text.attribute("x"_s).toDouble(), y = text.attribute("y"_s).toDouble();
        if (text.attribute("text-anchor"_s) == "middle"_s)
            m_centered[text.text()].append({x, y});
        bool isNumber = false;
        const double value = text.text().toDouble(&isNumber);
        if (!isNumber)
            return;
        if (text.attribute("text-anchor"_s) == "end"_s) { // left of its grid line; the baseline is half a letter lower
            if (x != m_lastX)
                m_values.append(Scale());
            m_values.last().append({y - 4.0, value});
            m_lastX = x;
        } else {
            if (value == 0.0)
                m_radii.append(Scale());
            m_radii.last().append({x, value});
        }
    }

    static double Slope(const Scale &scale)
    {
        return (scale.last().y() - scale.first().y()) / (scale.last().x() - scale.first().x());
    }
    static double At(const Scale &scale, double place)
    {
        return scale.first().y() + (place - scale.first().x()) * Slope(scale);
    }
    static QVector<QPointF> PointsOf(const QDomElement &line)
    {
        QVector<QPointF> points;
        const QStringList texts = line.attribute("points"_s).split(QLatin1Char(' '));
        for (const QString &text : texts)
            points.append(
                {text.section(QLatin1Char(','), 0, 0).toDouble(), text.section(QLatin1Char(','), 1).toDouble()});
        return points;
    }

    QDomDocument m_document;
    bool m_valid = false;
    QStringList m_texts;
    QVector<Scale> m_values, m_radii; // by panel
    QMap<QString, QVector<QPointF>> m_centered;
    double m_lastX = 0.0;
};

} // namespace

using Value = std::function<double(double)>; // of a curve at a radius in focal lengths
Q_DECLARE_METATYPE(Value)

class tst_Profile : public ProgramTest {
    Q_OBJECT
private Q_SLOTS:
    void grid();
    void plainText();
    void check_data();
    void check();
    void json();
    void pictureBetweenEntries();
    void plot_data();
    void plot();
    void refuses_data();
    void refuses();

private:
    QJsonObject Json(const QString &line)
    {
        return QJsonDocument::fromJson(Run("profile --json "_s + line).output).object();
    }
};

void tst_Profile::grid()
{
    const QByteArray light =
        Model("PerspectiveModel", kBent, Model("VignetteModel", R"(s:VignetteModelParam1="-0.5")"));
    const QByteArray names = R"(s:ProfileName="P" s:CameraPrettyName="C" s:LensPrettyName="N" )";
    const QByteArray more = R"(s:UniqueCameraModel="U" s:Lens="L" )";
    WriteFile(Path("m.lcp"_s),
              File({names + more + kFrame + Setting(35, 10000, 4) + ">" + light,
                    Bent(more + R"(s:LensID="7" )" + kFrame + Setting(24, 3, 3)),
                    R"(s:LensID="7" )" + kRaw + kFrame + Setting(24, 3.03, 6) + ">" + light,
                    R"(s:LensID="8" )" + kFrame + Setting(24.1, 3.01, 4) + ">" + light,
                    kFrame + Setting(24, 0.5, 4) + ">" + Model("FisheyeModel", kBent),
                    R"(s:ImageWidth="1234567.8" s:ImageLength="2592">)"
                        + Model("PerspectiveModel", kBent, Model("ChromaticGreenModel", kBent)),
                    ">" + Model("PerspectiveModel", {})}));
    const ProgramResult result = Run("profile m.lcp"_s);
    QCOMPARE(result.exitCode, 0);
    // Entries with the same models, focal lengths within 1 % and distances within 2 % share a row.
    QCOMPARE(result.output, ExpectedText("vitrelux profile m.lcp"));
}

void tst_Profile::plainText()
{
    WriteFile(Path("m.lcp"_s), profiletext::Profile(profiletext::FullEntry(0) + profiletext::FullEntry(1)));
    const ProgramResult result = Run("profile --plain m.lcp p.lcp"_s);
    QCOMPARE(result.exitCode, 0);
    // Centers are shares of 4000 x 3000, the largest pixel coordinates.
    QVERIFY2(result.output == ExpectedText("vitrelux profile --plain m.lcp p.lcp"), result.output.right(900));
}

void tst_Profile::check_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<int>("exitCode");
    const QByteArray sound = Bent(kFrame + Setting(50, 3, 3));
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_TABLES "/profile-checks.tsv"))) {
        QList<QByteArray> entries;
        for (const QString &entry : row.mid(3))
            entries << entry.toUtf8().replace("%1", kFrame).replace("%2", Setting(24, 3, 3)).replace("%3", sound);
        QTest::newRow(qPrintable(row[0])) << File(entries) << row[2].toUtf8() << row[1].toInt();
    }
}

void tst_Profile::check()
{
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, message);
    QFETCH(int, exitCode);
    WriteFile(Path("m.lcp"_s), content);
    const ProgramResult result = Run("profile --check m.lcp"_s);
    QCOMPARE(result.exitCode, exitCode);
    QCOMPARE(result.errorLines.size(), exitCode);
    if (message.isEmpty())
        QCOMPARE(result.output, QByteArray());
    else
        QVERIFY2(('\n' + result.output).contains("\nm.lcp" + message), result.output.constData());
    QCOMPARE(Run("profile m.lcp"_s).exitCode, exitCode);
}

void tst_Profile::json()
{
    WriteFile(Path("m.lcp"_s), profiletext::Profile(profiletext::FullEntry(0)));
    QCOMPARE(QJsonDocument(Json("m.lcp"_s)),
             QJsonDocument::fromJson(ExpectedText("vitrelux profile --json m.lcp, all models")));
    WriteFile(
        Path("m.lcp"_s),
        File({R"(s:Lens="L" s:LensID="7" s:FocusDistance="10000" )" + kRaw + ">" + Model("FisheyeModel", kBent)}));
    QCOMPARE(QJsonDocument(Json("m.lcp"_s)),
             QJsonDocument::fromJson(ExpectedText("vitrelux profile --json m.lcp, few facts")));
    WriteFile(Path("m.lcp"_s), File({}));
    QVERIFY(Json("m.lcp"_s)["problem"_s].toString().contains("no entry"_s));
}

void tst_Profile::pictureBetweenEntries()
{
    WriteFile(Path("m.lcp"_s),
              File({Bent(20, -0.1).replace("40D", "X").replace("1.6", "2"), Bent(24, -0.08), Bent(35, 0.04),
                    Bent(kFrame + Setting(24, 1, 3)), Bent(kFrame + Setting(35, 1, 3))}));
    WritePicture(Path("c.jpg"_s), 28);
    QJsonObject fit = Json("--for c.jpg m.lcp"_s)["fit"_s].toObject();
    const QJsonArray entries = fit.take("distortion"_s).toArray();
    QCOMPARE(entries.size(), 2);
    const double weight = WeightOfOther(24, 35, 28);
    for (const QJsonValue &value : entries) {
        const Case named("entry", value["entry"_s].toInt());
        const bool isLonger = value["entry"_s].toInt() == 3;
        QVERIFY(isLonger || value["entry"_s].toInt() == 2);
        QVERIFY(std::abs(value["weight"_s].toDouble() - (isLonger ? weight : 1.0 - weight)) < 1e-9);
    }
    const QByteArray zoom = QByteArray::number(fit.take("zoom"_s).toDouble(), 'f', 4);
    QCOMPARE(QJsonDocument(fit),
             QJsonDocument::fromJson(ExpectedText("vitrelux profile --json --for c.jpg m.lcp, the rest of the fit")));
    const ProgramResult text = Run("profile --for c.jpg m.lcp"_s);
    QCOMPARE(text.exitCode, 0);
    QCOMPARE(text.output,
             Run("profile m.lcp"_s).output + '\n'
                 + ExpectedText("vitrelux profile --for c.jpg m.lcp, after the grid").replace("%1", zoom));

    QCOMPARE(Run("profile --for c.jpg --plot b.svg m.lcp"_s).exitCode, 0);
    const ReadPlot plot(ReadFile(Path("b.svg"_s)));
    // Steps are 1, 2 or 5 times a power of ten, and at least a seventh of the range, here -5.5 to 1.4.
    const QString radii = "|0|0.25|0.5|0.75|1|radius / half diagonal|"_s, none = "|0|0.05"_s + radii + "no model|"_s;
    QCOMPARE(plot.Texts(),
             "m.lcp, in pixels of the picture|Distortion (%)|-6|-5|-4|-3|-2|-1|0|1|2"_s + radii
                 + "Color shift (pixels): red solid, blue dashed"_s + none + "Light (EV)"_s + none
                 + "blend for c.jpg|20 mm|24 mm|35 mm"_s);
    QCOMPARE(plot.Centered("no model"_s), QVector<QPointF>({plot.Middle(1), plot.Middle(2)}));
    QString pen;
    for (const auto &[title, expected] : {std::pair("20 mm f/2.8 3 m"_s, "#cc1f1f 1 "_s),
                                          std::pair("35 mm f/2.8 1 m"_s, "#921fcc 1 "_s), // hues of 0 and 280 degrees
                                          std::pair("blend for c.jpg"_s, "#000000 2.5 "_s)}) {
        plot.Curve(0, title, 0, &pen);
        QCOMPARE(pen, expected);
    }
    const QVector<QPointF> blend = plot.Curve(0, "blend for c.jpg"_s, 0, &pen);
    QCOMPARE(blend.size(), 101);
    for (const QPointF &point : blend) {
        const Case named(point);
        const double u = point.x() * kHalfDiagonal / kLongSide;
        const double expected = 100.0 * ((1.0 - weight) * -0.08 + weight * 0.04) * u * u;
        QVERIFY(std::abs(point.y() - expected) < 0.01 * plot.ValuePerUnit(0));
    }
    // A model that folds near the center: not even the largest zoom fills the picture.
    WriteFile(Path("folded.lcp"_s), File({Bent(28, -9.0)}));
    const QByteArray folded = Run("profile --for c.jpg folded.lcp"_s).output;
    QVERIFY2(folded.contains("\n  Framing     zoom 2.0000, ")
                 && folded.contains("\n              some pixels stay empty\n"),
             folded);
    // Every second of 202 entries is plotted, and all but one of their 25 focal lengths are listed.
    QList<QByteArray> many;
    for (int i = 0; i < 202; ++i)
        many << Bent(20 + i % 25, -0.1);
    WriteFile(Path("many.lcp"_s), File(many));
    QCOMPARE(Run("profile --plot many.svg many.lcp"_s).exitCode, 0);
    const QString listed = ReadPlot(ReadFile(Path("many.svg"_s))).Texts();
    QVERIFY2(listed.startsWith("many.lcp, 101 of 202 entries, in pixels of the profile's frame|"_s)
                 && listed.count(" mm|"_s) == 24
                 && listed.endsWith("|44 mm|24 of 25 focal lengths, which run from red to violet"_s),
             qPrintable(listed));
    // Only the blend is black.
    for (const QString &options : {QString(), " --for c.jpg"_s}) {
        QCOMPARE(Run("profile --overwrite --plot b.png m.lcp"_s + options).exitCode, 0);
        const QImage image = QImage(Path("b.png"_s)).convertToFormat(QImage::Format_Grayscale8);
        // Twice the drawing's size; the blend adds a row to the legend.
        QCOMPARE(image.size(), QSize(2360, options.isEmpty() ? 828 : 864));
        const QByteArray pixels(reinterpret_cast<const char *>(image.constBits()), int(image.sizeInBytes()));
        QVERIFY2(options.isEmpty() ? pixels.count('\0') == 0 : pixels.count('\0') > 300, qPrintable(options));
    }
}

void tst_Profile::plot_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("panel");
    QTest::addColumn<int>("curve");
    QTest::addColumn<Value>("value");
    QTest::addColumn<double>("end"); // radius where the curve ends, in half diagonals
    const auto row = [](const char *name, const QByteArray &entry, int panel, int curve, const Value &value,
                        double end = 1.0) {
        QTest::newRow(name) << File({kFrame + Setting(24, 3, 3) + ">" + entry}) << panel << curve << value << end;
    };
    const QByteArray models =
        Model("ChromaticRedGreenModel", R"(s:ScaleFactor="1.0004" s:RadialDistortParam1="0.0011")")
        + Model("ChromaticBlueGreenModel", R"(s:RadialDistortParam1="-0.0007")")
        + Model("VignetteModel", R"(s:VignetteModelParam1="-0.75" s:VignetteModelParam2="0.2")");
    const QByteArray all = Model("PerspectiveModel", kBent, models);
    row("distortion", all, 0, 0, [](double u) { return 100.0 * (-0.1 * u * u + 0.02 * std::pow(u, 4)); });
    row("fisheye relative to equidistant", Model("FisheyeModel", kBent), 0, 0,
        [](double u) { return 100.0 * (-0.1 * u * u + 0.02 * std::pow(u, 4)); });
    row("red", all, 1, 0, [](double u) { return kLongSide * u * (1.0004 * (1.0 + 0.0011 * u * u) - 1.0); });
    row("blue", all, 1, 1, [](double u) { return kLongSide * u * -0.0007 * u * u; });
    row("light", all, 2, 0, [](double u) { return std::log2(1.0 - 0.75 * u * u + 0.2 * std::pow(u, 4)); });
    // d/du (u - 1.2 u^3) = 0 at 1 / sqrt(3.6).
    row(
        "fold", Model("PerspectiveModel", R"(s:RadialDistortParam1="-1.2")"), 0, 0,
        [](double u) { return -120.0 * u * u; }, kLongSide / std::sqrt(3.6) / kHalfDiagonal);
}

void tst_Profile::plot()
{
    QFETCH(QByteArray, content);
    QFETCH(int, panel);
    QFETCH(int, curve);
    QFETCH(Value, value);
    QFETCH(double, end);
    WriteFile(Path("m.lcp"_s), content);
    WritePicture(Path("c.jpg"_s), 24);
    const QString own = "24 mm f/2.8 3 m"_s, blend = "blend for c.jpg"_s;
    const QByteArray applied = content.contains("Vignette") ? "distortion, color, light" : "distortion";
    const QByteArray fit = Run("profile --for c.jpg m.lcp"_s).output;
    QVERIFY2(fit.contains("  Applied     " + applied + "\n") && fit.contains("is 1.000 of the profile's"), fit);
    // In the picture's frame of 60 x 40, the only entry is the whole blend; only shifts in pixels depend on the frame.
    for (const auto &[options, title, side] :
         {std::tuple(QString(), own, kLongSide), {" --for c.jpg"_s, own, 60.0}, {" --for c.jpg"_s, blend, 60.0}}) {
        const Case named(options, title);
        QCOMPARE(Run("profile --overwrite --plot m.svg m.lcp"_s + options).output, QByteArray("m.svg\n"));
        const ReadPlot plot(ReadFile(Path("m.svg"_s)));
        QVERIFY(plot.Valid());
        QVERIFY2(plot.Texts().endsWith((title == blend ? blend : QString()) + "|24 mm"_s), qPrintable(plot.Texts()));
        QString pen;
        const QVector<QPointF> points = plot.Curve(panel, title, curve, &pen);
        QCOMPARE(pen,
                 (title == blend ? "#000000 2.5 "_s : "#1fcca9 1 "_s) + (curve == 1 ? "4"_s : QString())); // hue 168
        QVERIFY(points.size() > 50);
        QVERIFY(points.first().x() == 0.0 && std::abs(points.last().x() - end) < 0.0101); // curves have a hundred steps
        for (const QPointF &point : points) {
            const double unit = panel == 1 ? side / kLongSide : 1.0;
            const double expected = unit * value(point.x() * kHalfDiagonal / kLongSide);
            QVERIFY2(std::abs(point.y() - expected) < 0.01 * plot.ValuePerUnit(panel),
                     qPrintable("%1: %2, not %3"_s.arg(point.x()).arg(point.y()).arg(expected)));
        }
    }
}

void tst_Profile::refuses_data()
{
    QTest::addColumn<QString>("message");
    for (const QByteArray &row : ExpectedText("vitrelux profile, refused").trimmed().split('\n'))
        QTest::newRow(row.left(row.indexOf(" => "))) << QString::fromLatin1(row.mid(row.indexOf(" => ") + 4));
}

void tst_Profile::refuses()
{
    QFETCH(QString, message);
    const QString line = QString::fromLatin1(QTest::currentDataTag());
    WriteFile(Path("m.lcp"_s), File({Bent(24, -0.1)}));
    WriteFile(Path("frameless.lcp"_s), File({Bent(Setting(24, 3, 3))}));
    WriteFile(Path("old.svg"_s), "old");
    if (line.contains("large"_s))
        WriteFile(Path("large.lcp"_s), File({Bent(24, -0.1)}) + QByteArray(20 << 20, ' '));
    const ProgramResult result = Run("profile "_s + line);
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.error == "vitrelux: " + message.toUtf8() + '\n', result.error);
    const QByteArray fit =
        "\n\n  Picture     a.jpg\n  Setting     unknown\n  Applied     nothing\n  Not done    "; // no frame
    QVERIFY2(result.output.isEmpty() || result.output.contains(fit + message.toUtf8().mid(33)), result.output);
    QVERIFY(!QFile::exists(Path("new.svg"_s)) && !QFile::exists(Path("new.png"_s)));
    QCOMPARE(ReadFile(Path("old.svg"_s)), QByteArray("old"));
}

QTEST_GUILESS_MAIN(tst_Profile)
#include "Profile_test.moc"
