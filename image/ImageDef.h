// The description of one image file, without its pixels, and the door to these.
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

/// Why a file has no description.
struct RefusalReason {
    enum Kind {
        None,
        Unread,    // the image-file layer can't read it: see text
        Companion, // its name ends as those of files that accompany pictures do
        Gray,
        Lab,
        Cmyk,
        OtherChannels, // see channels
        Tiled,         // TIFF
        Failed,        // by an exception: see text
    };
    Kind kind = None;
    int channels = 0;
    QString text; // in English
};

/// Made by CreateAPicture alone, from the head and the metadata of a file; whole folders are described cheaply. Pixels
/// live in the image cache and are lent from there.
///
/// An image that is in the cache, because IsAPicture put it there or because it was locked, belongs to the cache: it
/// ends with Delete or with KImage::exit. Any other belongs to whoever asked for it.
///
/// Lock, Unlock, IsCached and ReleaseFromMemory are for any thread, side by side; so are calls on different images.
/// Assigning, reloading and deleting an image is for when nobody else is in a call of it; pixels may stay lent
/// meanwhile. GetThumbnail is for the GUI thread.
class ImageDef : public QObject, public KIImageDef {
    Q_OBJECT
public:
    /// Storage that a reload leaves as it is; for hosts.
    struct UserGeometry {
        double values[4] = {};
        int kind = 0;
    };

    ImageDef();
    /// Copies everything but identity, metadata blocks and the thumbnail's pixmap.
    ImageDef(const ImageDef &other);
    ImageDef &operator=(const ImageDef &other);
    ~ImageDef() override;

    // --- Making and finding ---

    /// Describes a file. @p out is set to an image that the caller owns, or to null. A file that can't be read or isn't
    /// served gives false; nothing is thrown. Grey pictures leave a line in g_ErrorMessages. @p withThumbnail loads a
    /// small version of the pixels as well.
    static bool CreateAPicture(const QString &path, ImageDef *&out, bool withThumbnail);
    /// Whether the file exists and its suffix is that of a picture.
    static bool IsAPicture(const QString &path);
    /// The image of that path in the cache, or a new one, which is put there. False, and null, if there is none.
    static bool IsAPicture(const QString &path, ImageDef *&out, bool withThumbnail);
    /// As above; @p reason says why there is none.
    static bool IsAPicture(const QString &path, ImageDef *&out, bool withThumbnail, RefusalReason *reason);
    /// The image of that path in the cache, or null.
    static ImageDef *Find(const QString &path);
    /// Takes an image out of the cache and destroys it. Pixels of it that are still lent stay until the kernel stops.
    static void Delete(const QString &path);
    static void Delete(ImageDef *image);

    /// The key of a path in the image cache: the MD5 of its local 8-bit form up to the first zero byte, in lower-case
    /// hexadecimal digits. Two spellings of a path have two keys.
    static QString IdOf(const QString &path);

    /// Describes the file afresh, with thumbnail, and forgets every cached version. Lens kind and user geometry stay.
    /// False, and nothing changed, if the file can't be described any more.
    bool Reload();

    // --- KIImageDef ---

    /// The small thumbnail, of the size that the settings ask for; made by the first call, valid until Reload.
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
    /// Lends the pixels at a size, at the file's depth or at 8 bits. They are shared: to be read only. Throws
    /// KException for a file that is gone or can't be read.
    KImage *Lock(int width, int height, bool nativeDepth) override;
    /// Does nothing for pixels that aren't lent.
    void Unlock(int width, int height, bool nativeDepth) override;
    KImage *LockFullSize(bool nativeDepth) override { return Lock(nCols(), nRows(), nativeDepth); }
    void UnlockFullSize(bool nativeDepth) override { Unlock(nCols(), nRows(), nativeDepth); }

    // --- Pixels in the cache ---

    /// Whether that version is in memory.
    bool IsCached(int width, int height, bool nativeDepth);
    /// Frees all versions that nobody has locked.
    void ReleaseFromMemory();
    /// A larger thumbnail, of 8 bits, made of real pixels: these are read for it if no lock has done so yet. Stays
    /// owned by this object, valid until Reload. Throws as Lock does.
    KImage *GetHighResThumbnail32();
    /// Makes the larger thumbnail of pixels that were just loaded. The caller holds the cache's mutex.
    void GetThumbnailFromHighRes(KImage &image);

    // --- Metadata (ImageDef_Exif.cpp) ---

    /// Fills m_shooting, m_exifSummary and m_hasExif from a file's two lists, which stay the caller's.
    void AnalyseExif(GFL_EXIF_DATA *list, GFL_EXIF_DATAEX *extended);
    /// All EXIF of the file, read afresh, as a table in text.
    QString DumpExif();
    /// 1: fisheye, 0: not, negative: unknown.
    static int IsFisheyeLens(QString maker, QString lensId);

    /// Bytes held, about, the full pixels and the metadata blocks left out.
    qint64 memSize() const;

    static CameraProperties g_Cameras;
    static LensIDProperties g_Lenses;
    static QString g_ErrorMessages; // why files were refused, one a line; whoever shows it empties it

    // In this order; hosts that share kernels rely on it.
    QString m_fileName; // as given
    int m_rows = 0;     // height and width, pixels
    int m_cols = 0;
    int m_bands = 0;        // channels of a pixel
    int m_depth = 0;        // bits of a channel
    bool m_hasExif = false; // m_shooting can be trusted
    ShootingInformation m_shooting;
    QString m_exifSummary; // the main fields, for people
    bool m_hasIcc = false;
    bool m_hasIptc = false;
    bool m_hasXmp = false;
    bool m_isRaw = false; // by suffix, as m_isHdr
    bool m_isHdr = false;
    KMetaData m_metaData;
    int m_model = 0; // lens kind: 0 rectilinear, 1 fisheye
    UserGeometry m_userGeometry;
    mutable QImage m_thumbnail;                   // until GetThumbnail has made the pixmap
    mutable QPixmap *m_thumbnailPixmap = nullptr; // owned
    std::atomic<bool> m_highResReady{false};      // m_highResThumbnail is of real pixels
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
