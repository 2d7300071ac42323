// The entries of an .lcp file as plain fields, whatever their spelling in RDF.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <utility>
#include <vector>

/// A value under its local name, "FocalLength" for example, trimmed.
struct ProfileField {
    QString name, value;
    qint64 line = 0; // where the element begins that states it
};

/// An entry, or a model inside one, with everything that attributes and elements state of it, in the order of the file.
struct ProfileNode {
    QString name; // of a model; empty for an entry
    qint64 line = 0;
    std::vector<ProfileField> fields;
    std::vector<std::pair<QString, QStringList>> lists; // alternate names and IDs
    std::vector<ProfileNode> models;
};

/// Hands each entry of the document to @p take, in order.
///
/// Names are resolved by the address of their namespace. Attributes and elements, rdf:Description between them,
/// rdf:parseType="Resource" or neither give the same nodes. The limits of XmlLimits.h hold; documents that declare
/// entities are refused.
///
/// @return the reason in plain English if the document can't be read to its end, with the line; empty otherwise.
QString ReadProfileXml(const QByteArray &content, const std::function<void(const ProfileNode &)> &take);
