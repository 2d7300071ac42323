// Declarations shared by the HEIF codec's source files. AVIF is HEIF with pictures coded as AV1.
#pragma once

#include "core/codec.h"
#include "heif_boxes.h"
#include "heif_functions.h"

#include <memory>

namespace imagefile {

/// Deleter that calls one of libheif's release functions.
template <auto &Free> struct HeifDeleter {
    template <class T> void operator()(T *object) const { Free(object); }
};
using HeifContext = std::unique_ptr<heif_context, HeifDeleter<heif_context_free>>;
using HeifHandle = std::unique_ptr<heif_image_handle, HeifDeleter<heif_image_handle_release>>;
using HeifColors = std::unique_ptr<heif_color_profile_nclx, HeifDeleter<heif_nclx_color_profile_free>>;
using HeifImage = std::unique_ptr<heif_image, HeifDeleter<heif_image_release>>;

/// The main picture of a file, with pixels as the camera stored them. libheif would rotate them; here the rotation is
/// reported as the EXIF orientation instead. It replaces the file's EXIF orientation, which is only informative in
/// ISO/IEC 23008-12.
class HeifFile {
public:
    HeifFile() = default;
    HeifFile(const HeifFile &) = delete;
    HeifFile &operator=(const HeifFile &) = delete;

    /// Reads the headers and checks sizes. @p source must outlive the object.
    Status Open(const Source &source);
    void Describe(GFL_FILE_INFORMATION *info) const;
    Status ReadPixels(RowSink *rows);
    void ReadMetadata(Metadata *metadata) const;

private:
    struct Stream {
        const Source *source = nullptr;
        std::uint64_t at = 0;
    };
    static const heif_reader &Reader();
    Status CheckSize();
    Status Decode(HeifImage *image);
    /// Returns whether libheif should crop and rotate: it can do only both or neither. If it does neither, pixels are
    /// exact at any depth (libheif mirrors only 8 bits), but opacity can't be decoded if its size matches that of the
    /// colors only after cropping or rotation.
    bool LetsLibheifTransform() const { return m_properties.isCropped || m_form.channels == 4; }
    /// Returns the rotation of the decoded picture relative to the stored one.
    HeifTurn AppliedTurn() const { return LetsLibheifTransform() ? m_properties.turn : HeifTurn(); }
    Status PassOn(const heif_image &image, RowSink *rows) const;
    void TakeBlock(heif_item_id id, Metadata *metadata) const;
    void TakeColors(Metadata *metadata) const;

    Stream m_stream; // must outlive the context
    HeifContext m_context;
    HeifHandle m_handle;
    HeifProperties m_properties;
    int m_width = 0, m_height = 0; // of the delivered picture
    PixelForm m_form;
};

/// Converts a libheif error to one of this layer's.
Status HeifStatus(const heif_error &error);

const Codec &HeifCodec();
/// Returns the codec for files with AVIF's brands.
const Codec &AvifCodec();

} // namespace imagefile
