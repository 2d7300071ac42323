// What our host knows of one picture file, and the lending of its pixels.
#pragma once

#include "KIImageDef.h"
#include "KImage.h"

/// @p text without the name of the file @p path at its start, which messages put there themselves.
QString WithoutFileName(const QString &text, const QString &path);

/// Describes the file when it is made, from its head alone; pixels are read by the first lock and freed by the last
/// unlock. A host without windows needs no more: there is no thumbnail and there are no reduced versions, and what only
/// camera metadata tells is unknown. GUI thread.
class HostImageDef : public KIImageDef {
public:
    explicit HostImageDef(const QString &path); // absolute
    ~HostImageDef() override;
    HostImageDef(const HostImageDef &) = delete;
    HostImageDef &operator=(const HostImageDef &) = delete;

    /// Why the file can't be used as a picture, in one line; empty if it can, as far as its head tells. Sizes are 0
    /// where it can't.
    QString Problem() const { return m_problem; }

    QPixmap *GetThumbnail() const override { return nullptr; }
    QString FileName() const override { return m_path; }
    QString ShortFileName() const override;
    QString PathName() const override;
    int nRows() const override { return m_height; }
    int nCols() const override { return m_width; }
    int nBands() const override { return m_channels; }
    /// 8, 16, or 32 for float.
    int nDepth() const override { return m_depth; }
    bool HasExif() const override;
    bool HasICC() const override;
    bool IsRaw() const override { return false; }
    float GetFocal() const override { return 0.0f; }
    int Model() const override { return 0; }
    qint64 GetTimestamp() const override { return 0; }
    float GetEV() const override { return 0.0f; }
    /// Throws: nothing is lent at another size.
    KImage *Lock(int width, int height, bool nativeDepth) override;
    void Unlock(int width, int height, bool nativeDepth) override;
    KImage *LockFullSize(bool nativeDepth) override;
    void UnlockFullSize(bool nativeDepth) override;

private:
    struct Lent {
        KImage image;
        int locks = 0;
    };

    void Describe();

    QString m_path;
    QString m_problem;
    int m_width = 0;
    int m_height = 0;
    int m_channels = 0;
    int m_depth = 0;
    Lent m_lent[2]; // at 8 bits, at native depth
};
