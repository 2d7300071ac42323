// Tests of ProfileMatch.h: what is found, why, and what is said if nothing is.
#include "ProfileMatch.h"

#include "MadeProfiles.h"

#include <QRegularExpression>
#include <QTest>

using made::Known;

Q_DECLARE_METATYPE(PictureFacts)
Q_DECLARE_METATYPE(IndexedProfile)

namespace {

QString Text(const char *text)
{
    return QString::fromUtf8(text);
}

IndexedProfile ProfileOf(const QString &lens)
{
    IndexedProfile profile;
    profile.path = lens;
    profile.head.make = QStringLiteral("Maker");
    profile.head.model = QStringLiteral("Reference");
    profile.head.lensNames = QStringList{lens};
    return profile;
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
    void matches_data();
    void matches();
    void sameCameras();
};

void tst_ProfileMatch::matches_data()
{
    QTest::addColumn<QVector<IndexedProfile>>("profiles");
    QTest::addColumn<PictureFacts>("facts");
    QTest::addColumn<QString>("expected");              // path, "none" or "ambiguous"; reason; notes or nearest misses
    QTest::addColumn<QPair<double, double>>("factors"); // crop factors of the reference and of the picture's camera
    const auto row = [](const char *name, const QVector<IndexedProfile> &profiles, const PictureFacts &facts,
                        const char *expected, double referenceFactor = 1.0, double cameraFactor = 1.5) {
        QTest::newRow(name) << profiles << facts << QString::fromUtf8(expected)
                            << qMakePair(referenceFactor, cameraFactor);
    };
    const auto on = [](IndexedProfile profile, const char *make, const char *model) {
        profile.head.make = QString::fromUtf8(make);
        profile.head.model = QString::fromUtf8(model);
        return profile;
    };
    const auto raw = [](IndexedProfile profile) {
        profile.head.raw = true;
        return profile;
    };
    const auto canon = [](const char *lens, double focalMm) {
        return PictureWith(QStringLiteral("Canon"), Text(lens), focalMm);
    };
    const IndexedProfile kit = ProfileOf(Text("Canon EF-S 18-55mm f/3.5-5.6 IS"));
    const PictureFacts byKit = canon("EF-S18-55mm f/3.5-5.6 IS", 34);
    const char *const foundKit = "Canon EF-S 18-55mm f/3.5-5.6 IS\nmade for the lens \"Canon EF-S 18-55mm f/3.5-5.6 "
                                 "IS\"\nmade on another camera, Reference";
#define MISSED_KIT(why)                                                                                                \
    "\nno profile for the lens \"EF-S18-55mm f/3.5-5.6 IS\"\n<Canon EF-S 18-55mm f/3.5-5.6 IS>: " why
    row("larger frame than the picture's", {kit}, byKit, foundKit);
    row("nearly the same frame", {kit}, byKit, foundKit, 1.56);
    row("smaller frame", {kit}, byKit, MISSED_KIT("made on a smaller sensor, which shows only 94 % of the field"), 1.6);
    row("camera not in the table", {kit}, byKit,
        MISSED_KIT("made on another camera, and the sensor of Camera is unknown"), 1.0, 0.0);
    row("reference not in the table", {kit}, byKit, MISSED_KIT("made on another camera, of unknown sensor size"), 0.0);
    IndexedProfile stated = kit;
    stated.head.sensorFormatFactor = 1.5;
    row("reference not in the table, but the profile states its factor", {stated}, byKit, foundKit, 0.0);
    row("same body, not in the table", {on(kit, "CANON", "Canon Camera")}, byKit,
        "Canon EF-S 18-55mm f/3.5-5.6 IS\nmade for the lens \"Canon EF-S 18-55mm f/3.5-5.6 IS\"", 0.0, 0.0);

    // Settings outside the lens.
    IndexedProfile ranged = kit;
    ranged.head.minFocalMm = 18, ranged.head.maxFocalMm = 55;
    ranged.head.minAperture = 3.5, ranged.head.maxAperture = 5.6;
    const auto shot = [&](double focalMm, double aperture) {
        PictureFacts facts = byKit;
        facts.focalMm = Known(focalMm);
        facts.aperture = Known(aperture);
        return facts;
    };
    row("rounded focal lengths", {ranged}, shot(55.8, 8), foundKit);
    row("rounded to below the shortest", {ranged}, shot(17.8, 8), foundKit);
    row("too long", {ranged}, shot(60, 8), MISSED_KIT("its lens has no 60 mm"));
    row("too short", {ranged}, shot(17, 8), MISSED_KIT("its lens has no 17 mm"));
    row("wide open", {ranged}, shot(18, 3.4), foundKit);
    row("too wide open", {ranged}, shot(18, 2.8), MISSED_KIT("its lens doesn't open to f/2.8"));

    // Equally good profiles, ranked by body, then by whether they were made for raw pictures.
    const IndexedProfile long50 = ProfileOf(Text("Canon EF 50mm f/1.8 STM")),
                         short50 = ProfileOf(Text("EF50mm f/1.8 STM"));
    const PictureFacts by50 = canon("EF50mm f/1.8 STM", 50);
    row("two that fit equally well", {long50, short50}, by50,
        "ambiguous\ntwo profiles fit equally well: <Canon EF 50mm f/1.8 STM> and <EF50mm f/1.8 STM>; choose one with "
        "--profile\n<Canon EF 50mm f/1.8 STM>\n<EF50mm f/1.8 STM>");
    row("one of them for raw pictures", {long50, raw(short50)}, by50,
        "Canon EF 50mm f/1.8 STM\nmade for the lens \"Canon EF 50mm f/1.8 STM\"\nmade on another camera, Reference");
    PictureFacts rawBy50 = by50;
    rawBy50.raw = true;
    row("a rendered profile for a raw picture", {long50}, rawBy50,
        "Canon EF 50mm f/1.8 STM\nmade for the lens \"Canon EF 50mm f/1.8 STM\"\nmade on another camera, "
        "Reference\nmade "
        "for rendered pictures");
    row("that one by the same maker", {long50, on(raw(short50), "Canon", "Reference")}, by50,
        "EF50mm f/1.8 STM\nmade for the lens \"EF50mm f/1.8 STM\"\nmade on another camera, Reference\nmade for raw "
        "pictures");
    const IndexedProfile first = ProfileOf(Text("Canon EF-S 18-55mm f/3.5-5.6"));
    IndexedProfile second = ProfileOf(Text("Canon EF-S 18-55mm f/3.5-5.6 II"));
    PictureFacts numbered = canon("Canon EF-S 18-55mm f/3.5-5.6 [II]", 34);
    numbered.lensIds = {Known(QStringLiteral("6")), Known(QStringLiteral("7"))};
    second.head.lensIds = QStringList{QStringLiteral("5"), QStringLiteral("7")};
    row("two lenses, one with the picture's ID", {on(first, "Canon", "Reference"), on(second, "Canon", "Reference")},
        numbered,
        "Canon EF-S 18-55mm f/3.5-5.6 II\nmade for the lens \"Canon EF-S 18-55mm f/3.5-5.6 II\"\nmade on another "
        "camera, Reference");
    row("the ID in another maker's profile", {on(first, "Canon", "Reference"), second}, numbered,
        "ambiguous\ntwo profiles fit equally well: <Canon EF-S 18-55mm f/3.5-5.6> and <Canon EF-S 18-55mm f/3.5-5.6 "
        "II>; "
        "choose one with --profile\n<Canon EF-S 18-55mm f/3.5-5.6>\n<Canon EF-S 18-55mm f/3.5-5.6 II>");

    // Fixed lenses.
    const IndexedProfile compact = on(ProfileOf(Text("6.1-30.5 mm")), "Canon", "Canon PowerShot G11");
    PictureFacts byCompact = canon("6.1 - 30.5 mm", 12);
    byCompact.model = Known(QStringLiteral("Canon PowerShot G11"));
    const char *const foundCompact = "6.1-30.5 mm\nmade for the camera \"Canon PowerShot G11\"";
    const char *const missedCompact =
        "\nno profile for the camera \"Canon PowerShot G11\", and the picture doesn't name "
        "its lens; name it with --lens";
    row("a fixed lens", {compact}, byCompact, foundCompact);
    IndexedProfile mounted = compact;
    mounted.head.lensNames = QStringList{Text("Canon EF 12mm f/2.8L USM")};
    row("a fixed lens, a profile for an interchangeable one", {mounted}, byCompact, missedCompact);
    mounted.head.lensNames = QStringList{Text("6.1-30.5 mm"), Text("Canon EF 12mm f/2.8L USM")};
    row("a fixed lens, a profile with two names", {mounted}, byCompact, missedCompact);
    // Each end of the picture's range may be unknown; the profile's ends differ from the known ones by up to 2 %.
    for (const auto &[least, most, fits] :
         {std::tuple(6.2, 31.0, true), {6.2, 0.0, true}, {0.0, 31.0, true}, {5.9, 30.5, false}, {6.1, 29.8, false}}) {
        PictureFacts zoom = byCompact;
        zoom.lensMinFocalMm = least > 0.0 ? Known(least) : Fact<double>();
        zoom.lensMaxFocalMm = most > 0.0 ? Known(most) : Fact<double>();
        row(qPrintable(QStringLiteral("a fixed lens of %1-%2 mm").arg(least).arg(most)), {compact}, zoom,
            fits ? foundCompact : missedCompact);
    }
    byCompact.model = Known(QStringLiteral("Canon PowerShot G12"));
    row("a fixed lens of another camera", {compact}, byCompact,
        "\nno profile for the camera \"Canon PowerShot G12\", and the picture doesn't name its lens; name it with "
        "--lens");
    PictureFacts nameless = canon("", 50);
    nameless.lensNames.clear();
    const auto primeOf = [&](const char *lens, double factor) { // on the picture's camera
        IndexedProfile prime = on(ProfileOf(Text(lens)), "Canon", "Camera");
        prime.head.sensorFormatFactor = factor;
        return prime;
    };
    const char *const noName =
        "\nno profile for the camera \"Camera\", and the picture doesn't name its lens; name it with --lens";
    row("a prime for a mount", {primeOf("Sigma 50mm f/1.4", 0.0)}, nameless, noName);
    row("a prime for any mount", {primeOf("50mm f/1.4", 2.0)}, nameless, noName);
    row("a prime before a small sensor", {primeOf("50mm f/1.4", 2.1)}, nameless,
        "50mm f/1.4\nmade for the camera \"Camera\"");
    row("a prime named by the camera", {primeOf("Camera 50mm f/1.4", 0.0)}, nameless,
        "Camera 50mm f/1.4\nmade for the camera \"Camera\"");
    nameless.focalMm = {};
    row("a prime, but the focal length is unknown", {primeOf("50mm f/1.4", 2.1)}, nameless, noName);
    nameless.model = {};
    row("neither camera nor lens", {kit}, nameless, "\nthe picture doesn't say which camera and lens took it");

    // The body doesn't outweigh the lens.
    const IndexedProfile right = ProfileOf(Text("XF23mmF1.4 R LM WR")),
                         wrong = on(ProfileOf(Text("XF23mmF1.4 R")), "FUJIFILM", "Camera");
    const PictureFacts by23 = PictureWith(QStringLiteral("FUJIFILM"), Text("XF23mmF1.4 R LM WR"), 23);
    row("the lens on another body", {wrong, right}, by23,
        "XF23mmF1.4 R LM WR\nmade for the lens \"XF23mmF1.4 R LM WR\"\nmade on another camera, Reference");
    row("another lens on the same body", {wrong}, by23,
        "\nno profile for the lens \"XF23mmF1.4 R LM WR\"\n\"XF23mmF1.4 R\" on Camera (XF23mmF1.4 R): another design");

    // Names with few details need more: the same body or maker, or no further details in the other name.
    const char *const vague[][4] = {
        // the picture's lens, the profile's, its camera, and why it doesn't match (empty: it does)
        {"50mm f/1.8", "50mm f/1.8", "Nikon", "another maker's camera"},
        {"50mm f/1.8", "50mm f/1.8", "Canon", ""},
        {"50mm f/1.8", "Canon EF 50mm f/1.8 STM", "Canon", "the picture gives only the numbers of its lens"},
        {"EF50mm f/1.8", "50mm f/1.8", "Canon", "the profile gives only the numbers of its lens"},
        {"Canon 50mm f/1.8 camera", "Canon 50mm f/1.8 camera", "Canon", "another device"},
    };
    for (const auto &[wanted, offered, make, why] : vague) {
        const QString missed = QStringLiteral("\nno profile for the lens \"%1\"\n<%2>: %3"),
                      found = QStringLiteral("%2\nmade for the lens \"%2\"\nmade on another camera, Reference%1%3");
        row(qPrintable(Text(wanted) + Text(", not ") + Text(offered) + Text(make)),
            {on(ProfileOf(Text(offered)), make, "Reference")}, canon(wanted, 50),
            qPrintable((*why ? missed : found).arg(Text(*why ? wanted : ""), Text(offered), Text(why))));
    }
    // The metadata may complete a name without numbers; the aperture at the longest focal length may be unknown.
    PictureFacts numberless = canon("Canon EF-S IS", 34);
    numberless.lensMinFocalMm = Known(18.0), numberless.lensMaxFocalMm = Known(55.0);
    numberless.lensMinApertureAtMin = Known(3.5), numberless.lensMinApertureAtMax = Known(5.6);
    row("numbers from the metadata", {kit}, numberless, foundKit);

    // Sources in the order of trust.
    PictureFacts facts = canon("50mm F1.4 DG HSM | Art 014", 50);
    facts.lensNames.append(Known(Text("Canon EF 50mm f/1.4 USM")));
    row("the maker note's wrong name", {ProfileOf(Text("Canon EF 50mm f/1.4 USM"))}, facts,
        "\nno profile for the lens \"50mm F1.4 DG HSM | Art 014\"\n<Canon EF 50mm f/1.4 USM>: another maker");
    facts = PictureWith(QStringLiteral("NIKON CORPORATION"), Text("85mm F1.4"), 85);
    facts.lensMake = Known(QStringLiteral("Samyang"));
    row("the lens's maker", {ProfileOf(Text("AF-S Nikkor 85mm f/1.4G"))}, facts,
        "\nno profile for the lens \"85mm F1.4\"\n<AF-S Nikkor 85mm f/1.4G>: another maker");
    // One lens number stands for two lenses: even if only one of them has a profile, the match is ambiguous.
    const QVector<IndexedProfile> zoom = {ProfileOf(Text("Canon EF 28-70mm f/2.8L USM"))};
    const char *const either =
        "ambiguous\nthe picture's lens is <Canon EF 28-70mm f/2.8L USM> or \"Sigma 28-105mm f/2.8 EX\"; name it with "
        "--lens or choose with --profile\n<Canon EF 28-70mm f/2.8L USM>\nSigma 28-105mm f/2.8 EX";
    facts = canon("Canon EF 28-70mm f/2.8L USM or Sigma 28-105mm f/2.8 EX", 50);
    row("one of two lenses", zoom, facts, either);
    facts.lensNames.append(Known(Text("EF28-70mm f/2.8L USM")));
    row("one of two lenses, named by a less trusted source", zoom, facts, either);
    std::swap(facts.lensNames[0], facts.lensNames[1]);
    row("one of two lenses, named by a trusted source", zoom, facts,
        "Canon EF 28-70mm f/2.8L USM\nmade for the lens \"Canon EF 28-70mm f/2.8L USM\"\nmade on another camera, "
        "Reference");
    row("one of two generations", zoom, canon("Canon EF 28-70mm f/2.8L USM | Canon EF 28-70mm f/2.8L USM II", 50),
        "ambiguous\nthe picture's lens is <Canon EF 28-70mm f/2.8L USM> or \"Canon EF 28-70mm f/2.8L USM II\"; name it "
        "with --lens or choose with --profile\n<Canon EF 28-70mm f/2.8L USM>\nCanon EF 28-70mm f/2.8L USM II");
    row("the maker implied by a mount", {ProfileOf(Text("E 18-200mm F3.5-6.3 OSS"))},
        PictureWith(QStringLiteral("SONY"), Text("Sigma 18-200mm f/3.5-6.3 OS"), 50),
        "\nno profile for the lens \"Sigma 18-200mm f/3.5-6.3 OS\"\n<E 18-200mm F3.5-6.3 OSS>: another maker");
    QVector<IndexedProfile> four;
    for (const char *end : {" USM", " IS II", "", " IS STM"})
        four << ProfileOf(Text("Canon EF-S 18-55mm f/3.5-5.6") + Text(end));
    row("the nearest three of four", four, byKit,
        "\nno profile for the lens \"EF-S18-55mm f/3.5-5.6 IS\"\n<Canon EF-S 18-55mm f/3.5-5.6 IS II>: another "
        "generation\n<Canon EF-S 18-55mm f/3.5-5.6 IS STM>: another focus motor\n<Canon EF-S 18-55mm f/3.5-5.6>: "
        "another stabilizer");
}

void tst_ProfileMatch::matches()
{
    QFETCH(QVector<IndexedProfile>, profiles);
    QFETCH(PictureFacts, facts);
    QFETCH(QString, expected);
    using Factors = QPair<double, double>;
    QFETCH(Factors, factors);
    const ProfileMatch match = Matcher(factors.first, factors.second).Match(profiles, facts);
    QString text = (QStringList{match.isAmbiguous ? QStringLiteral("ambiguous") : match.path, match.reason}
                    + match.notes + match.nearest)
                       .join(QLatin1Char('\n'));
    text.replace(QRegularExpression(QStringLiteral("\"([^\"\n]+)\" on Reference \\(\\1\\)")), QStringLiteral("<\\1>"));
    QCOMPARE(text, expected);
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
        {"Canon", "Canon", "Canon", "Canon", true},
        {"OM Digital Solutions", "E-M1", "OLYMPUS CORPORATION", "E-M1", true},
        {"KONICA MINOLTA", "DYNAX 5D", "Minolta", "Dynax 5D", true},
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
