#include "ProfileText.h"

#include <QVector>

namespace profiletext {

QByteArray Value(const char *tag, const QByteArray &value)
{
    return QByteArray("<stCamera:") + tag + ">" + value + "</stCamera:" + tag + ">\n";
}

QByteArray Resource(const char *tag, const QByteArray &content)
{
    return QByteArray("<stCamera:") + tag + " rdf:parseType=\"Resource\">\n" + content + "</stCamera:" + tag + ">\n";
}

QByteArray Entry(const QByteArray &content)
{
    return "<rdf:li rdf:parseType=\"Resource\">\n" + content + "</rdf:li>\n";
}

QByteArray Profile(const QByteArray &entries)
{
    return "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"1\"?>\n"
           "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
           "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
           "<rdf:Description rdf:about=\"\" xmlns:photoshop=\"http://ns.adobe.com/photoshop/1.0/\"\n"
           " xmlns:stCamera=\"http://ns.adobe.com/photoshop/1.0/camera-profile\">\n"
           "<photoshop:CameraProfiles>\n<rdf:Seq>\n"
        + entries
        + "</rdf:Seq>\n</photoshop:CameraProfiles>\n</rdf:Description>\n</rdf:RDF>\n</x:xmpmeta>\n"
          "<?xpacket end=\"w\"?>\n";
}

QByteArray Size(const QByteArray &width, const QByteArray &length)
{
    return Value("ImageWidth", width) + Value("ImageLength", length);
}

QByteArray Place(const QByteArray &focalX, const QByteArray &focalY, const QByteArray &centerX,
                 const QByteArray &centerY)
{
    return Value("FocalLengthX", focalX) + Value("FocalLengthY", focalY) + Value("ImageXCenter", centerX)
        + Value("ImageYCenter", centerY);
}

QByteArray Metadata(const QByteArray &focalLength, const QByteArray &aperture, const QByteArray &distance)
{
    return Value("ProfileName", "Test body - Test lens 24mm") + Value("Make", "Maker") + Value("Model", "MODEL 7")
        + Value("UniqueCameraModel", "Maker MODEL 7") + Value("Lens", "24.0 mm f/2.8")
        + Value("LensInfo", "24/1 24/1 28/10 28/10") + Value("FocalLength", focalLength)
        + Value("ApertureValue", aperture) + Value("FocusDistance", distance)
        + Value("LensPrettyName", "Test lens 24mm") + Value("CameraPrettyName", "Seven")
        + Value("SensorFormatFactor", "1.5");
}

QByteArray FullEntry(double shift)
{
    const auto values = [shift](const char *tag, const QVector<double> &coefficients) {
        QByteArray text;
        for (int i = 0; i < coefficients.size(); ++i)
            text += Value((tag + QByteArray::number(i + 1)).constData(),
                          QByteArray::number(coefficients[i] + shift, 'f', 6));
        return text + Value("ResidualMeanError", "0.000057");
    };
    const char *const radial = "RadialDistortParam";
    const QByteArray subModels =
        Resource("ChromaticGreenModel", Place("0.81", "0.82", "0.511", "0.521") + values(radial, {0.021}))
        + Resource("ChromaticRedGreenModel",
                   Value("ScaleFactor", "0.999") + Place("0.83", "0.84", "0.512", "0.522")
                       + values(radial, {0.031, 0.032}))
        + Resource("ChromaticBlueGreenModel",
                   Value("ScaleFactor", "1.001") + Place("0.85", "0.86", "0.513", "0.523") + values(radial, {0.041}))
        + Resource("VignetteModel",
                   Place("0.87", "0.88", "0.514", "0.524") + values("VignetteModelParam", {-0.51, 0.52, -0.53}));
    return Entry(Size("4001.0", "3001.0") + Metadata("24.0", "4.0", "1.25")
                 + Resource("PerspectiveModel",
                            Value("Version", "2") + Place("0.8", "0.9", "0.51", "0.52")
                                + values(radial, {-0.011, 0.012, -0.013}) + Value("TangentialDistortParam1", "0.001")
                                + Value("TangentialDistortParam2", "-0.002") + subModels));
}

} // namespace profiletext
