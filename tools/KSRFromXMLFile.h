// Settings from an XML file.
#pragma once

#include "KernelSettingsReader.h"

#include <memory>

class QDomDocument;
class QDomElement;

/// Parser of an element's text, which returns the default if the text is invalid.
///
///   | T       | text                                                                               |
///   |---------|------------------------------------------------------------------------------------|
///   | bool    | "true" or "false", ignoring case, not trimmed; or a decimal integer: true unless 0 |
///   | int     | a decimal integer                                                                  |
///   | double  | a number; its decimal separator is a point                                         |
///   | QString | any text, including an empty one                                                   |
template <typename T> struct XmlValueBuilder {
    static T Build(const QDomElement &element, T defaultValue);
};
template <> bool XmlValueBuilder<bool>::Build(const QDomElement &element, bool defaultValue);
template <> int XmlValueBuilder<int>::Build(const QDomElement &element, int defaultValue);
template <> double XmlValueBuilder<double>::Build(const QDomElement &element, double defaultValue);
template <> QString XmlValueBuilder<QString>::Build(const QDomElement &element, QString defaultValue);

/// Reader of settings that are the texts of elements. Each part of a key, split at "/", names an element anywhere below
/// the previous one. The root's name is not part of a key; the empty key is the root itself. A tag that occurs more
/// than once below an element, at any depth, makes the key unreadable.
///
/// A file that is missing or exceeds the limits of InputLimits.h leaves the document empty, and every read returns its
/// default. If the file is malformed, the part before the error is used.
class KSRFromXMLFile : public KernelSettingsReader {
public:
    /// Reads the file, which must be UTF-8, once; later changes have no effect.
    explicit KSRFromXMLFile(const QString &fileName);
    ~KSRFromXMLFile() override;

    bool GetBool(const QString &key, bool defaultValue) override;
    int GetInt(const QString &key, int defaultValue) override;
    double GetDouble(const QString &key, double defaultValue) override;
    QString GetString(const QString &key, QString defaultValue) override;

private:
    std::unique_ptr<QDomDocument> m_document;
};
