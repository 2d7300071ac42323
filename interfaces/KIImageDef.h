// Host's description of one image file, and access to its pixels.
#pragma once

#include <QPixmap>
#include <QString>

class KImage;

/// The order of the virtual functions is a binary contract: don't add or move any.
class KIImageDef {
public:
    virtual ~KIImageDef() = default;
    /// Returns the thumbnail, owned by the description.
    virtual QPixmap *GetThumbnail() const = 0;
    /// Return the full path, the name without the folder, and the folder.
    virtual QString FileName() const = 0;
    virtual QString ShortFileName() const = 0;
    virtual QString PathName() const = 0;
    /// Return height and width in pixels, number of channels, bits per channel.
    virtual int nRows() const = 0;
    virtual int nCols() const = 0;
    virtual int nBands() const = 0;
    virtual int nDepth() const = 0;
    virtual bool HasExif() const = 0;
    virtual bool HasICC() const = 0;
    virtual bool IsRaw() const = 0;
    /// Returns the 35 mm equivalent focal length in millimeters; 0 if unknown.
    virtual float GetFocal() const = 0;
    /// Returns 0 for a rectilinear lens, 1 for a fisheye.
    virtual int Model() const = 0;
    /// Returns the shooting time in seconds since the epoch; 0 if unknown.
    virtual qint64 GetTimestamp() const = 0;
    /// Returns ln(N^2 / t) for f-number N and exposure time t in seconds: the exposure value, but with the natural
    /// logarithm instead of the binary one. 0 if unknown.
    virtual float GetEV() const = 0;
    /// Returns the pixels, width by height, at the file's depth if @p nativeDepth, otherwise at 8 bits. The description
    /// owns the image, which is valid until Unlock is called with the same arguments, once for each Lock. Throws
    /// KException.
    virtual KImage *Lock(int width, int height, bool nativeDepth) = 0;
    virtual void Unlock(int width, int height, bool nativeDepth) = 0;
    virtual KImage *LockFullSize(bool nativeDepth) = 0;
    virtual void UnlockFullSize(bool nativeDepth) = 0;
};
