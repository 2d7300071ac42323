#include "FittedFiles.h"

#include <exiv2/exiv2.hpp>

QByteArray Profile(const char *lens, bool hasVignetting)
{
    const QByteArray model = "stCamera:FocalLengthX='2.25' stCamera:FocalLengthY='2.25'";
    const QByteArray light = "<stCamera:VignetteModel><rdf:Description " + model
        + " stCamera:VignetteModelParam1='-0.5'/></stCamera:VignetteModel>";
    return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
           "<rdf:Description xmlns:photoshop='http://ns.adobe.com/photoshop/1.0/'"
           " xmlns:stCamera='http://ns.adobe.com/photoshop/1.0/camera-profile'>"
           "<photoshop:CameraProfiles><rdf:Seq><rdf:li><rdf:Description stCamera:Make='Canon'"
           " stCamera:Model='Canon EOS 40D' stCamera:ImageWidth='3888' stCamera:ImageLength='2592'"
           " stCamera:FocalLength='50' stCamera:FocusDistance='10' stCamera:ApertureValue='6'"
           " stCamera:SensorFormatFactor='1.6' stCamera:Lens='"
        + QByteArray(lens) + "'><stCamera:PerspectiveModel><rdf:Description " + model
        + " stCamera:RadialDistortParam1='-0.1'>" + (hasVignetting ? light : QByteArray())
        + "</rdf:Description></stCamera:PerspectiveModel></rdf:Description></rdf:li></rdf:Seq>"
          "</photoshop:CameraProfiles></rdf:Description></rdf:RDF></x:xmpmeta>";
}

void WriteMetadata(const QString &path, const PictureMetadata &metadata)
{
    const auto image = Exiv2::ImageFactory::open(path.toStdString());
    Exiv2::ExifData exif;
    exif["Exif.Image.Make"] = "Canon";
    exif["Exif.Image.Model"] = "Canon EOS 40D";
    for (const auto &[key, value] :
         {std::pair("Exif.Photo.LensModel", metadata.lens), std::pair("Exif.Photo.FocalLength", metadata.focal),
          std::pair("Exif.Photo.FNumber", metadata.aperture)}) {
        if (value)
            exif[key] = value;
    }
    image->setExifData(exif);
    if (metadata.wasCorrected) {
        for (const char *key : {"AlreadyApplied", "LensProfileEnable", "AutoLateralCA"})
            image->xmpData()[std::string("Xmp.crs.") + key] = "True";
    }
    image->writeMetadata();
}
