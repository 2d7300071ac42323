// The entries of an .lcp file as plain fields, from any RDF form.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <utility>
#include <vector>

/// Namespaces of the profile's own names, and of the RDF elements around them.
constexpr char kCameraNamespace[] = "http://ns.adobe.com/photoshop/1.0/camera-profile";
constexpr char kRdfNamespace[] = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";

/// A trimmed value with its local name, for example "FocalLength".
struct ProfileField {
    QString name, value;
    qint64 line = 0; // where its element starts
};

/// An entry, or a model inside one, with all values of its attributes and elements, in the order of the file.
struct ProfileNode {
    QString name; // of a model; empty for an entry
    qint64 line = 0;
    std::vector<ProfileField> fields;
    std::vector<std::pair<QString, QStringList>> lists; // alternate names and IDs
    std::vector<ProfileNode> models;
};

/// Passes each entry of the document, an rdf:li in an element named CameraProfiles, to @p take, in order.
///
/// Names are resolved by namespace URI. Attributes and elements give the same nodes, with or without rdf:Description or
/// rdf:parseType="Resource". The limits of InputLimits.h apply; documents that declare entities are refused.
///
/// @return why the document cannot be read to its end, with the line; empty if it can.
QString ReadProfileXml(const QByteArray &content, const std::function<void(const ProfileNode &)> &take);
