// The metadata blocks of an image file, kept so that the file need not be opened again for them.
#pragma once

#include "gfl.h"

#include <QDomElement>

/// Owns deep copies of the four blocks, in memory of the image-file layer; each is null when absent, and setting one
/// leaves the others alone. What memory runs short for is absent; of an EXIF list the values copied so far stay.
/// Written on one thread, then read by any.
class KMetaData {
public:
    KMetaData();
    KMetaData(const KMetaData &other);
    KMetaData &operator=(const KMetaData &other);
    ~KMetaData();

    // The blocks, still owned by this object and valid until the next set.
    GFL_ICCPROFILE_DATA *IccProfile() const { return m_iccProfile; }
    GFL_IPTC_DATA *Iptc() const { return m_iptc; }
    GFL_EXIF_DATAEX *Exifex() const { return m_exifData; }
    GFL_XMP_DATA *Xmp() const { return m_xmp; }

    // Replace a block by a copy of @p data, which stays the caller's and may be the block held now; null takes it away.
    void SetIccProfile(GFL_ICCPROFILE_DATA *data);
    void SetIptc(GFL_IPTC_DATA *data);
    void SetExifex(GFL_EXIF_DATAEX *data);
    void SetXmp(GFL_XMP_DATA *data);

    /// The root element of the XMP packet, names as written; null without XMP and for bytes that are no XML.
    QDomElement DomXmp() const;

    /// A copy in memory of the image-file layer; null for null, or if memory is short.
    static char *StrDup(const char *text);

private:
    GFL_EXIF_DATAEX *m_exifData = nullptr;
    GFL_IPTC_DATA *m_iptc = nullptr;
    GFL_ICCPROFILE_DATA *m_iccProfile = nullptr;
    GFL_XMP_DATA *m_xmp = nullptr;
};
