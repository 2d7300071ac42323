// Writes a profile in each of the XML forms found in real files.
#pragma once

#include "LensProfile.h"

#include <QList>
#include <QPair>

using SpelledValue = QPair<QByteArray, QByteArray>; // name, value

/// An entry or a model: values by name, and nested models.
struct SpelledNode {
    QByteArray name; // empty for an entry
    QList<SpelledValue> values;
    QList<SpelledNode> models;
};

enum class Spelling {
    Elements,         // rdf:parseType="Resource"
    NestedElements,   // elements in rdf:Description
    Attributes,       // of rdf:Description
    DirectAttributes, // of rdf:li and of the model elements
    Mixed,            // every other value an attribute, models before values
    ReversedElements, // in reverse order
    OtherPrefixes,    // a default namespace and one-letter prefixes
    Rationals,        // "14/10"
    Decorated,        // comments, CDATA, white space, lists and unknown elements in between
};
constexpr int kSpellings = 9;

/// Returns a complete file with these entries.
QByteArray SpelledProfile(const QList<SpelledNode> &entries, Spelling spelling);

/// Returns a complete file in attribute form. The entries must have all models.
QByteArray SpelledProfile(const QVector<ProfileEntry> &entries);
