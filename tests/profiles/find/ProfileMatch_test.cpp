// Tests of ProfileMatch.h: the right profile among decoys, and none if the right one is missing.
#include "ProfileMatch.h"

#include "MadeProfiles.h"

#include <QTest>

using made::Known;

namespace {

QString Text(const char *text)
{
    return QString::fromUtf8(text);
}

/// Lenses with similar names, of other generations, or with other apertures; each is a decoy for the others.
const char *const kLenses[] = {
    "Canon EF-S 18-55mm f/3.5-5.6",
    "Canon EF-S 18-55mm f/3.5-5.6 IS",
    "Canon EF-S 18-55mm f/3.5-5.6 IS II",
    "Canon EF-S 18-55mm f/3.5-5.6 IS STM",
    "Canon EF 70-200mm f/2.8L IS USM",
    "Canon EF 70-200mm f/2.8L IS II USM",
    "Canon EF 70-200mm f/4L IS USM",
    "Canon EF 70-200mm f/2.8L USM",
    "Canon EF 28-80mm f/3.5-5.6 USM IV",
    "Canon EF 28-80mm f/3.5-5.6 USM II",
    "Nikkor AF 50mm f/1.8D",
    "Nikon AI-S Nikkor 50mm f/1.8",
    "Nikkor AF-S 50mm f/1.8G",
    "Yongnuo YN 50mm f/1.8",
    "Nikkor AF-S 18-55mm f/3.5-5.6G DX VR",
    "Nikkor AF-S 18-55mm f/3.5-5.6G DX ED II",
    "Nikkor AF-S 18-200mm f/3.5-5.6G DX VR IF-ED",
    "Nikkor AF-S 18-70mm f/3.5-4.5G DX IF-ED",
    "Sigma 10-20mm f/4-5.6 EX DC HSM",
    "Sigma 10-20mm f/3.5 EX DC HSM",
    "Sigma 85mm f/1.4 EX DG HSM",
    "Sigma 85mm F1.4 DG DN | Art 020",
    "Olympus Zuiko Digital ED 14-42mm f/3.5-5.6",
    "Olympus M.Zuiko Digital ED 14-42mm f/3.5-5.6",
    "XF 50mm f/2 R WR",
    "XF 50mm f/1 R WR",
    "Tamron AF 28-300mm f/3.5-6.3 XR Di LD Aspherical (IF)",
};

IndexedProfile ProfileOf(const QString &lens)
{
    IndexedProfile profile;
    profile.path = lens;
    profile.head.make = QStringLiteral("Maker");
    profile.head.model = QStringLiteral("Reference");
    profile.head.lensNames = QStringList{lens};
    return profile;
}

QVector<IndexedProfile> AllBut(const QString &missing)
{
    QVector<IndexedProfile> profiles;
    for (const char *lens : kLenses)
        if (Text(lens) != missing)
            profiles.append(ProfileOf(Text(lens)));
    return profiles;
}

PictureFacts PictureWith(const QString &make, const QString &lens, double focalMm)
{
    PictureFacts facts;
    facts.make = Known(make);
    facts.model = Known(QStringLiteral("Camera"));
    facts.lensNames = {Known(lens)};
    facts.focalMm = Known(focalMm);
    return facts;
}

ProfileMatcher Matcher(double referenceFactor = 1.0, double cameraFactor = 1.5)
{
    return ProfileMatcher({[=](const QString &, const QString &model) {
                               return model == QLatin1String("Camera") ? cameraFactor : referenceFactor;
                           },
                           [](const QString &, const QString &) { return false; }});
}

} // namespace

class tst_ProfileMatch : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void lensAmongDecoys_data();
    void lensAmongDecoys();
    void bodies_data();
    void bodies();
    void namesEquallyGoodProfiles();
    void settingsOutsideTheLens_data();
    void settingsOutsideTheLens();
    void fixedLens();
    void bodyDoesNotOutweighTheLens();
    void sourcesInOrderOfTrust();
    void namelessLensOfAMount();
    void sameCameras();
};

void tst_ProfileMatch::lensAmongDecoys_data()
{
    QTest::addColumn<QString>("make");
    QTest::addColumn<QString>("lens"); // as cameras or exiftool write it
    QTest::addColumn<double>("focalMm");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *make, const char *lens, double focalMm, const char *expected) {
        QTest::newRow(lens) << Text(make) << Text(lens) << focalMm << Text(expected);
    };
    row("Canon", "EF-S18-55mm f/3.5-5.6 IS", 34, "Canon EF-S 18-55mm f/3.5-5.6 IS");
    row("Canon", "EF-S18-55mm f/3.5-5.6 IS STM", 18, "Canon EF-S 18-55mm f/3.5-5.6 IS STM");
    row("Canon", "EF70-200mm f/2.8L IS USM", 200, "Canon EF 70-200mm f/2.8L IS USM");
    row("Canon", "Canon EF 28-80mm f/3.5-5.6 USM IV", 60, "Canon EF 28-80mm f/3.5-5.6 USM IV");
    row("NIKON CORPORATION", "AF Nikkor 50mm f/1.8D", 50, "Nikkor AF 50mm f/1.8D");
    row("NIKON CORPORATION", "AF-S DX VR Zoom-Nikkor 18-55mm f/3.5-5.6G", 28, "Nikkor AF-S 18-55mm f/3.5-5.6G DX VR");
    row("NIKON CORPORATION", "AF-S DX VR Zoom-Nikkor 18-200mm f/3.5-5.6G IF-ED [II]", 105,
        "Nikkor AF-S 18-200mm f/3.5-5.6G DX VR IF-ED");
    row("PENTAX Corporation", "Sigma AF 10-20mm F4-5.6 EX DC", 10, "Sigma 10-20mm f/4-5.6 EX DC HSM");
    row("SONY", "85mm F1.4 DG DN | Art 020", 85, "Sigma 85mm F1.4 DG DN | Art 020");
    row("OLYMPUS IMAGING CORP.", "Olympus Zuiko Digital ED 14-42mm F3.5-5.6", 24,
        "Olympus Zuiko Digital ED 14-42mm f/3.5-5.6");
    row("FUJIFILM", "XF50mmF2 R WR", 50, "XF 50mm f/2 R WR");
}

void tst_ProfileMatch::lensAmongDecoys()
{
    QFETCH(QString, make);
    QFETCH(QString, lens);
    QFETCH(double, focalMm);
    QFETCH(QString, expected);
    const PictureFacts facts = PictureWith(make, lens, focalMm);
    const ProfileMatch found = Matcher().Match(AllBut(QString()), facts);
    QVERIFY2(found.path == expected, qPrintable(found.path + QLatin1String(": ") + found.reason));
    const ProfileMatch none = Matcher().Match(AllBut(expected), facts);
    QVERIFY2(none.path.isEmpty(), qPrintable(none.path));
    QVERIFY2(none.reason.contains(lens), qPrintable(none.reason));
}

void tst_ProfileMatch::bodies_data()
{
    QTest::addColumn<double>("referenceFactor");
    QTest::addColumn<double>("cameraFactor");
    QTest::addColumn<bool>("sameBody");
    QTest::addColumn<bool>("found");
    QTest::newRow("larger frame than the picture's") << 1.0 << 1.5 << false << true;
    QTest::newRow("nearly the same frame") << 1.56 << 1.5 << false << true;
    QTest::newRow("smaller frame") << 1.6 << 1.5 << false << false;
    QTest::newRow("camera not in the table") << 1.0 << 0.0 << false << false;
    QTest::newRow("reference not in the table") << 0.0 << 1.5 << false << false;
    QTest::newRow("same body, not in the table") << 0.0 << 0.0 << true << true;
}

void tst_ProfileMatch::bodies()
{
    QFETCH(double, referenceFactor);
    QFETCH(double, cameraFactor);
    QFETCH(bool, sameBody);
    QFETCH(bool, found);
    IndexedProfile profile = ProfileOf(Text("Canon EF-S 18-55mm f/3.5-5.6 IS"));
    if (sameBody) {
        profile.head.make = QStringLiteral("CANON");
        profile.head.model = QStringLiteral("Canon Camera");
    }
    const ProfileMatch match =
        Matcher(referenceFactor, cameraFactor)
            .Match({profile}, PictureWith(QStringLiteral("Canon"), Text("EF-S18-55mm f/3.5-5.6 IS"), 34));
    QCOMPARE(!match.path.isEmpty(), found);
    QCOMPARE(match.nearest.size(), found ? 0 : 1);
    QCOMPARE(match.notes.size(), found && !sameBody ? 1 : 0); // another body is noted
}

void tst_ProfileMatch::namesEquallyGoodProfiles()
{
    QVector<IndexedProfile> two = {ProfileOf(Text("Canon EF 50mm f/1.8 STM")), ProfileOf(Text("EF50mm f/1.8 STM"))};
    const PictureFacts facts = PictureWith(QStringLiteral("Canon"), Text("EF50mm f/1.8 STM"), 50);
    const ProfileMatch equal = Matcher().Match(two, facts);
    QVERIFY2(equal.path.isEmpty(), qPrintable(equal.path));
    QVERIFY2(equal.reason.contains(two[0].path) && equal.reason.contains(two[1].path), qPrintable(equal.reason));
    // Profiles are ranked by body, then by whether they were made for raw pictures.
    two[1].head.raw = true;
    QCOMPARE(Matcher().Match(two, facts).path, two[0].path);
    two[1].head.make = QStringLiteral("Canon");
    QCOMPARE(Matcher().Match(two, facts).path, two[1].path);
    QCOMPARE(Matcher().Match(two, facts).notes.size(), 2); // another body, and made for raw pictures
}

void tst_ProfileMatch::settingsOutsideTheLens_data()
{
    QTest::addColumn<double>("focalMm");
    QTest::addColumn<double>("aperture");
    QTest::addColumn<bool>("found");
    QTest::newRow("inside") << 34.0 << 8.0 << true;
    QTest::newRow("rounded focal length") << 55.8 << 8.0 << true;
    QTest::newRow("too long") << 60.0 << 8.0 << false;
    QTest::newRow("wide open") << 18.0 << 3.4 << true;
    QTest::newRow("too wide open") << 18.0 << 2.8 << false;
}

void tst_ProfileMatch::settingsOutsideTheLens()
{
    QFETCH(double, focalMm);
    QFETCH(double, aperture);
    QFETCH(bool, found);
    IndexedProfile profile = ProfileOf(Text("Canon EF-S 18-55mm f/3.5-5.6 IS"));
    profile.head.minFocalMm = 18;
    profile.head.maxFocalMm = 55;
    profile.head.minAperture = 3.5;
    profile.head.maxAperture = 5.6;
    PictureFacts facts = PictureWith(QStringLiteral("Canon"), Text("EF-S18-55mm f/3.5-5.6 IS"), focalMm);
    facts.aperture = Known(aperture);
    QCOMPARE(!Matcher().Match({profile}, facts).path.isEmpty(), found);
}

void tst_ProfileMatch::fixedLens()
{
    IndexedProfile compact = ProfileOf(Text("6.1-30.5 mm"));
    compact.head.make = QStringLiteral("Canon");
    compact.head.model = QStringLiteral("Canon PowerShot G11");
    PictureFacts facts = PictureWith(QStringLiteral("Canon"), Text("6.1 - 30.5 mm"), 12);
    facts.model = Known(QStringLiteral("Canon PowerShot G11"));
    QCOMPARE(Matcher().Match({compact}, facts).path, compact.path);
    // A profile for an interchangeable lens doesn't match a camera with a fixed lens.
    IndexedProfile mounted = compact;
    mounted.head.lensNames = QStringList{Text("Canon EF 12mm f/2.8L USM")};
    QVERIFY(Matcher().Match({mounted}, facts).path.isEmpty());
    facts.model = Known(QStringLiteral("Canon PowerShot G12"));
    QVERIFY(Matcher().Match({compact}, facts).path.isEmpty());
}

void tst_ProfileMatch::bodyDoesNotOutweighTheLens()
{
    IndexedProfile right = ProfileOf(Text("XF23mmF1.4 R LM WR")), wrong = ProfileOf(Text("XF23mmF1.4 R"));
    wrong.head.make = QStringLiteral("FUJIFILM");
    wrong.head.model = QStringLiteral("Camera");
    const PictureFacts facts = PictureWith(QStringLiteral("FUJIFILM"), Text("XF23mmF1.4 R LM WR"), 23);
    QCOMPARE(Matcher().Match({wrong, right}, facts).path, right.path);
    QVERIFY(Matcher().Match({wrong}, facts).path.isEmpty());
}

void tst_ProfileMatch::sourcesInOrderOfTrust()
{
    PictureFacts facts = PictureWith(QStringLiteral("Canon"), Text("50mm F1.4 DG HSM | Art 014"), 50);
    facts.lensNames.append(Known(Text("Canon EF 50mm f/1.4 USM"))); // the maker note's wrong name for the lens
    const QVector<IndexedProfile> profiles = {ProfileOf(Text("Canon EF 50mm f/1.4 USM"))};
    QVERIFY(Matcher().Match(profiles, facts).path.isEmpty());
    facts = PictureWith(QStringLiteral("NIKON CORPORATION"), Text("85mm F1.4"), 85);
    facts.lensMake = Known(QStringLiteral("Samyang"));
    QVERIFY(Matcher().Match({ProfileOf(Text("AF-S Nikkor 85mm f/1.4G"))}, facts).path.isEmpty());
    // One lens number stands for two lenses: even if only one of them has a profile, the match is ambiguous.
    facts = PictureWith(QStringLiteral("Canon"), Text("Canon EF 28-70mm f/2.8L USM or Sigma 28-105mm f/2.8 EX"), 50);
    const QVector<IndexedProfile> zoom = {ProfileOf(Text("Canon EF 28-70mm f/2.8L USM"))};
    QVERIFY(Matcher().Match(zoom, facts).isAmbiguous);
    facts.lensNames.append(Known(Text("EF28-70mm f/2.8L USM")));
    QVERIFY(Matcher().Match(zoom, facts).isAmbiguous);
    std::swap(facts.lensNames[0], facts.lensNames[1]);
    QCOMPARE(Matcher().Match(zoom, facts).path, zoom[0].path);
    facts.lensNames = {Known(Text("Canon EF 28-70mm f/2.8L USM | Canon EF 28-70mm f/2.8L USM II"))};
    QVERIFY(Matcher().Match(zoom, facts).isAmbiguous);
    // A mount in a profile's lens name implies the maker.
    facts = PictureWith(QStringLiteral("SONY"), Text("Sigma 18-200mm f/3.5-6.3 OS"), 50);
    QVERIFY(Matcher().Match({ProfileOf(Text("E 18-200mm F3.5-6.3 OSS"))}, facts).path.isEmpty());
}

void tst_ProfileMatch::namelessLensOfAMount()
{
    IndexedProfile prime = ProfileOf(Text("Sigma 50mm f/1.4"));
    prime.head.make = QStringLiteral("Canon");
    prime.head.model = QStringLiteral("Camera");
    PictureFacts facts = PictureWith(QStringLiteral("Canon"), QString(), 50);
    facts.lensNames.clear();
    QVERIFY(Matcher().Match({prime}, facts).path.isEmpty());
    prime.head.lensNames = QStringList{Text("50mm f/1.4")};
    QVERIFY(Matcher().Match({prime}, facts).path.isEmpty());
}

void tst_ProfileMatch::sameCameras()
{
    const struct {
        const char *make, *model, *otherMake, *otherModel;
        bool same;
    } rows[] = {
        {"NIKON CORPORATION", "NIKON D70", "Nikon", "D70", true},
        {"SAMSUNG", "SAMSUNG-SM-N900A", "samsung", "SM-N900A", true},
        {"", "EOS 60D", "Canon", "Canon EOS 60D", true}, // typed without the maker
        {"Canon", "Canonet", "Canon", "et", false},
        {"Canon", "Canon", "Canon", "", false},
        {"Canon", "Canon EOS 60D", "", "EOS 60D", true},
        {"Nikon", "D70", "Pentax", "D70", false},
        {"RICOH IMAGING COMPANY, LTD.", "PENTAX K-3 II", "Pentax", "K-3 II", true},
    };
    for (const auto &row : rows)
        QVERIFY2(IsSameCamera(Text(row.make), Text(row.model), Text(row.otherMake), Text(row.otherModel)) == row.same,
                 row.model);
}

QTEST_APPLESS_MAIN(tst_ProfileMatch)
#include "ProfileMatch_test.moc"
