// Maker notes as cameras write them, in pictures built byte by byte.
#pragma once

#include <QByteArray>
#include <QVector>

struct NoteKind {
    const char *name, *make;
    QByteArray mark; // the header, with a TIFF header for the kinds that have one
    bool isBigEndian;
    enum Base { Block, Note, OwnHeader } base;      // base of the offsets; OwnHeader: the last 8 bytes of the mark
    int shift;                                      // that the camera mistakenly added to all offsets
    enum Result { Stays, Moves, IsRebuilt } result; // in a copy: at the same place, at another place, or encoded anew
};

/// Returns the kinds of notes of common makers; two kinds have wrong offsets.
const QVector<NoteKind> &NoteKinds();

/// Returns a note that begins at byte @p place of its EXIF block: texts and fractions, partly stored by offset.
QByteArray NoteOf(const NoteKind &kind, quint32 place);

/// Returns an EXIF block with a note of @p kind, and sets @p place to the note's position in it.
QByteArray ExifWithNote(const NoteKind &kind, quint32 *place);

/// Returns @p jpeg with an EXIF segment inserted.
QByteArray JpegWithExif(QByteArray jpeg, const QByteArray &exif);
