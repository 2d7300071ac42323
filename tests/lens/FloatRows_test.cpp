// The sliding window of float rows: its content after each move, for every pixel format.
#include "FloatRows.h"

#include "TestImages.h"

#include <QtTest>

#include <cstring>

namespace {

constexpr int kWidth = 5, kHeight = 60;

} // namespace

class tst_FloatRows : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void moves_data();
    void moves();
};

void tst_FloatRows::moves_data()
{
    using Holds = QVector<QPair<int, int>>;
    QTest::addColumn<Holds>("holds");
    const std::pair<const char *, Holds> rows[] = {
        {"down, overlapping", {{0, 10}, {7, 17}, {14, 24}, {21, 31}, {28, 38}, {35, 45}, {50, 60}}},
        {"down, adjacent", {{0, 7}, {7, 14}, {14, 21}, {21, 28}, {28, 35}, {35, 42}}},
        {"to the end of the block and one row beyond", {{0, 10}, {20, 30}, {10, 20}, {20, 30}, {30, 40}, {31, 41}}},
        {"over a gap", {{0, 5}, {6, 11}, {40, 45}}},
        {"over a gap at the end of the block", {{0, 5}, {5, 10}, {10, 15}, {16, 21}}},
        {"back up", {{30, 40}, {29, 39}, {0, 10}, {5, 15}}},
        {"first row up, end down", {{20, 26}, {19, 26}, {18, 27}, {17, 27}, {16, 28}, {15, 28}, {9, 30}}},
        {"leaps", {{0, 9}, {18, 28}, {26, 35}, {40, 50}, {30, 39}}},
        {"within the window", {{0, 30}, {3, 5}, {10, 30}, {29, 30}}},
        {"growing", {{20, 24}, {18, 26}, {10, 40}, {0, 60}, {59, 60}}}};
    for (const auto &[name, holds] : rows)
        QTest::newRow(name) << holds;
}

void tst_FloatRows::moves()
{
    using Holds = QVector<QPair<int, int>>;
    QFETCH(Holds, holds);
    for (const TestForm &form : kForms) {
        TestImage picture(form, kWidth, kHeight, 3);
        picture.FillWithNoise(1);
        KImage whole;
        picture.image.Convert(whole, GFL_RGBA, 32);
        for (const FloatRows::Walk walk : {FloatRows::Walk::Steps, FloatRows::Walk::Leaps}) {
            FloatRows rows(picture.image, walk);
            for (const auto &[first, end] : holds) {
                rows.Hold(first, end);
                const KImage &held = rows.Image();
                const int top = rows.FirstRow();
                QVERIFY2(top <= first && top + held.height() >= end && held.width() == kWidth, form.name);
                for (int y = 0; y < held.height(); ++y)
                    QVERIFY2(std::memcmp(held.getData(0, y), whole.getData(0, top + y), kWidth * 16) == 0,
                             qPrintable(QStringLiteral("%1, row %2 of %3 to %4")
                                            .arg(QLatin1String(form.name))
                                            .arg(top + y)
                                            .arg(first)
                                            .arg(end)));
            }
        }
    }
}

QTEST_APPLESS_MAIN(tst_FloatRows)
#include "FloatRows_test.moc"
