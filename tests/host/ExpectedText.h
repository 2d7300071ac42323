// Texts that the program prints, from texts.txt.
#pragma once

#include "Files.h"

/// Returns the section after the line "$ TITLE"; "no section" if there is none.
inline QByteArray ExpectedText(const QByteArray &title)
{
    const QByteArray all = '\n' + ReadFile(QStringLiteral(VITRELUX_TEXTS)) + "$ ", head = "\n$ " + title + '\n';
    const int begin = all.indexOf(head) + head.size();
    return all.contains(head) ? all.mid(begin, all.indexOf("\n$ ", begin - 1) + 1 - begin) : QByteArray("no section");
}
