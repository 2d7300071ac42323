#include "TestFiles.h"

#include <QDir>
#include <QImage>
#include <QRandomGenerator>

namespace {

constexpr char kHead[] = R"(<?xml version="1.0"?>
<x:xmpmeta xmlns:x="adobe:ns:meta/">
 <rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#">
  <rdf:Description rdf:about="" xmlns:photoshop="http://ns.adobe.com/photoshop/1.0/"
    xmlns:stCamera="http://ns.adobe.com/photoshop/1.0/camera-profile">
   <photoshop:CameraProfiles><rdf:Seq><rdf:li rdf:parseType="Resource">
    <stCamera:Make>None</stCamera:Make>
    <stCamera:ImageWidth>%WIDTH%</stCamera:ImageWidth>
    <stCamera:ImageLength>%HEIGHT%</stCamera:ImageLength>
    <stCamera:PerspectiveModel rdf:parseType="Resource">
)";
constexpr char kGeometry[] = R"(     <stCamera:FocalLengthX>1.0</stCamera:FocalLengthX>
     <stCamera:FocalLengthY>1.0</stCamera:FocalLengthY>
     <stCamera:ImageXCenter>0.5</stCamera:ImageXCenter>
     <stCamera:ImageYCenter>0.5</stCamera:ImageYCenter>
)";
constexpr char kTail[] = R"(    </stCamera:PerspectiveModel>
   </rdf:li></rdf:Seq></photoshop:CameraProfiles>
  </rdf:Description>
 </rdf:RDF>
</x:xmpmeta>
)";

QByteArray Radial(double value)
{
    return "     <stCamera:RadialDistortParam1>" + QByteArray::number(value) + "</stCamera:RadialDistortParam1>\n";
}

QByteArray SubModel(const char *name, const QByteArray &content)
{
    const QByteArray tag = QByteArray("stCamera:") + name;
    return "    <" + tag + " rdf:parseType=\"Resource\">\n" + kGeometry + content + "    </" + tag + ">\n";
}

} // namespace

void WriteJpeg(const QString &path, int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    QRandomGenerator noise(1);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb(x * 191 / width + noise.bounded(64), y * 191 / height + noise.bounded(64), 128));
    }
    if (!image.save(path, "JPG", 100))
        qFatal("can't write %s", qPrintable(path));
}

void WriteBytes(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("can't write %s", qPrintable(path));
}

QByteArray ReadBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray ProfileText(const ProfileModels &models, int width, int height)
{
    QByteArray text = kHead;
    text.replace("%WIDTH%", QByteArray::number(width)).replace("%HEIGHT%", QByteArray::number(height));
    if (models.distortion)
        text += kGeometry + Radial(0.05);
    if (models.chromatic) {
        text += SubModel("ChromaticGreenModel", Radial(0.05));
        text += SubModel("ChromaticRedGreenModel", Radial(0.001));
        text += SubModel("ChromaticBlueGreenModel", Radial(-0.001));
    }
    if (models.vignetting) {
        QByteArray falloff;
        for (const char *number : {"1", "2", "3"}) {
            const QByteArray tag = QByteArray("stCamera:VignetteModelParam") + number;
            falloff += "     <" + tag + ">-0.1</" + tag + ">\n";
        }
        text += SubModel("VignetteModel", falloff);
    }
    return text + kTail;
}

QStringList Names(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}
