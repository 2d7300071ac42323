// Finds lenses by the names that real cameras write, among thousands of profiles with similar names and in lensfun's
// database.
#include "KImage.h"
#include "LensfunDatabase.h"
#include "MadeProfiles.h"
#include "ProfileMatch.h"
#include "Table.h"
#include "TestFiles.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <exiv2/exiv2.hpp>

namespace {

using made::Known;
using Pattern = QRegularExpression;

constexpr int kDecoys = 4000;

/// A row of lenses.tsv, which explains the columns.
struct Row {
    QString make, model;
    double factor = 0.0;
    QString focalMm, aperture;
    QStringList metadata;
    bool isOnOwnBody = false;
    QString lens, rival, lensfun; // empty: none
};

QVector<Row> ReadRows()
{
    QVector<Row> rows;
    for (const QStringList &cells : ReadTable(QStringLiteral(VITRELUX_LENSES)))
        rows.append({cells[0], cells[1], cells[2].toDouble(), cells[3], cells[4], cells[5].split(QLatin1Char(';')),
                     cells[6] == "same"_s, cells[7], cells[8], cells[9]});
    return rows;
}

/// Writes Nikon's lens data: eight hexadecimal bytes that together identify the lens.
void WriteNikonLens(const QString &bytes, Exiv2::ExifData *exif)
{
    constexpr const char *kKeys[] = {"NikonLd2.LensIDNumber",
                                     "NikonLd2.LensFStops",
                                     "NikonLd2.MinFocalLength",
                                     "NikonLd2.MaxFocalLength",
                                     "NikonLd2.MaxApertureAtMinFocal",
                                     "NikonLd2.MaxApertureAtMaxFocal",
                                     "NikonLd2.MCUVersion",
                                     "Nikon3.LensType"};
    (*exif)["Exif.NikonLd2.Version"].setValue("48 49 48 49"); // "0101": not scrambled
    for (int i = 0; i < 8; ++i)
        (*exif)[std::string("Exif.") + kKeys[i]].setValue(
            std::to_string(bytes.section(QLatin1Char(' '), i, i).toInt(nullptr, 16)));
}

/// Writes a JPEG with a row's EXIF data, maker notes and XMP.
void WritePicture(const QString &path, const Row &row)
{
    WriteJpeg(path, 60, 40);
    const auto image = Exiv2::ImageFactory::open(path.toStdString());
    Exiv2::ExifData exif;
    Exiv2::XmpData xmp;
    exif["Exif.Image.Make"] = row.make.toStdString();
    exif["Exif.Image.Model"] = row.model.toStdString();
    exif["Exif.Photo.FocalLength"].setValue(QString::number(row.focalMm.toDouble() * 100).toStdString() + "/100");
    exif["Exif.Photo.FNumber"].setValue(QString::number(row.aperture.toDouble() * 100).toStdString() + "/100");
    for (const QString &field : row.metadata) {
        const QString key = field.section(QLatin1Char('='), 0, 0), value = field.section(QLatin1Char('='), 1);
        if (key == "Nikon.LensData"_s)
            WriteNikonLens(value, &exif);
        else if (key.startsWith("Xmp"_s))
            xmp[key.toStdString()] = value.toStdString();
        else
            exif[key.toStdString()].setValue(value.toStdString());
    }
    image->setExifData(exif);
    image->setXmpData(xmp);
    image->writeMetadata();
}

/// Returns an .lcp profile in attribute form with only the lens's name, because LensInfo would make the test easier.
QByteArray AttributeProfile(const QString &make, const QString &model, const QString &lens)
{
    return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'"
           " xmlns:p='http://ns.adobe.com/photoshop/1.0/' xmlns:c='http://ns.adobe.com/photoshop/1.0/camera-profile'>"
           "<r:Description><p:CameraProfiles><r:Seq><r:li><r:Description c:Make='"
        + make.toUtf8() + "' c:Model='" + model.toUtf8() + "' c:Lens='" + lens.toUtf8()
        + "' c:ImageWidth='6000' c:ImageLength='4000' c:SensorFormatFactor='1'><c:PerspectiveModel c:FocalLengthX='1'"
          " c:RadialDistortParam1='0.01'/></r:Description></r:li></r:Seq></p:CameraProfiles></r:Description></r:RDF>"
          "</x:xmpmeta>";
}

using Change = QPair<QString, QString>; // a pattern, and the text that replaces its match

/// Returns names of lenses similar to @p lens, each with one or two differences that are never just a matter of
/// spelling.
QStringList NearNames(const QString &lens)
{
    const QString maker = "^(?!Apple|Google|Galaxy)(smc Pentax-|\\S+ )"_s
                          "(M\\.Zuiko Digital |Zuiko Digital |Lumix |Nikkor )?"_s;
    const QVector<QVector<Change>> kinds = {
        // With and without a stabilizer.
        {{" (IS|VR|OSS|OIS|Mega O\\.I\\.S\\.)\\b|$"_s,
          lens.contains(Pattern(" (IS|VR|OSS|O\\.I\\.S)\\b"_s)) ? ""_s : " IS"_s}},
        // Another generation.
        {{"( II| IV)?$"_s, " III"_s}, {"( II| IV)?$"_s, " V"_s}},
        // Another purpose.
        {{"$"_s, " Fisheye"_s}, {"$"_s, " Reflex"_s}},
        // A converter.
        {{"$"_s, " + 1.4x"_s}, {"$"_s, " + EF 2x II extender"_s}},
        // Another maker.
        {{maker, "Yongnuo "_s}, {maker, "Meike "_s}, {maker, "Soligor "_s}},
        // Other focal lengths.
        {{"\\d+(?=(\\.\\d+)?(-\\d+)? ?mm)"_s, "7"_s},
         {"\\d+(?=(\\.\\d+)?(-\\d+)? ?mm)"_s, "21"_s},
         {"(-\\d+)?(?= ?mm)"_s, "-450"_s},
         {"(-\\d+)?(?= ?mm)"_s, "-46"_s}},
        // Other apertures.
        {{"[fF]/?\\d+(\\.\\d+)?"_s, "f/1.2"_s},
         {"[fF]/?\\d+(\\.\\d+)?"_s, "f/8"_s},
         {"[fF]/?\\d+(\\.\\d+)?"_s, "f/6.3"_s}},
    };
    QStringList names;
    const auto changed = [](QString name, const Change &change) {
        const QRegularExpressionMatch match = Pattern(change.first).match(name);
        return match.hasMatch() ? name.replace(match.capturedStart(), match.capturedLength(), change.second) : name;
    };
    const bool omitsStabilizer = lens.contains(Pattern("^Panasonic|^Olympus M|^\\d"_s)); // cameras omit it
    for (int i = omitsStabilizer ? 1 : 0; i < kinds.size(); ++i)
        for (const Change &change : kinds[i]) {
            names << changed(lens, change);
            const bool isCompact = lens.at(0).isDigit(); // few fixed lenses are similar: one difference is enough
            for (int j = i + 1; j < kinds.size() && !isCompact; ++j)
                for (const Change &other : kinds[j])
                    names << changed(changed(lens, other), change);
        }
    names.removeAll(lens);
    names.removeDuplicates();
    return names;
}

/// Fails if there are faults. Prints them one by one, because they may not fit into a QVERIFY2 message.
void Verify(const QStringList &faults)
{
    for (const QString &fault : faults)
        qWarning("%s", qPrintable(fault));
    QCOMPARE(faults.size(), 0);
}

} // namespace

class tst_FindLens : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { KImage::exit(); }
    void amongDecoys();
    void inLensfun();
    void similarNamesInLensfun_data();
    void similarNamesInLensfun();

private:
    PictureFacts Facts(const Row &row) const
    {
        const QString path = m_folder.filePath("a.jpg"_s);
        WritePicture(path, row);
        return WithFullLensName(ReadPictureFacts(path, nullptr));
    }
    /// Returns all profiles except those for @p lenses.
    QVector<IndexedProfile> AllBut(const QStringList &lenses) const
    {
        QVector<IndexedProfile> rest;
        std::copy_if(m_profiles.begin(), m_profiles.end(), std::back_inserter(rest),
                     [&](const IndexedProfile &one) { return !lenses.contains(one.head.lensNames.first()); });
        return rest;
    }

    QTemporaryDir m_folder;
    QVector<Row> m_rows;
    QVector<IndexedProfile> m_profiles;
};

/// Writes and indexes the profiles of the rows, and adds decoys as if they had been read from files.
void tst_FindLens::initTestCase()
{
    KImage::init(nullptr);
    m_rows = ReadRows();
    QVERIFY(m_rows.size() > 60);
    ProfileIndex index{QString()};
    QStringList lenses;
    for (const Row &row : qAsConst(m_rows)) {
        const QString model = row.isOnOwnBody ? row.model : "Reference"_s;
        for (const QString &lens : {row.lens, row.rival}) {
            if (!lens.isEmpty() && !lenses.contains(model + lens))
                WriteFile(m_folder.filePath(QString::number(lenses.size()) + ".lcp"_s),
                          AttributeProfile(row.make, model, lens));
            lenses << model + lens;
        }
    }
    QVERIFY(index.Scan({m_folder.path()}));
    m_profiles = index.Profiles();
    QVector<IndexedProfile> decoys;
    for (const Row &row : qAsConst(m_rows)) {
        const QStringList near = row.lens.isEmpty() ? QStringList() : NearNames(row.lens);
        for (const QString &lens : near) {
            IndexedProfile decoy;
            decoy.path = "decoy: "_s + lens;
            decoy.head.make = row.make;
            decoy.head.model = row.isOnOwnBody ? row.model : "Reference"_s;
            decoy.head.lensNames = QStringList{lens};
            const LensName name = ParseLensNames(lens).value(0); // as the index does
            decoy.head.minFocalMm = name.minFocalMm;
            decoy.head.maxFocalMm = name.maxFocalMm;
            decoys.append(decoy);
        }
    }
    QVERIFY2(decoys.size() >= kDecoys, qPrintable(QString::number(decoys.size())));
    m_profiles += decoys;
}

void tst_FindLens::amongDecoys()
{
    double factor = 0.0;
    ProfileMatcher matcher(
        {[&](const QString &, const QString &model) { return model == "Reference"_s ? std::min(factor, 1.0) : factor; },
         [](const QString &, const QString &) { return false; }});
    QStringList faults;
    for (const Row &row : qAsConst(m_rows)) {
        factor = row.factor;
        const PictureFacts facts = Facts(row);
        const QString title = row.model + ", "_s + row.lens + ": "_s;
        const ProfileMatch found = matcher.Match(m_profiles, facts);
        const auto right = std::find_if(m_profiles.begin(), m_profiles.end(), [&](const IndexedProfile &one) {
            return one.head.lensNames.first() == row.lens && (!row.isOnOwnBody || one.head.model == row.model);
        });
        const QString path = right == m_profiles.end() ? QString() : right->path;
        const bool isNamed = found.isAmbiguous && !row.rival.isEmpty()
            && found.nearest.join(QLatin1Char(' ')).contains(path)
            && found.nearest.join(QLatin1Char(' ')).contains(row.rival);
        if ((found.path != path || found.isAmbiguous) && !isNamed)
            faults << title + "got "_s + found.path + QLatin1Char(' ') + found.reason;
        const ProfileMatch none = matcher.Match(AllBut({row.lens, row.rival}), facts);
        if (!none.path.isEmpty() || none.isAmbiguous)
            faults << title + "removed, got "_s + none.path + QLatin1Char(' ') + none.reason;
    }
    Verify(faults);
}

void tst_FindLens::inLensfun()
{
    const LensfunDatabase &database = LensfunDatabase::Instance();
    QVERIFY(database.LensCount() > 1000);
    QStringList faults;
    for (const Row &row : qAsConst(m_rows)) {
        const LensfunMatch found = database.Find(Facts(row));
        const bool isNamed = !row.rival.isEmpty() && !found.lens && found.reason.contains(row.lensfun);
        if (found.title != row.lensfun && !isNamed)
            faults << row.model + ", "_s + row.lens + ": got "_s + found.title + QLatin1Char(' ') + found.reason;
    }
    Verify(faults);
}

void tst_FindLens::similarNamesInLensfun_data()
{
    QTest::addColumn<QString>("camera"); // "MAKE/MODEL"
    QTest::addColumn<double>("focalMm");
    QTest::addColumn<QString>("expected"); // title, reason and notes or nearest
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_LENSFUN)))
        QTest::newRow(qPrintable(row[0])) << row[1] << row[2].toDouble() << row[3];
}

void tst_FindLens::similarNamesInLensfun()
{
    QFETCH(QString, camera);
    QFETCH(double, focalMm);
    QFETCH(QString, expected);
    const QString lens = QLatin1String(QTest::currentDataTag());
    PictureFacts facts;
    facts.make = Known(camera.section(QLatin1Char('/'), 0, 0));
    facts.model = Known(camera.section(QLatin1Char('/'), 1));
    facts.focalMm = Known(focalMm);
    if (!lens.startsWith("none"_s))
        facts.lensNames = {Known(lens)};
    // A full name is added for this lens alone: the other names have more words, or no aperture.
    QCOMPARE(WithFullLensName(facts).lensNames.size(), facts.lensNames.size() + (lens == "YN50mm f/1.8"_s));
    LensfunMatch found = LensfunDatabase::Instance().Find(facts);
    found.nearest.removeDuplicates(); // a lens may be listed under several names
    QCOMPARE((QStringList{found.title, found.reason} + found.notes + found.nearest).join(QLatin1Char('\n')), expected);
}

QTEST_GUILESS_MAIN(tst_FindLens)
#include "FindLens_test.moc"
