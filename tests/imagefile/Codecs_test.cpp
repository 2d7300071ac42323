// Tests of what the codecs share, without the public interface: failing writes, damaged headers, maker notes,
// thumbnails in EXIF, and the metadata in PNG chunks and HEIF boxes.
#include "Bitmaps.h"
#include "BrokenSink.h"
#include "Case.h"
#include "Table.h"
#include "core/source.h"
#include "formats.h"
#include "heif/heif_boxes.h"
#include "jpeg/jpeg_codec.h"
#include "metadata/exif_carry.h"
#include "metadata/metadata.h"
#include "metadata/note_offset.h"
#include "png/png_codec.h"

#include <QtTest>

#include <algorithm>
#include <tuple>
#include <utility>

using namespace imagefile;

class tst_Codecs : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void brokenWrites();
    void madeThumbnail();
    void damagedHeaders();
    void notePlaces();
    void pngChunks();
    void exifThumbnails();
    void heifProperties();

private:
    Metadata m_metadata;
    SaveOptions m_options;
};

void tst_Codecs::initTestCase()
{
    StartExiv2();
    m_metadata.exif["Exif.Image.Make"] = "Acme";
    m_options.metadata = &m_metadata;
    m_options.thumbnail = true;
}

/// Each format reports each write that fails.
void tst_Codecs::brokenWrites()
{
    for (int i = 0; const Codec *codec = CodecAt(i / 2); ++i) {
        m_options.compression = i % 2 ? 0 : GFL_COMPRESSION_DEFAULT;
        const Case named(FormatAt(i / 2)->Name, m_options.compression);
        for (const int bits : {8, 16})
            QCOMPARE(Written(*codec, *RandomBitmap(31, 9, GFL_RGBA, bits), m_options).isEmpty(),
                     !FormatAt(i / 2)->CanBeWritten);
    }
}

void tst_Codecs::madeThumbnail()
{
    const QByteArray jpeg = Written(JpegCodec(), *SmoothBitmap(300, 200, GFL_RGB, 8), m_options);
    Metadata written;
    QVERIFY(bool(ReadMetadata(Source(jpeg.constData(), std::size_t(jpeg.size())), &written)));
    const std::pair<const char *, const char *> fields[] = {
        {"Compression", "6"}, {"XResolution", "72/1"}, {"YResolution", "72/1"}, {"ResolutionUnit", "2"}};
    for (const auto &[name, value] : fields)
        QCOMPARE(written.exif[std::string("Exif.Thumbnail.") + name].toString(), std::string(value));
    // Without EXIF there is no thumbnail, nor if the segment of 65,527 bytes has less than 16 KiB + 94 bytes left.
    for (const int length : {0, 49022, 49023}) {
        const Case named("bytes", length);
        Metadata large, read;
        if (length > 0)
            large.exif["Exif.Image.Make"] = std::string(std::size_t(length - 1), 'm');
        SaveOptions options = m_options;
        options.metadata = &large;
        const QByteArray file = Written(JpegCodec(), *SmoothBitmap(9, 9, GFL_RGB, 8), options);
        QVERIFY(bool(ReadMetadata(Source(file.constData(), std::size_t(file.size())), &read)));
        QVERIFY(read.exif.empty() == (length == 0));
        QCOMPARE(read.exif.findKey(Exiv2::ExifKey("Exif.Thumbnail.Compression")) != read.exif.end(), length == 49022);
    }
}

/// Each function of a codec checks the headers, even if another one has accepted them before.
void tst_Codecs::damagedHeaders()
{
    QByteArray jpeg =
        Written(JpegCodec(), *SmoothBitmap(300, 200, GFL_RGB, 8), m_options); // only the thumbnail will be intact
    jpeg[jpeg.lastIndexOf("\xFF\xC0") + 1] = '\xC3';
    for (const QByteArray &file : {QByteArray(4096, 'j'), jpeg})
        for (int i = 0; const Codec *codec = CodecAt(i); ++i) {
            const Case named(FormatAt(i)->Name, "reads", file.left(1));
            const Source source(file.constData(), std::size_t(file.size()));
            const GFL_LOAD_PARAMS params = LoadParams();
            GFL_FILE_INFORMATION info = {};
            BitmapRows rows(params);
            Metadata none;
            QVERIFY(!codec->ReadInfo(source, &info) && !codec->ReadPixels(source, params, &rows));
            QVERIFY(!codec->ReadThumbnail(source, params, {90, 60}, &rows) && !rows.Bitmap());
            QVERIFY(codec->ReadMetadata(source, &none) && none.icc.empty() && none.xmp.empty() && none.iptc.empty());
        }
}

/// Which notes must stay where they are, because they contain offsets that no rebuilt note would have.
void tst_Codecs::notePlaces()
{
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_NOTE_PLACES))) {
        const Case named(row[0]);
        QCOMPARE(row.size(), 5);
        const QByteArray note = QByteArray::fromHex(row[3].toLatin1());
        QCOMPARE(NeedsItsOffset(Bytes(note.begin(), note.end()), row[2].toULongLong(), row[1] == QLatin1String("MM")),
                 row[4] == QLatin1String("stays"));
    }
    const QByteArray bytes("a note that is in no list");
    const auto withNote = [&](int size) {
        Exiv2::ExifData exif;
        const Exiv2::DataValue value(reinterpret_cast<const Exiv2::byte *>(bytes.constData()), size);
        exif.add(Exiv2::ExifKey("Exif.Photo.MakerNote"), &value);
        return exif;
    };
    for (const QStringList &row :
         ReadTable(QStringLiteral(VITRELUX_NOTE_FILES))) { // name, head, bytes of the note, place
        const Case named(row[0]);
        const QByteArray file = QByteArray::fromHex(row[1].toLatin1()) + bytes;
        Exiv2::ExifData exif = withNote(row[2].toInt());
        AddNoteOffset(Source(file.constData(), std::size_t(file.size())), &exif);
        const auto found = exif.findKey(Exiv2::ExifKey(kNoteOffsetKey));
        QCOMPARE(found == exif.end() ? "none" : found->toString(), row[3].toStdString());
    }
    for (const int place : {15, 16, 32768, 32769}) { // notes further behind might not fit into a JPEG
        const Case named("at", place);
        Exiv2::ExifData exif = withNote(bytes.size());
        exif[kNoteOffsetKey] = uint32_t(place);
        const Bytes block = EncodeExif(exif);
        const QByteArray text(reinterpret_cast<const char *>(block.data()), int(block.size()));
        QCOMPARE(text.indexOf(bytes) == place, place == 16 || place == 32768);
        QVERIFY(text.contains(bytes));
    }
}

void tst_Codecs::pngChunks()
{
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_PNG_CHUNKS))) {
        const Case named(row[0]);
        QByteArray file("\x89PNG\r\n\x1A\n");
        for (const QString &chunk : row[1].split(QLatin1Char(' '))) {
            const QByteArray bytes = QByteArray::fromHex(chunk.mid(5).toLatin1());
            file += BigEndian(quint64(bytes.size()), 4) + chunk.left(4).toLatin1() + bytes + "sums";
        }
        Metadata got;
        gflClearWarningText();
        QVERIFY(bool(PngCodec().ReadMetadata(Source(file.constData(), std::size_t(file.size())), &got)));
        QByteArray text;
        for (const Bytes &block : {got.xmp, got.iptc, got.icc})
            text += QByteArray(reinterpret_cast<const char *>(block.data()), int(block.size())).toPercentEncoding("/")
                + '/';
        QCOMPARE(text + QByteArray::number(int(got.exif.count())) + gflLastWarningText(), row[2].toUtf8());
    }
}

/// Thumbnails in EXIF blocks of both byte orders. The thumbnail's directory is the second one and ends with the block.
void tst_Codecs::exifThumbnails()
{
    const QByteArray picture = SavedBytes(*SmoothBitmap(300, 200, GFL_GREY, 8), SaveParams("jpeg")),
                     small = SavedBytes(*SmoothBitmap(120, 80, GFL_GREY, 8), SaveParams("jpeg"));
    for (const bool isBig : {false, true})
        for (const int type : {3, 4})             // SHORT, LONG
            for (const int missing : {0, 1, 2}) { // bytes of the thumbnail; a directory's last bytes
                const Case named("big-endian", isBig, "type", type, "missing", missing);
                const auto number = [&](int value, int bytes) {
                    QByteArray text = BigEndian(quint64(value), bytes);
                    if (!isBig)
                        std::reverse(text.begin(), text.end());
                    return text;
                };
                const auto field = [&](int tag, int value) {
                    return number(tag, 2) + number(type, 2) + number(1, 4)
                        + number(value, type == 3 ? 2 : 4).leftJustified(4, '\xFF');
                };
                const int length = small.size() + (missing == 1 ? 50 : 0);
                const QByteArray first = number(1, 2) + field(274, 1) + number(26 + small.size(), 4),
                                 second = number(2, 2) + field(513, 26) + field(514, length),
                                 exif = QByteArray("Exif\0\0", 6) + (isBig ? "MM" : "II") + number(42, 2) + number(8, 4)
                    + first + small + second.chopped(missing == 2 ? 3 : 0);
                QByteArray file = picture;
                file.insert(2, "\xFF\xE1" + BigEndian(quint64(exif.size()) + 2, 2) + exif);
                file.insert(2, QByteArray("\xFF\xE1\0\x0Bhttp://xm", 13)); // EXIF follows XMP
                const Source source(file.constData(), std::size_t(file.size()));
                const GFL_LOAD_PARAMS params = LoadParams();
                BitmapRows rows(params);
                QCOMPARE(bool(ReadExifThumbnail(source, {90, 60}, &rows)), missing == 0);
                QCOMPARE(rows.Bitmap() ? rows.Bitmap()->Width : 0, missing == 0 ? 120 : 0);
            }
}

/// Boxes with short and long numbers; the primary item is the second one.
void tst_Codecs::heifProperties()
{
    const auto box = [](const char *name, const QByteArray &content) {
        return BigEndian(quint64(content.size()) + 8, 4) + name + content;
    };
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_HEIF_PROPERTIES)))
        for (const int isLong : {0, 1}) {
            const Case named(row[0], "long", isLong);
            QByteArray properties, first, second;
            const QStringList boxes = row[1].split(QLatin1Char(' '));
            for (int i = 0; i < boxes.size(); ++i) {
                properties += box(boxes[i].left(4).toLatin1(), QByteArray::fromHex(boxes[i].mid(5).toLatin1()));
                second += BigEndian(quint64(i + 1) | (isLong ? 0x8000 : 0x80), isLong ? 2 : 1); // essential
            }
            const QByteArray version = BigEndian(isLong ? 0x01000001 : 0, 4), item = BigEndian(7, isLong ? 4 : 2);
            const QByteArray entries = BigEndian(3, isLong ? 4 : 2) + QByteArray("\1", 1) + BigEndian(1, isLong ? 2 : 1)
                + item + char(boxes.size()) + second + item + QByteArray("\1", 1) + BigEndian(1, isLong ? 2 : 1);
            const QByteArray file = box("ftyp", "heic")
                + box("meta",
                      BigEndian(0, 4) + box("pitm", version + item)
                          + box("iprp", box("ipco", properties) + box("ipma", version + BigEndian(3, 4) + entries)));
            const HeifProperties got = ReadHeifProperties(Source(file.constData(), std::size_t(file.size())));
            QCOMPARE(QString::asprintf("%d %d %d", got.turn.Orientation(), got.isCropped, got.isGray), row[2]);
        }
}

QTEST_GUILESS_MAIN(tst_Codecs)
#include "Codecs_test.moc"
