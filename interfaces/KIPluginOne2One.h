// A process that makes one image out of one image.
#pragma once

#include "KIPluginProcess.h"

#include <QStringList>

/// The order of the virtual operations is a binary contract: add none, move none.
class KIPluginOne2One : public KIPluginProcess {
public:
    /// Reads the image @p fileName, applies the record and writes a new file, whose path it hands back in
    /// @p outputFileName, set before any pixel is touched. Throws KException.
    virtual void Process(QString fileName, void *parameters, QString &outputFileName) = 0;
    /// Announces the images of a job; each gets a record. With a page, WizardPage comes first.
    virtual void SetFiles(QStringList files) = 0;
    /// What was chosen for one file, or the stored defaults for a file that SetFiles did not name.
    virtual QDomElement GetFileXmlParams(QString file) = 0;
};

Q_DECLARE_INTERFACE(KIPluginOne2One, "KIPluginOne2One")
