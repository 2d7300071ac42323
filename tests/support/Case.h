// Prints the name of the case in which a test loop fails.
#pragma once

#include <QDebug>
#include <QString>
#include <QtTest>

/// Names a test case for as long as the object exists. QVERIFY and QCOMPARE return from the test on failure, and the
/// destructor then prints the name:
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
            qInfo("in case: %s", qUtf8Printable(m_name));
    }
    Case(const Case &) = delete;
    Case &operator=(const Case &) = delete;

private:
    QString m_name;
};
