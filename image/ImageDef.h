// Description of one image file, without its pixels, and access to them.
#pragma once

#include "CameraProperties.h"
#include "KIImageDef.h"
#include "KMetaData.h"
#include "LensIDProperties.h"
#include "ShootingInformation.h"

#include <QImage>
#include <QObject>

#include <atomic>
#include <memory>

/// Reason why a file has no description.
struct RefusalReason {
    enum Kind {
        None,
        Unread,    // the image-file layer can't read it: see text
        Companion, // has the suffix of files that accompany pictures
        Gray,
        Lab,
        Cmyk,
        OtherChannels, // see channels
        Tiled,         // a tiled TIFF
        Failed,        // an exception occurred: see text
    };
    Kind kind = None;
    int channels = 0;
    QString text; // in English
};

/// The description of an image file, made by CreateAPicture or IsAPicture. They read only the file's header and
/// metadata, so describing whole folders is cheap. Pixels are in the image cache; Lock gives access to them.
///
/// An image in the cache, added by IsAPicture or by a lock, belongs to the cache: Delete or KImage::exit destroys it.
/// Any other belongs to the caller that requested it.
///
/// Threads may concurrently call Lock, Unlock, IsCached and ReleaseFromMemory on one image, and any function on
/// different images.
/// Assign, reload and delete an image only while no other thread is calling it; pixels may stay locked meanwhile. Call
/// GetThumbnail on the GUI thread.
class ImageDef : public QObject, public KIImageDef {
    Q_OBJECT
public:
    /// Storage for hosts; a reload doesn't change it.
    struct UserGeometry {
        double values[4] = {};
        int kind = 0;
    };

    ImageDef();
    /// Copies everything except identity, metadata blocks and the thumbnail's pixmap.
    ImageDef(const ImageDef &other);
    ImageDef &operator=(const ImageDef &other);
    ~ImageDef() override;

    // --- Creating and finding ---

    /// Describes a file. Sets @p out to an image that the caller owns, or to null. Returns false for a file that can't
    /// be read or isn't supported; throws nothing. A gray picture adds a line to g_ErrorMessages. @p withThumbnail also
    /// loads a small version of the pixels.
    static bool CreateAPicture(const QString &path, ImageDef *&out, bool withThumbnail);
    /// Returns whether the file exists and has a picture's suffix.
    static bool IsAPicture(const QString &path);
    /// Finds the image with that path in the cache, or adds it. On failure returns false and sets @p out to null.
    static bool IsAPicture(const QString &path, ImageDef *&out, bool withThumbnail);
    /// As above; on failure @p reason receives the reason.
    static bool IsAPicture(const QString &path, ImageDef *&out, bool withThumbnail, RefusalReason *reason);
    /// Returns the cached image with that path, or null.
    static ImageDef *Find(const QString &path);
    /// Removes an image from the cache and destroys it. Pixels that are still locked stay until the kernel stops.
    static void Delete(const QString &path);
    static void Delete(ImageDef *image);

    /// Returns the key of a path in the image cache: the MD5 of its local 8-bit form up to the first zero byte, in
    /// lowercase hexadecimal digits. Different spellings of a path have different keys.
    static QString IdOf(const QString &path);

    /// Describes the file again, with thumbnail, and drops every cached version. Keeps lens kind and user geometry.
    /// Returns false, with nothing changed, if the file can no longer be described.
    bool Reload();

    // --- KIImageDef ---

    /// Returns the small thumbnail, of the size in the settings; created by the first call, valid until Reload.
    QPixmap *GetThumbnail() const override;
    QString FileName() const override { return m_fileName; }
    QString ShortFileName() const override;
    QString PathName() const override;
    int nRows() const override { return m_rows; }
    int nCols() const override { return m_cols; }
    int nBands() const override { return m_bands; }
    int nDepth() const override { return m_depth; }
    bool HasExif() const override { return m_hasExif; }
    bool HasICC() const override { return m_hasIcc; }
    bool IsRaw() const override { return m_isRaw; }
    float GetFocal() const override;
    int Model() const override { return m_model; }
    qint64 GetTimestamp() const override;
    float GetEV() const override;
    /// Returns the pixels at a size, at the file's depth or at 8 bits. They are shared, so only read them. Throws
    /// KException for a file that is missing or can't be read.
    KImage *Lock(int width, int height, bool nativeDepth) override;
    /// Unlocks pixels; does nothing if they aren't locked.
    void Unlock(int width, int height, bool nativeDepth) override;
    KImage *LockFullSize(bool nativeDepth) override { return Lock(nCols(), nRows(), nativeDepth); }
    void UnlockFullSize(bool nativeDepth) override { Unlock(nCols(), nRows(), nativeDepth); }

    // --- Pixels in the cache ---

    /// Returns whether the version of that size and depth is in memory.
    bool IsCached(int width, int height, bool nativeDepth);
    /// Frees all unlocked versions.
    void ReleaseFromMemory();
    /// Returns a larger 8-bit thumbnail made from real pixels, which are loaded if no lock has loaded them yet. Owned
    /// by this object, valid until Reload. Throws as Lock does.
    KImage *GetHighResThumbnail32();
    /// Makes the larger thumbnail from newly loaded pixels. Call it with the cache's mutex held.
    void GetThumbnailFromHighRes(KImage &image);

    // --- Metadata (ImageDef_Exif.cpp) ---

    /// Fills m_shooting, m_exifSummary and m_hasExif from a file's two EXIF lists, which the caller still owns.
    void AnalyseExif(GFL_EXIF_DATA *list, GFL_EXIF_DATAEX *extended);
    /// Reads all EXIF of the file again and formats it as a text table.
    QString DumpExif();
    /// Returns the lens's type in the lens table: 0 standard, 1 fisheye, 2 tilt/shift; negative if unknown.
    static int IsFisheyeLens(QString maker, QString lensId);

    /// Returns the approximate number of bytes held, excluding full-size pixels and metadata blocks.
    qint64 memSize() const;

    static CameraProperties g_Cameras;
    static LensIDProperties g_Lenses;
    static QString g_ErrorMessages; // why files were refused, one per line; cleared by the code that displays it

    // Hosts depend on the order of the fields.
    QString m_fileName; // as given
    int m_rows = 0;     // height and width, pixels
    int m_cols = 0;
    int m_bands = 0;        // channels per pixel
    int m_depth = 0;        // bits per channel
    bool m_hasExif = false; // true: m_shooting is reliable
    ShootingInformation m_shooting;
    QString m_exifSummary; // the main fields, for display
    bool m_hasIcc = false;
    bool m_hasIptc = false;
    bool m_hasXmp = false;
    bool m_isRaw = false; // by suffix, like m_isHdr
    bool m_isHdr = false;
    KMetaData m_metaData;
    int m_model = 0; // lens kind: 0 rectilinear, 1 fisheye
    UserGeometry m_userGeometry;
    mutable QImage m_thumbnail;                   // until GetThumbnail has created the pixmap
    mutable QPixmap *m_thumbnailPixmap = nullptr; // owned
    std::atomic<bool> m_highResReady{false};      // m_highResThumbnail is made from real pixels
    KImage *m_highResThumbnail = nullptr;         // owned
    QString m_id;                                 // IdOf(m_fileName)

private:
    static std::unique_ptr<ImageDef> TryToDescribe(const QString &path, bool withThumbnail, RefusalReason *reason);
    static std::unique_ptr<ImageDef> Describe(const QString &path, bool withThumbnail, RefusalReason *reason);
    void Init();
    bool ApplyExifMode();
    void SetThumbnails(KImage &loaded);
    void SetMetadata(GFL_BITMAP *bitmap);
    void SetLensKind();
};
