#include "NoteFile.h"
#include "TiffDirectory.h"

namespace {

/// Returns fields that exist in the maker's notes: mostly texts, some fractions or shorts.
QVector<TiffField> FieldsOf(const NoteKind &kind)
{
    const bool big = kind.isBigEndian;
    const auto text = [](quint16 tag, QByteArray value) { return TiffField{tag, 2, value + '\0'}; };
    const auto fraction = [big](quint16 tag, quint32 over, quint32 under) {
        return TiffField{tag, 5, TiffNumber(over, 4, big) + TiffNumber(under, 4, big)};
    };
    const QByteArray make = kind.make;
    if (make == "Canon")
        return {text(6, "IMG:EXAMPLE JPEG"), text(7, "Firmware Version 1.00"), text(9, "The owner of this one")};
    if (make.startsWith("OLYMPUS"))
        return {
            fraction(0x204, 3, 2), text(0x207, "SX756 firmware"), {0x209, 7, QByteArray("OLYMPUS DIGITAL CAMERA", 22)}};
    if (make.startsWith("NIKON") && kind.base == NoteKind::Block)
        return {{2, 2, QByteArray("08.00\0", 6)}, fraction(10, 7, 5)};
    if (make.startsWith("NIKON"))
        return {{1, 7, "0210"}, text(4, "FINE   "), text(7, "AF-C  "), fraction(0x86, 7, 5)};
    if (make.startsWith("PENTAX"))
        return {{0, 3, TiffNumber(3, 2, big) + TiffNumber(0, 2, big)},
                {6, 7, QByteArray("\7\344\2\3", 4)},
                text(0x229, "1234567"),
                {0x3F, 1, QByteArray("\4\374", 2)},
                {0x200, 3, QByteArray("\0\1\0\2\0\3\0\4", 8)}};
    if (make == "SONY")
        return {text(0xB020, "Standard       "), {0xB02A, 1, QByteArray("\0\20\20\5\6\50\40\0", 8)}};
    if (make == "Panasonic")
        return {{0x25, 7, QByteArray("F541301230045\0\0\0", 16)}, text(0x51, "LUMIX G VARIO 14-140/F3.5-5.6")};
    if (make == "FUJIFILM")
        return {text(0x10, "FPX 0123456 serial"), text(0x1000, "FINE   ")};
    if (make == "CASIO COMPUTER CO.,LTD")
        return {text(0x2001, "0312122214    "), {0x2012, 3, QByteArray(2, '\1')}, text(0x2034, "White balance text")};
    if (make == "SIGMA")
        return {text(2, "01234567"), text(3, "SINGLE SHOT"), text(4, "HI RESOLUTION")};
    if (make == "SAMSUNG")
        return {{1, 7, "0100"}, text(0xA001, "SEP_FIRMWARE_12"), fraction(0xA018, 1, 125)};
    if (make == "KONICA MINOLTA")
        return {{0, 7, "MLT0"}, {0x100, 4, QByteArray(4, '\0')}, {0x18, 7, QByteArray("anti-shake block of bytes")}};
    return {text(2, "Rev0137 of the note"), text(5, "A text of no tag")};
}

} // namespace

const QVector<NoteKind> &NoteKinds()
{
    constexpr auto kBlock = NoteKind::Block, kNote = NoteKind::Note, kOwn = NoteKind::OwnHeader;
    constexpr auto kStays = NoteKind::Stays, kMoves = NoteKind::Moves, kIsRebuilt = NoteKind::IsRebuilt;
    static const QVector<NoteKind> kinds = {
        {"Canon", "Canon", "", false, kBlock, 0, kStays},
        {"Canon, shifted", "Canon", "", false, kBlock, -36, kStays},
        {"Canon, big-endian", "Canon", "", true, kBlock, 0, kIsRebuilt},
        {"Olympus, old", "OLYMPUS CORPORATION", QByteArray("OLYMP\0\1\0", 8), false, kBlock, 0, kStays},
        {"Olympus, old, shifted", "OLYMPUS CORPORATION", QByteArray("OLYMP\0\1\0", 8), true, kBlock, 120, kStays},
        {"Olympus E-1", "OLYMPUS CORPORATION", QByteArray("OLYMP\0\1\0", 8), true, kBlock, 0, kStays},
        {"Olympus", "OLYMPUS CORPORATION", QByteArray("OLYMPUS\0II\3\0", 12), false, kNote, 0, kMoves},
        {"Nikon 1", "NIKON", QByteArray("Nikon\0\1\0", 8), false, kBlock, 0, kStays},
        {"Nikon 3", "NIKON CORPORATION", QByteArray("Nikon\0\2\20\0\0MM\0*\0\0\0\10", 18), true, kOwn, 0, kMoves},
        {"Pentax", "PENTAX Corporation", QByteArray("AOC\0MM", 6), true, kBlock, 0, kIsRebuilt},
        {"Sony", "SONY", QByteArray("SONY DSC \0\0\0", 12), false, kBlock, 0, kStays},
        {"Panasonic", "Panasonic", QByteArray("Panasonic\0\0\0", 12), false, kBlock, 0, kStays},
        {"Fujifilm", "FUJIFILM", QByteArray("FUJIFILM\14\0\0\0", 12), false, kNote, 0, kMoves},
        {"Casio", "CASIO COMPUTER CO.,LTD", QByteArray("QVC\0\0\0", 6), true, kBlock, 0, kStays},
        {"Minolta", "KONICA MINOLTA", "", true, kBlock, 0, kIsRebuilt},
        {"Sigma", "SIGMA", QByteArray("SIGMA\0\0\0\1\0", 10), false, kBlock, 0, kStays},
        {"Samsung", "SAMSUNG", "", false, kNote, 0, kMoves},
        {"Ricoh", "RICOH", QByteArray("Ricoh\0\0\0", 8), true, kBlock, 0, kStays},
    };
    return kinds;
}

QByteArray NoteOf(const NoteKind &kind, quint32 place)
{
    const auto mark = quint32(kind.mark.size());
    quint32 at = place + mark;
    if (kind.base != NoteKind::Block)
        at = kind.base == NoteKind::Note ? mark : 8;
    at += quint32(kind.shift);
    QVector<TiffField> fields = FieldsOf(kind);
    if (kind.name == QByteArray("Olympus E-1")) { // a nested directory at the end, stored as bytes
        const QVector<TiffField> nested = {{0x100, 2, QByteArray("D4040\0", 6)},
                                           {0x101, 2, QByteArray("AB0123456789\0", 13)}};
        fields.append({0x2010, 7, TiffDirectory(nested, 0, kind.isBigEndian)});
        const int before = TiffDirectory(fields, at, kind.isBigEndian).size() - fields.last().value.size();
        fields.last().value = TiffDirectory(nested, at + quint32(before), kind.isBigEndian);
    }
    return kind.mark + TiffDirectory(fields, at, kind.isBigEndian);
}

QByteArray ExifWithNote(const NoteKind &kind, quint32 *place)
{
    const bool big = kind.isBigEndian;
    const QByteArray make = QByteArray(kind.make) + '\0',
                     head = (big ? "MM" : "II") + TiffNumber(42, 2, big) + TiffNumber(8, 4, big);
    // The first directory has YCbCrPositioning (531), which is not copied, so that everything after it moves.
    const auto first = [&](quint32 exifAt) {
        return TiffDirectory({{271, 2, make},
                              {272, 2, QByteArray("Model of a camera\0", 18)},
                              {531, 3, TiffNumber(1, 2, big)},
                              {34665, 4, TiffNumber(exifAt, 4, big)}},
                             8, big);
    };
    const auto exifAt = 8 + quint32(first(0).size());
    const auto exif = [&](const QByteArray &note) {
        return TiffDirectory({{33434, 5, TiffNumber(1, 4, big) + TiffNumber(250, 4, big)}, {37500, 7, note}}, exifAt,
                             big);
    };
    const quint32 noteSize = quint32(NoteOf(kind, 0).size());
    const QByteArray sized = exif(QByteArray(int(noteSize), '\0'));
    *place = exifAt + quint32(sized.size()) - noteSize - noteSize % 2;
    return head + first(exifAt) + exif(NoteOf(kind, *place));
}

QByteArray JpegWithExif(QByteArray jpeg, const QByteArray &exif)
{
    const QByteArray payload = QByteArray("Exif\0\0", 6) + exif;
    return jpeg.insert(2, "\xFF\xE1" + TiffNumber(quint32(payload.size()) + 2, 2, true) + payload);
}
