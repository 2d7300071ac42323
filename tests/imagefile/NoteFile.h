// Maker notes as cameras write them, in pictures put together byte by byte.
#pragma once

#include <QByteArray>
#include <QVector>

struct NoteKind {
    const char *name, *make;
    QByteArray mark; // with a TIFF header where the kind has one
    bool isBigEndian;
    enum Base { Block, Note, OwnHeader } base; // what offsets count from: OwnHeader: the last 8 bytes of the mark
    int shift;                                 // added to all offsets, wrongly
    enum Result { Stays, Moves, IsRebuilt } result;
};

/// Maker, place and byte order of the notes of common makers, regular ones and two with wrong offsets.
const QVector<NoteKind> &NoteKinds();

/// A note that begins at byte @p place of its EXIF block: texts and fractions, in part behind offsets.
QByteArray NoteOf(const NoteKind &kind, quint32 place);

/// An EXIF block with @p note, and where in the block that begins.
QByteArray ExifWithNote(const NoteKind &kind, quint32 *place);

/// A JPEG with a block of EXIF.
QByteArray JpegWithExif(QByteArray jpeg, const QByteArray &exif);
