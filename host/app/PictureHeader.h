// The header of a picture file: its size, depth and format.
#pragma once

#include "gfl.h"

#include <QString>

/// Header read from a file. It is freed with the object.
class PictureHeader {
public:
    explicit PictureHeader(const QString &path);
    ~PictureHeader();
    PictureHeader(const PictureHeader &) = delete;
    PictureHeader &operator=(const PictureHeader &) = delete;

    /// Returns why the header can't be read, in one line without the file's name; empty if it was read.
    const QString &Problem() const { return m_problem; }
    /// Returns the header; all zeros if it can't be read.
    const GFL_FILE_INFORMATION &Information() const { return m_information; }

private:
    GFL_FILE_INFORMATION m_information = {};
    QString m_problem;
};
