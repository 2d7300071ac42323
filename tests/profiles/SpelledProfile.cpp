#include "SpelledProfile.h"

#include <algorithm>

namespace {

class Writer {
public:
    explicit Writer(Spelling spelling)
        : m_spelling(spelling),
          m_camera(spelling == Spelling::OtherPrefixes ? "c:" : "stCamera:"),
          m_rdf(spelling == Spelling::OtherPrefixes ? "" : "rdf:")
    {
    }

    QByteArray Profile(const QList<SpelledNode> &entries) const
    {
        QByteArray list;
        for (const SpelledNode &entry : entries)
            list += Node(entry);
        const QByteArray rdfSpace = m_rdf.isEmpty() ? "xmlns" : "xmlns:rdf";
        return "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"1\"?>\n<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n<" + m_rdf + "RDF "
            + rdfSpace
            + "=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\" xmlns:p=\"http://ns.adobe.com/photoshop/1.0/\" "
            + "xmlns:" + m_camera.chopped(1) + "=\"http://ns.adobe.com/photoshop/1.0/camera-profile\">\n<" + m_rdf
            + "Description>\n<p:CameraProfiles>\n<" + m_rdf + "Seq>\n" + list + "</" + m_rdf
            + "Seq>\n</p:CameraProfiles>\n</" + m_rdf + "Description>\n</" + m_rdf
            + "RDF>\n</x:xmpmeta>\n<?xpacket end=\"w\"?>\n";
    }

private:
    bool IsAttribute(int index) const
    {
        return m_spelling == Spelling::Attributes || m_spelling == Spelling::DirectAttributes
            || (m_spelling == Spelling::Mixed && index % 2 == 0);
    }
    bool HasDescription() const
    {
        return m_spelling == Spelling::NestedElements || m_spelling == Spelling::Attributes
            || m_spelling == Spelling::Mixed;
    }

    /// Returns "14/10" for "1.4".
    static QByteArray Rational(const QByteArray &number)
    {
        const int point = number.indexOf('.');
        bool isNumber = false;
        number.toDouble(&isNumber);
        if (!isNumber || number.contains('e'))
            return number;
        const int digits = point < 0 ? 0 : number.size() - point - 1;
        return QByteArray(number).replace(".", "") + "/1" + QByteArray(digits, '0');
    }

    QByteArray Value(const QByteArray &value) const
    {
        return m_spelling == Spelling::Rationals ? Rational(value) : value;
    }

    QByteArray Element(const QPair<QByteArray, QByteArray> &one) const
    {
        const QByteArray tag = m_camera + one.first;
        if (m_spelling == Spelling::Decorated)
            return "<!-- " + one.first + " -->\n<" + tag + ">\n  <![CDATA[" + one.second + "]]>\n </" + tag
                + "><p:Other><rdf:Seq><rdf:li>8</rdf:li></rdf:Seq></p:Other>";
        return '<' + tag + '>' + Value(one.second) + "</" + tag + ">\n";
    }

    QByteArray Node(const SpelledNode &node) const
    {
        const QByteArray tag = node.name.isEmpty() ? m_rdf + "li" : m_camera + node.name;
        QByteArray attributes;
        QList<QByteArray> elements;
        for (int i = 0; i < node.values.size(); ++i) {
            if (IsAttribute(i))
                attributes += ' ' + m_camera + node.values[i].first + "=\"" + Value(node.values[i].second) + "\"\n";
            else
                elements += Element(node.values[i]);
        }
        for (const SpelledNode &model : node.models)
            m_spelling == Spelling::Mixed ? elements.prepend(Node(model)) : elements.append(Node(model));
        if (m_spelling == Spelling::ReversedElements)
            std::reverse(elements.begin(), elements.end());
        if (m_spelling == Spelling::Decorated && node.name.isEmpty())
            elements.prepend(
                "<stCamera:AlternateLensNames><rdf:Bag><rdf:li>Other name</rdf:li><rdf:li>Third</rdf:li></rdf:Bag>"
                "</stCamera:AlternateLensNames><stCamera:AlternateLensIDs><rdf:Bag><rdf:li>12</rdf:li></rdf:Bag>"
                "</stCamera:AlternateLensIDs>");
        const QByteArray content = elements.join();
        if (HasDescription())
            return '<' + tag + "><" + m_rdf + "Description" + attributes + ">\n" + content + "</" + m_rdf
                + "Description></" + tag + ">\n";
        const QByteArray type =
            attributes.isEmpty() ? ' ' + QByteArray(m_rdf.isEmpty() ? "" : "rdf:parseType=\"Resource\"") : attributes;
        return '<' + tag + type + ">\n" + content + "</" + tag + ">\n";
    }

    Spelling m_spelling;
    QByteArray m_camera, m_rdf;
};

QByteArray Text(double value)
{
    return QByteArray::number(value, 'g', 17);
}

SpelledNode Spelled(const char *name, const ProfileModel &model, const QByteArray &term = "RadialDistortParam")
{
    SpelledNode node{name,
                     {{"FocalLengthX", Text(model.focalLengthX)},
                      {"ImageXCenter", Text(model.centerX)},
                      {"ImageYCenter", Text(model.centerY)},
                      {"ScaleFactor", Text(model.scaleFactor)},
                      {"TangentialDistortParam1", Text(model.tangential1)},
                      {"TangentialDistortParam2", Text(model.tangential2)}},
                     {}};
    for (int i = 0; i < model.coefficients.size(); ++i)
        node.values.append(SpelledValue{term + QByteArray::number(i + 1), Text(model.coefficients[i])});
    return node;
}

SpelledNode Spelled(const ProfileEntry &entry)
{
    const bool isFisheye = entry.kind == ProfileEntry::Kind::Fisheye;
    SpelledNode lens = Spelled(isFisheye ? "FisheyeModel" : "PerspectiveModel", *entry.geometry);
    lens.models = {Spelled("ChromaticGreenModel", *entry.green), Spelled("ChromaticRedGreenModel", *entry.redGreen),
                   Spelled("ChromaticBlueGreenModel", *entry.blueGreen),
                   Spelled("VignetteModel", *entry.vignette, "VignetteModelParam")};
    return {"",
            {{"Make", entry.make.toUtf8()},
             {"Model", entry.model.toUtf8()},
             {"ImageWidth", Text(entry.width)},
             {"ImageLength", Text(entry.height)},
             {"SensorFormatFactor", Text(entry.sensorFormatFactor)},
             {"FocalLength", Text(entry.focalMm)},
             {"FocusDistance", Text(entry.distanceM)},
             {"ApertureValue", Text(entry.apertureApex)}},
            {lens}};
}

} // namespace

QByteArray SpelledProfile(const QList<SpelledNode> &entries, Spelling spelling)
{
    return Writer(spelling).Profile(entries);
}

QByteArray SpelledProfile(const QVector<ProfileEntry> &entries)
{
    QList<SpelledNode> nodes;
    for (const ProfileEntry &entry : entries)
        nodes << Spelled(entry);
    return SpelledProfile(nodes, Spelling::Attributes);
}
