// The name of a case in a loop, for the output of a test that fails in it.
#pragma once

#include <QDebug>
#include <QString>
#include <QtTest>

/// Lives as long as the case. QVERIFY and QCOMPARE return from the test when they fail, and then it tells its name:
///
///     for (const auto &row : rows) {
///         const Case named("width", row.width, "height", row.height);
class Case {
public:
    template <typename... Values> explicit Case(const Values &...values)
    {
        QDebug out(&m_name);
        (out << ... << values);
    }
    ~Case()
    {
        if (QTest::currentTestFailed())
            qInfo("in the case: %s", qUtf8Printable(m_name));
    }
    Case(const Case &) = delete;
    Case &operator=(const Case &) = delete;

private:
    QString m_name;
};
