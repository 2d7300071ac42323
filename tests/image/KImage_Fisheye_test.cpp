#include "FisheyeFrame.h"
#include "TestImages.h"

#include "KOmp.h"

#include <QColor>
#include <QtTest>

class tst_Fisheye : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void findsTheCircle();
};

void tst_Fisheye::findsTheCircle()
{
    int found = 0;
    for (unsigned seed = 0; seed < 100; ++seed) {
        const FisheyeFrame frame(480, 320, seed);
        double radius, x, y;
        frame.image.GetFisheyeRadiusOffset(radius, x, y);
        const double off =
            std::max({std::abs(radius - frame.radius), std::abs(x - frame.offsetX), std::abs(y - frame.offsetY)});
        found += off <= 0.005 * 320;
    }
    QVERIFY2(found >= 95, qPrintable(QString::number(found)));
}

QTEST_GUILESS_MAIN(tst_Fisheye)
#include "KImage_Fisheye_test.moc"
