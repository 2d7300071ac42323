// A database driver that only notes the statements it is given, in place of a real one.
#pragma once

#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlField>
#include <QSqlRecord>
#include <QSqlResult>
#include <QStringList>

class FakeSqlResult : public QSqlResult {
public:
    FakeSqlResult(const QSqlDriver *driver, QStringList *log) : QSqlResult(driver), m_log(log) { }

protected:
    bool reset(const QString &query) override
    {
        *m_log << query;
        setActive(true);
        return true;
    }
    QVariant data(int) override { return {}; }
    bool isNull(int) override { return true; }
    bool fetch(int) override { return false; }
    bool fetchFirst() override { return false; }
    bool fetchLast() override { return false; }
    int size() override { return 0; }
    int numRowsAffected() override { return 0; }

private:
    QStringList *m_log;
};

class FakeSqlDriver : public QSqlDriver {
public:
    explicit FakeSqlDriver(QStringList *log) : m_log(log) { }

    bool hasFeature(DriverFeature) const override { return false; }
    bool open(const QString &, const QString &, const QString &, const QString &, int, const QString &options) override
    {
        *m_log << QStringLiteral("open ") + options;
        setOpen(true);
        return true;
    }
    void close() override { setOpen(false); }
    QSqlResult *createResult() const override { return new FakeSqlResult(this, m_log); }

private:
    QStringList *m_log;
};

/// Makes "FAKE" and, from then on, "QSQLITE" too note their statements in @p log.
class FakeSqlDriverCreator : public QSqlDriverCreatorBase {
public:
    explicit FakeSqlDriverCreator(QStringList *log) : m_log(log) { }
    QSqlDriver *createObject() const override { return new FakeSqlDriver(m_log); }

private:
    QStringList *m_log;
};
