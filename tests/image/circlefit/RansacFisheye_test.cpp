#include "RansacFisheye.h"

#include "CircleRefinement.h"

#include <QtTest>

#include <cmath>

namespace {

RansacFisheye NewFit(QVector<RansacFisheye::Data> data)
{
    RansacFisheye fit;
    fit.data = data;
    fit.iterations = 500;
    fit.maxCenterOffset2 = 100 * 100;
    fit.width = 1000.9; // the smaller side is truncated to whole pixels
    fit.height = 2000;
    qsrand(0);
    return fit;
}

} // namespace

class tst_RansacFisheye : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void degenerateModels();
    void scores();
    void refinement();
};

void tst_RansacFisheye::degenerateModels()
{
    // Three edges give exactly the linear model's solution, whatever order they are drawn in.
    RansacFisheye fit = NewFit({{410, 1, 0, false}, {420, 0, 1, false}, {390, -1, 0, false}, {5, 1, 0, true}});
    RansacFisheye::Model model = fit.computeOneModel();
    QVERIFY(std::abs(model.radius - 400) + std::abs(model.centerX - 10) + std::abs(model.centerY - 20) < 1e-3);
    fit.maxCenterOffset2 = 500; // exactly the center's squared distance, which must be less
    model = fit.computeOneModel();
    QVERIFY(model.centerX == 0 && model.centerY == 0);
    QVERIFY(model.radius == 410 || model.radius == 420 || model.radius == 390);

    RansacFisheye alike = NewFit({{4, 1, 0, false}, {5, 1, 0, false}, {6, 1, 0, false}});
    QCOMPARE(alike.computeOneModel().radius, 0.0);
    RansacFisheye few = NewFit({{400, 1, 0, false}, {500, 0, 1, false}, {600, 0, 1, true}});
    few.process();
    QCOMPARE(few.bestScore, 0.0);
    RansacFisheye none = NewFit({});
    none.process();
    QCOMPARE(none.bestScore, 0.0);
}

void tst_RansacFisheye::scores()
{
    QVector<RansacFisheye::Data> data;
    for (int degree = 0; degree < 8; ++degree)
        data.append({400, std::cos(degree * M_PI / 180), std::sin(degree * M_PI / 180), false});
    data[0].distance = 404.9;   // within 0.5 % of 1,000
    data[1].distance = 405.003; // a miss, but a hit if 1,000.9 were not truncated
    data.append({300, 0, -1, true});
    data.append({500, 0, -1, true});
    RansacFisheye fit = NewFit(data);
    QVERIFY(fit.evaluateModel({0, 0, 400}));
    QCOMPARE(fit.bestScore, 0.8); // 7 edges and one interior point, out of 10 points
    QVERIFY(!fit.evaluateModel({0, 0, 3000}));
    QCOMPARE(fit.best.radius, 400.0);

    const struct {
        int edges, others;
        bool isKept, isGood; // more than 5 % of the edges are on the circle; more than 60 %
    } rows[] = {{1, 19, false, false}, {1, 18, true, false}, {6, 4, true, false}, {5, 3, true, true}};
    for (const auto &row : rows) {
        QVector<RansacFisheye::Data> mixed(row.edges, {400, 1, 0, false});
        mixed += QVector<RansacFisheye::Data>(row.others, {300, 1, 0, false});
        RansacFisheye some = NewFit(mixed);
        QVERIFY2(some.evaluateModel({0, 0, 400}) == row.isGood && (some.bestScore > 0) == row.isKept,
                 qPrintable(QStringLiteral("%1 of %2").arg(row.edges).arg(mixed.size())));
    }

    // Equal scores keep the earlier model; a miss where the circle is outside the image subtracts one hit.
    RansacFisheye far = NewFit({{1010, 1, 0, false}, {1010, 0, 1, false}, {3, 1, 0, false}, {3, 0, 1, false}});
    QVERIFY(!far.evaluateModel({0, 0, 1010})); // the third edge misses where the circle lies beyond 1,000.9
    QCOMPARE(far.bestScore, 0.25);
    far.evaluateModel({0, 0, 1010.5});
    QCOMPARE(far.best.radius, 1010.0);
}

void tst_RansacFisheye::refinement()
{
    QVector<RansacFisheye::Data> data(7, {300, 0.6, -0.8, true}); // not edges
    for (int degree = 0; degree < 270; degree += 3) {
        const double x = std::cos(degree * M_PI / 180), y = std::sin(degree * M_PI / 180), along = 10 * x - 20 * y;
        const double distance = along + std::sqrt(400 * 400 - 500 + along * along); // to the circle around (10, -20)
        data.append({distance, x, y, false});
        data.append({distance + (degree % 2 ? 26 : 60), x, y, false}); // misses by more than 2.5 % of the smaller side
    }
    RansacFisheye fit = NewFit(data);
    fit.best = {8, -16, 401};
    const RefinedCircle circle = RefineCircle(fit);
    QVERIFY(std::hypot(circle.model.centerX - 10, circle.model.centerY + 20) < 1e-9);
    QVERIFY(std::abs(circle.model.radius - 400) < 1e-9);
    QCOMPARE(circle.support, 90);
    QVERIFY(!fit.evaluateModel(circle.model));
    QCOMPARE(fit.bestScore, 97 / 187.0); // 90 edges and 7 interior points
    fit.data.fill({400, 1, 0, false});   // no unique circle
    QCOMPARE(RefineCircle(fit).model.radius, fit.best.radius);
}

QTEST_APPLESS_MAIN(tst_RansacFisheye)
#include "RansacFisheye_test.moc"
