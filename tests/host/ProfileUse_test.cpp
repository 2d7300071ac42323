// What a profile can correct, and what comes of what is asked for.
#include "ProfileUse.h"

#include "TestFiles.h"

#include <QTemporaryDir>
#include <QtTest>

class ProfileUseTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void holds_data();
    void holds();
    void chooses_data();
    void chooses();
};

namespace {

/// "dcv" for all three.
QString Letters(const Corrections &corrections)
{
    return QLatin1String(corrections.distortion ? "d" : "") + QLatin1String(corrections.chromatic ? "c" : "")
        + QLatin1String(corrections.vignetting ? "v" : "");
}

Corrections FromLetters(const QString &letters)
{
    const auto has = [&](char letter) { return letters.contains(QLatin1Char(letter)); };
    return {has('d'), has('c'), has('v')};
}

} // namespace

void ProfileUseTest::holds_data()
{
    QTest::addColumn<QString>("models");
    QTest::addColumn<QByteArray>("cut");   // a piece of the file, taken out
    QTest::addColumn<QByteArray>("patch"); // and put in its place
    QTest::addColumn<QString>("held");
    QTest::addColumn<QString>("flawed"); // corrections whose models are there and no good
    const QByteArray focal = "<stCamera:FocalLengthX>1.0</stCamera:FocalLengthX>", none;
    QTest::newRow("all") << QStringLiteral("dcv") << none << none << QStringLiteral("dcv") << QStringLiteral("");
    QTest::newRow("one") << QStringLiteral("d") << none << none << QStringLiteral("d") << QStringLiteral("");
    QTest::newRow("no distortion") << QStringLiteral("v") << none << none << QStringLiteral("v") << QStringLiteral("");
    QTest::newRow("none") << QStringLiteral("") << none << none << QStringLiteral("") << QStringLiteral("");
    QTest::newRow("no focal length at all")
        << QStringLiteral("dcv") << focal << none << QStringLiteral("") << QStringLiteral("dcv");
    QTest::newRow("red is missing") << QStringLiteral("dcv") << QByteArray("ChromaticRedGreenModel")
                                    << QByteArray("Other") << QStringLiteral("dv") << QStringLiteral("");
    QTest::newRow("green is missing") << QStringLiteral("dcv") << QByteArray("ChromaticGreenModel")
                                      << QByteArray("Other") << QStringLiteral("dv") << QStringLiteral("");
    QTest::newRow("value that is no number")
        << QStringLiteral("dcv") << QByteArray("0.001</stCamera:R") << QByteArray("nan</stCamera:R")
        << QStringLiteral("dv") << QStringLiteral("c");
    QTest::newRow("fisheye without coefficients") << QStringLiteral("v") << QByteArray("Perspective")
                                                  << QByteArray("Fisheye") << QStringLiteral("v") << QStringLiteral("");
}

void ProfileUseTest::holds()
{
    QFETCH(QString, models);
    QFETCH(QByteArray, cut);
    QFETCH(QByteArray, patch);
    QFETCH(QString, held);
    QFETCH(QString, flawed);
    QTemporaryDir dir;
    const Corrections wanted = FromLetters(models);
    QByteArray text = ProfileText({wanted.distortion, wanted.chromatic, wanted.vignetting}, 60, 40);
    if (!cut.isEmpty()) {
        QVERIFY(text.contains(cut));
        text.replace(cut, patch);
    }
    WriteBytes(dir.filePath(QStringLiteral("p.lcp")), text);
    const ProfileUse use = JudgeProfile(dir.filePath(QStringLiteral("p.lcp")));
    QCOMPARE(use.problem, QString());
    QCOMPARE(Letters(use.holds), held);
    QCOMPARE(use.lacks.size(), 3 - held.size());
    QCOMPARE(use.flaws.size(), flawed.size());
    QCOMPARE(use.width, 60.0);
    QCOMPARE(use.height, 40.0);
}

void ProfileUseTest::chooses_data()
{
    QTest::addColumn<QString>("held");
    QTest::addColumn<QString>("asked");
    QTest::addColumn<QString>("chosen"); // empty: told why not
    QTest::newRow("what there is") << QStringLiteral("dv") << QStringLiteral("") << QStringLiteral("dv");
    QTest::newRow("what is asked for") << QStringLiteral("dcv") << QStringLiteral("c") << QStringLiteral("c");
    QTest::newRow("lacking") << QStringLiteral("dv") << QStringLiteral("c") << QStringLiteral("");
    QTest::newRow("lacking in part") << QStringLiteral("dv") << QStringLiteral("dc") << QStringLiteral("");
    QTest::newRow("nothing at all") << QStringLiteral("") << QStringLiteral("") << QStringLiteral("");
}

void ProfileUseTest::chooses()
{
    QFETCH(QString, held);
    QFETCH(QString, asked);
    QFETCH(QString, chosen);
    ProfileUse use;
    use.holds = FromLetters(held);
    for (const QString &missing : NamesOf(FromLetters(QStringLiteral("dcv"))).split(QStringLiteral(", "))) {
        if (!NamesOf(use.holds).contains(missing))
            use.lacks << missing + QStringLiteral(" (reason)");
    }
    QString why;
    QCOMPARE(Letters(ChooseCorrections(use, FromLetters(asked), &why)), chosen);
    QCOMPARE(why.contains(QStringLiteral("(reason)")), chosen.isEmpty());
}

QTEST_APPLESS_MAIN(ProfileUseTest)
#include "ProfileUse_test.moc"
