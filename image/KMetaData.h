// The metadata blocks of an image file, kept to avoid opening it again.
#pragma once

#include "gfl.h"

#include <QDomElement>

/// Deep copies of the four blocks, in the image-file layer's memory; each is null when absent, and setting one doesn't
/// affect the others. If memory runs out, a block is absent or, for EXIF, has only the entries copied so far. Write on
/// one thread, then read on any.
class KMetaData {
public:
    KMetaData();
    KMetaData(const KMetaData &other);
    KMetaData &operator=(const KMetaData &other);
    ~KMetaData();

    // The blocks, owned by this object and valid until the next Set call.
    GFL_ICCPROFILE_DATA *IccProfile() const { return m_iccProfile; }
    GFL_IPTC_DATA *Iptc() const { return m_iptc; }
    GFL_EXIF_DATAEX *Exifex() const { return m_exifData; }
    GFL_XMP_DATA *Xmp() const { return m_xmp; }

    // Replace a block with a copy of @p data, which the caller keeps and which may be the current block; null removes
    // it.
    void SetIccProfile(GFL_ICCPROFILE_DATA *data);
    void SetIptc(GFL_IPTC_DATA *data);
    void SetExifex(GFL_EXIF_DATAEX *data);
    void SetXmp(GFL_XMP_DATA *data);

    /// Returns the root element of the XMP packet, with prefixed names as written; null if there is no valid XMP.
    QDomElement DomXmp() const;

    /// Copies a text to the image-file layer's memory; returns null for null, or if memory is short.
    static char *StrDup(const char *text);

private:
    GFL_EXIF_DATAEX *m_exifData = nullptr;
    GFL_IPTC_DATA *m_iptc = nullptr;
    GFL_ICCPROFILE_DATA *m_iccProfile = nullptr;
    GFL_XMP_DATA *m_xmp = nullptr;
};
