#include "palette.h"

#include "jpeg_error.h"

#include <memory>

#include <QBuffer>

QImage WithPalette(const QImage &sheet)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    sheet.save(&buffer, "JPEG", 100);
    jpeg_decompress_struct info = {};
    jpeg_error_mgr errors = {};
    info.err = Samples::ThrowJpegErrors(&errors);
    jpeg_create_decompress(&info);
    const std::unique_ptr<jpeg_decompress_struct, decltype(&jpeg_destroy_decompress)> guard(&info,
                                                                                            &jpeg_destroy_decompress);
    jpeg_mem_src(&info, reinterpret_cast<const unsigned char *>(bytes.constData()),
                 static_cast<unsigned long>(bytes.size()));
    jpeg_read_header(&info, TRUE);
    info.quantize_colors = TRUE;
    info.dither_mode = JDITHER_FS;
    jpeg_start_decompress(&info);
    QImage result(sheet.size(), QImage::Format_Indexed8);
    QVector<QRgb> colors;
    for (int i = 0; i < info.actual_number_of_colors; ++i)
        colors.append(qRgb(info.colormap[0][i], info.colormap[1][i], info.colormap[2][i]));
    result.setColorTable(colors);
    while (info.output_scanline < info.output_height) {
        JSAMPROW row = result.scanLine(static_cast<int>(info.output_scanline));
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
    return result;
}
