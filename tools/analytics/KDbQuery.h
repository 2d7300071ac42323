// A parameterized SQL statement as a value.
#pragma once

#include <QList>
#include <QString>
#include <QVariant>

class QSqlQuery;

/// A value for the placeholder ":name".
struct KDbBind {
    KDbBind(QString bindName, QVariant bindValue) : name(bindName), value(bindValue) { }

    QString name; // without the colon
    QVariant value;
};

struct KDbQuery {
    KDbQuery(QString text, QList<KDbBind> bound) : query(text), binds(bound) { }

    /// Prepares, binds and runs the statement on @p sqlQuery, which then holds the result or the error.
    bool execute(QSqlQuery &sqlQuery) const;

    QString query;
    QList<KDbBind> binds;
};
