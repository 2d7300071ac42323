#include "ippi.h"

#include "Case.h"

#include <QtTest>

#include <cmath>
#include <random>
#include <vector>

using namespace primitives;

class tst_LinearAlgebra : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void solves();
    void singular();
};

void tst_LinearAlgebra::solves()
{
    for (const int n : {1, 2, 3, 4, 6}) {
        const Case named(n);
        const bool zeroDiagonal = n == 4; // rows must be exchanged
        constexpr int kStride = 7, kCount = 3;
        std::mt19937 random(1);
        const auto value = [&] { return static_cast<float>(random()) * 0x1p-31f - 1.0f; };
        std::vector<float> matrix(kStride * 6), lu(kStride * 6), known(kStride * kCount), right(kStride * kCount),
            solved(kStride * kCount);
        for (int row = 0; row < n; ++row)
            for (int column = 0; column < n; ++column)
                matrix[size_t(row * kStride + column)] = row == column ? (zeroDiagonal ? 0.0f : 3.0f) : value();
        for (int v = 0; v < kCount; ++v) {
            for (int i = 0; i < n; ++i)
                known[size_t(v * kStride + i)] = value();
            for (int row = 0; row < n; ++row)
                for (int i = 0; i < n; ++i)
                    right[size_t(v * kStride + row)] +=
                        matrix[size_t(row * kStride + i)] * known[size_t(v * kStride + i)];
        }
        int pivot[6];
        constexpr Step kStep = kStride * sizeof(float);
        QVERIFY(ippmLUDecomp_m_32f(matrix.data(), kStep, pivot, lu.data(), kStep, n) == Status::Ok);
        QVERIFY(ippmLUBackSubst_mva_32f(lu.data(), kStep, pivot, right.data(), kStep, solved.data(), kStep, n, kCount)
                == Status::Ok);
        for (size_t i = 0; i < solved.size(); ++i)
            QVERIFY2(std::fabs(solved[i] - known[i]) < 1e-4f, qPrintable(QString::number(i)));
    }
}

void tst_LinearAlgebra::singular()
{
    const float nan = std::nanf("");
    const float matrices[][9] = {
        {0, 0, 0, 0, 0, 0, 0, 0, 0}, {1, 2, 3, 1, 2, 3, 4, 5, 7}, {1, 2, 3, 2, nan, 1, 4, 5, 7}};
    for (const auto &matrix : matrices) {
        const Case named("matrix", &matrix - matrices);
        int pivot[3];
        float lu[9], x[3] = {7, 7, 7};
        const float right[3] = {1, 2, 3};
        QVERIFY(ippmLUDecomp_m_32f(matrix, 12, pivot, lu, 12, 3) == Status::Singular);
        QVERIFY(ippmLUBackSubst_mva_32f(lu, 12, pivot, right, 12, x, 12, 3, 1) == Status::Singular);
        QVERIFY(x[0] == 7 && x[1] == 7 && x[2] == 7);
    }
    float one = 2, x = 7;
    const int pivot = 1; // there is only row 0
    QVERIFY(ippmLUBackSubst_mva_32f(&one, 4, &pivot, &one, 4, &x, 4, 1, 1) == Status::Singular);
}

QTEST_APPLESS_MAIN(tst_LinearAlgebra)
#include "linear_algebra_test.moc"
