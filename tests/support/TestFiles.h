// Small pictures and profiles for the tests of the program, and looks at folders.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include "Files.h"

inline QString operator""_s(const char *text, std::size_t size)
{
    return QString::fromUtf8(text, static_cast<int>(size));
}

/// A JPEG of noise over a gradient, always the same: its output compresses badly, so that it is not tiny.
void WriteJpeg(const QString &path, int width, int height);

/// Which models a profile gets.
struct ProfileModels {
    bool distortion = true;
    bool chromatic = false; // all three models
    bool vignetting = false;
};

/// An .lcp file in element form, for pictures of @p width by @p height.
QByteArray ProfileText(const ProfileModels &models, int width, int height);

/// All names in a folder, hidden ones too, sorted.
QStringList Names(const QString &folder);
