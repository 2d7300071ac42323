// Reads the facts of a picture from arbitrary EXIF, including maker notes, and XMP.
#include "FitOptions.h"
#include "MadeJpeg.h"
#include "PictureFacts.h"
#include "Target.h"

#include <cmath>

FUZZ_TARGET(picture_facts)
{
    Input input(data, size);
    const bool hasXmp = size > 8 && data[size - 1] == 'x'; // otherwise the whole input is an EXIF block
    const std::size_t exifSize = hasXmp ? input.Next<quint16>() : size;
    const QByteArray exif = input.Bytes(exifSize);
    const MemoryFile file(MadeJpeg(exif, input.Rest().chopped(hasXmp ? 1 : 0)));
    QString error;
    const PictureFacts facts = ReadPictureFacts(file.Path(), &error);
    Require(error.isEmpty() && facts.pixels == QSize(8, 8)); // damaged metadata leaves facts unknown
    Require(facts.orientation >= 1 && facts.orientation <= 8);
    for (const Fact<double> *fact : {&facts.focalMm, &facts.focal35Mm, &facts.aperture, &facts.distanceM,
                                     &facts.focalPlaneWidthMm, &facts.digitalZoom})
        Require(!fact->Known() || fact->value > 0.0);
    WasDoneBefore(facts, FitOptions());
}
