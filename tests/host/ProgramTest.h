// Base class of tests that run the program in a folder with pictures and a profile.
#pragma once

#include "ProgramRun.h"
#include "TestFiles.h"

#include <QTemporaryDir>
#include <QtTest>

/// Each test function gets a new folder with a.jpg and b.jpg of 60 x 40 pixels, and a matching p.lcp with all models.
class ProgramTest : public QObject {
    Q_OBJECT
protected Q_SLOTS:
    void init();

protected:
    QString Path(const QString &name) const { return m_dir->filePath(name); }
    /// Runs the program in the folder. @p line has the arguments, separated by spaces.
    ProgramResult Run(const QString &line) { return m_run->Run(line.split(QLatin1Char(' '), Qt::SkipEmptyParts)); }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<ProgramRun> m_run; // to be configured before Run()
};
