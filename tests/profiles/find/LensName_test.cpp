// Tests of LensName.h: different spellings of one lens, and lenses whose names differ in a single mark.
#include "LensName.h"
#include "Table.h"

#include <QTest>

class tst_LensName : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void numbers_data();
    void numbers();
    void comparison_data();
    void comparison();
    void alternatives();
};

void tst_LensName::numbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>(
        "expected"); // focal lengths, apertures, maker, marks, words, codes, converter, generation
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_PARSED)))
        QTest::newRow(qPrintable(row[0])) << row[0] << row[1];
}

void tst_LensName::numbers()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    const LensName name = ParseLensNames(text).value(0);
    const auto sorted = [](const QSet<QString> &set) {
        QStringList list = set.values();
        list.sort();
        return list.join(QLatin1Char(','));
    };
    QCOMPARE(name.text, text);
    QCOMPARE(QStringLiteral("%1-%2 f/%3-%4 %5|%6|%7|%8|")
                     .arg(name.minFocalMm)
                     .arg(name.maxFocalMm)
                     .arg(name.maxAperture)
                     .arg(name.maxApertureAtTele)
                     .arg(name.maker, sorted(name.marks), sorted(name.words), sorted(name.codes))
                 + name.converter + QLatin1Char('|') + name.maybeGeneration,
             expected);
}

void tst_LensName::comparison_data()
{
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<QString>("offered");
    QTest::addColumn<QString>("why"); // the contradiction; empty: they fit
    const QVector<QStringList> rows = ReadTable(QStringLiteral(VITRELUX_NAMES));
    QVERIFY(rows.size() > 100);
    for (const QStringList &row : rows)
        QTest::addRow("%s, %s", qPrintable(row[0]), qPrintable(row[1])) << row[0] << row[1] << row[2];
}

void tst_LensName::comparison()
{
    QFETCH(QString, wanted);
    QFETCH(QString, offered);
    QFETCH(QString, why);
    const NameMatch match = CompareLensNames(ParseLensNames(wanted).value(0), ParseLensNames(offered).value(0));
    QCOMPARE(match.why, why);
    QCOMPARE(match.fits, why.isEmpty());
}

void tst_LensName::alternatives()
{
    const auto names = ParseLensNames(
        QStringLiteral("Canon EF 28-70mm f/2.8L USM or Sigma 28-70mm f/2.8 EX | Sigma 35mm F1.4 DG HSM | Art 012"));
    QCOMPARE(names.size(), 3);
    QCOMPARE(names[2].codes, QSet<QString>{QStringLiteral("012")});
    QCOMPARE(names[0].maker, QStringLiteral("canon"));
    QCOMPARE(names[1].maker, QStringLiteral("sigma"));
    // The exact spelling has a better score than others that fit, and each detail counts.
    const auto score = [](const char *text) {
        const LensName wanted = ParseLensNames(QStringLiteral("Sigma 28-70mm f/2.8 EX F004 Blue")).value(0);
        return CompareLensNames(wanted, ParseLensNames(QString::fromUtf8(text)).value(0)).score;
    };
    for (const char *less :
         {"28-70mm f/2.8 EX F004 Blue", "Sigma f/2.8 EX F004 Blue", "Sigma 28-70mm EX F004 Blue",
          "Sigma 28-70mm f/2.8 F004 Blue", "Sigma 28-70mm f/2.8 EX Blue", "Sigma 28-70mm f/2.8 EX F004",
          "Sigma 28-70mm f/2.8 EX DG F004 Blue", "Sigma 28-70mm f/2.8 EX F004 Blue Ultrasonic"})
        QVERIFY2(score("Sigma 28-70mm f/2.8 EX F004 Blue") > score(less), less);
}

QTEST_APPLESS_MAIN(tst_LensName)
#include "LensName_test.moc"
