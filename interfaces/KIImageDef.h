// What a host knows of one image file, and the door to its pixels.
#pragma once

#include <QPixmap>
#include <QString>

class KImage;

/// The order of the virtual operations is a binary contract: add none, move none.
class KIImageDef {
public:
    virtual ~KIImageDef() = default;
    /// Stays owned by the description.
    virtual QPixmap *GetThumbnail() const = 0;
    /// Whole path, name without the folder, and folder.
    virtual QString FileName() const = 0;
    virtual QString ShortFileName() const = 0;
    virtual QString PathName() const = 0;
    /// Height and width in pixels, number of channels, bits per channel.
    virtual int nRows() const = 0;
    virtual int nCols() const = 0;
    virtual int nBands() const = 0;
    virtual int nDepth() const = 0;
    virtual bool HasExif() const = 0;
    virtual bool HasICC() const = 0;
    virtual bool IsRaw() const = 0;
    /// 35 mm focal length in millimetres; 0 if unknown.
    virtual float GetFocal() const = 0;
    /// 0: rectilinear lens, 1: fisheye.
    virtual int Model() const = 0;
    /// Shooting time, seconds since the epoch; 0 if unknown.
    virtual qint64 GetTimestamp() const = 0;
    /// Exposure value; 0 if unknown.
    virtual float GetEV() const = 0;
    /// Lends the pixels, width by height, at the file's depth or at 8 bits; each Lock is paired with one Unlock of the
    /// same arguments, and the lender keeps the image. Throws KException.
    virtual KImage *Lock(int width, int height, bool nativeDepth) = 0;
    virtual void Unlock(int width, int height, bool nativeDepth) = 0;
    virtual KImage *LockFullSize(bool nativeDepth) = 0;
    virtual void UnlockFullSize(bool nativeDepth) = 0;
};
