#include "OwnPicture.h"

#include "KException.h"
#include "KImage.h"
#include "PictureHeader.h"

namespace {

class OwnPicture : public ImageDef {
public:
    OwnPicture(const QString &path, const GFL_FILE_INFORMATION &information)
    {
        m_fileName = path;
        m_id = IdOf(path);
        m_cols = information.Width;
        m_rows = information.Height;
        m_bands = information.ComponentsPerPixel;
        m_depth = information.BitsPerComponent;
    }

    KImage *Lock(int width, int height, bool nativeDepth) override
    {
        if (width != m_cols || height != m_rows || !nativeDepth)
            throw KException(QStringLiteral("this picture is available only at full size and native depth"), KPlace());
        if (!m_pixels) {
            auto pixels = std::make_unique<KImage>();
            pixels->ID_Read(m_fileName, /*nativeDepth=*/true);
            m_pixels = std::move(pixels);
        }
        return m_pixels.get();
    }
    KImage *LockFullSize(bool nativeDepth) override { return Lock(m_cols, m_rows, nativeDepth); }
    void Unlock(int, int, bool) override { m_pixels.reset(); }
    void UnlockFullSize(bool) override { m_pixels.reset(); }

private:
    std::unique_ptr<KImage> m_pixels; // null: not locked
};

bool IsAccepted(const RefusalReason &reason, AcceptedPictures accepted)
{
    constexpr int kGrayWithAlpha = 2;
    switch (reason.kind) {
    case RefusalReason::Gray:
    case RefusalReason::Tiled:
        return accepted != AcceptedPictures::OfKernel;
    case RefusalReason::OtherChannels:
        return accepted != AcceptedPictures::OfKernel && reason.channels == kGrayWithAlpha;
    case RefusalReason::Cmyk:
    case RefusalReason::Lab:
        return accepted == AcceptedPictures::Converted;
    default:
        return false;
    }
}

} // namespace

std::shared_ptr<ImageDef> DescribeRefused(const QString &path, const RefusalReason &reason, AcceptedPictures accepted)
{
    if (!IsAccepted(reason, accepted))
        return nullptr;
    const PictureHeader header(path);
    return header.Problem().isEmpty() ? std::make_shared<OwnPicture>(path, header.Information()) : nullptr;
}
