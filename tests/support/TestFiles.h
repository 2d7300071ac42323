// Small pictures and profiles for tests of the program, and folder listings.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include "Files.h"

inline QString operator""_s(const char *text, std::size_t size)
{
    return QString::fromUtf8(text, static_cast<int>(size));
}

/// Writes a JPEG of a gradient with noise, which is the same on each call. Noise compresses poorly, so the file isn't
/// tiny.
void WriteJpeg(const QString &path, int width, int height);

/// Selects the models of a profile.
struct ProfileModels {
    bool distortion = true;
    bool chromatic = false; // all three models
    bool vignetting = false;
};

/// Returns an .lcp profile in element form, for pictures of @p width x @p height.
QByteArray ProfileText(const ProfileModels &models, int width, int height);

/// Returns all names in a folder, including hidden ones, sorted.
QStringList Names(const QString &folder);
