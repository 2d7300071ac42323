// Tests of ProfileMatch.h: what is found, why, and what is reported if nothing is found.
#include "ProfileMatch.h"

#include "MadeProfiles.h"
#include "Table.h"

#include <QRegularExpression>
#include <QTest>

using made::Known;

Q_DECLARE_METATYPE(PictureFacts)
Q_DECLARE_METATYPE(IndexedProfile)

namespace {

/// Calls @p take for each "name=value" of a table's cell, with the value as text and as a number.
template <typename Take> void ReadFields(const QString &cell, const Take &take)
{
    for (const QString &field : cell.split(QStringLiteral("; "), Qt::SkipEmptyParts)) {
        const QString value = field.section(QLatin1Char('='), 1);
        take(field.section(QLatin1Char('='), 0, 0), value, value.toDouble());
    }
}

IndexedProfile ProfileOf(const QString &cell)
{
    IndexedProfile profile;
    ProfileHead &head = profile.head;
    head.make = QStringLiteral("Maker");
    head.model = QStringLiteral("Reference");
    ReadFields(cell, [&head](const QString &name, const QString &value, double number) {
        const auto part = [&value](int i) { return value.section(QLatin1Char(' '), i, i).toDouble(); };
        if (name == QLatin1String("range"))
            head.minFocalMm = part(0), head.maxFocalMm = part(1), head.minAperture = part(2),
            head.maxAperture = part(3);
        else if (name == QLatin1String("factor"))
            head.sensorFormatFactor = number;
        else if (name == QLatin1String("raw"))
            head.raw = true;
        else if (name == QLatin1String("lens") || name == QLatin1String("id"))
            (name == QLatin1String("id") ? head.lensIds : head.lensNames) << value;
        else
            (name == QLatin1String("make") ? head.make : head.model) = value;
    });
    profile.path = head.lensNames.first();
    return profile;
}

PictureFacts FactsOf(const QString &cell)
{
    PictureFacts facts;
    facts.model = Known(QStringLiteral("Camera"));
    const QMap<QString, Fact<double> PictureFacts::*> numbers = {
        {QStringLiteral("focal"), &PictureFacts::focalMm},
        {QStringLiteral("aperture"), &PictureFacts::aperture},
        {QStringLiteral("minFocal"), &PictureFacts::lensMinFocalMm},
        {QStringLiteral("maxFocal"), &PictureFacts::lensMaxFocalMm},
        {QStringLiteral("minAperture"), &PictureFacts::lensMinApertureAtMin},
        {QStringLiteral("maxAperture"), &PictureFacts::lensMinApertureAtMax}};
    ReadFields(cell, [&](const QString &name, const QString &value, double number) {
        if (numbers.contains(name))
            facts.*numbers[name] = Known(number);
        else if (name == QLatin1String("raw"))
            facts.raw = true;
        else if (name == QLatin1String("lens") || name == QLatin1String("id"))
            (name == QLatin1String("id") ? facts.lensIds : facts.lensNames) << Known(value);
        else
            (name == QLatin1String("make")        ? facts.make
                 : name == QLatin1String("model") ? facts.model
                                                  : facts.lensMake) = value.isEmpty() ? Fact<QString>() : Known(value);
    });
    return facts;
}

ProfileMatcher Matcher(double referenceFactor, double cameraFactor)
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
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QPair<double, double>>("factors"); // crop factors of the reference and of the picture's camera
    for (const QStringList &row : ReadTable(QStringLiteral(MATCHES))) {
        QVector<IndexedProfile> profiles;
        for (const QString &cell : row[1].split(QStringLiteral(" // ")))
            profiles << ProfileOf(cell);
        QTest::newRow(qPrintable(row[0])) << profiles << FactsOf(row[2]) << row[4]
                                          << qMakePair(row[3].section(QLatin1Char(' '), 0, 0).toDouble(),
                                                       row[3].section(QLatin1Char(' '), 1).toDouble());
    }
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
    for (const QStringList &row : ReadTable(QStringLiteral(CAMERAS)))
        QVERIFY2(IsSameCamera(row[0], row[1], row[2], row[3]) == (row[4] == QLatin1String("true")), qPrintable(row[1]));
}

QTEST_APPLESS_MAIN(tst_ProfileMatch)
#include "ProfileMatch_test.moc"
