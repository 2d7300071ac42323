// Process that makes one output image from one input image.
#pragma once

#include "KIPluginProcess.h"

#include <QStringList>

/// The order of the virtual functions is a binary contract: don't add or move any.
class KIPluginOne2One : public KIPluginProcess {
public:
    /// Reads the image @p fileName, applies the record and writes a new file. Stores the new file's path in @p
    /// outputFileName before it touches any pixel. Throws KException.
    virtual void Process(QString fileName, void *parameters, QString &outputFileName) = 0;
    /// Announces the images of a job; each gets a record. In a job with a page, call WizardPage first.
    virtual void SetFiles(QStringList files) = 0;
    /// Returns the parameters for one file, or the stored defaults for a file that was not passed to SetFiles.
    virtual QDomElement GetFileXmlParams(QString file) = 0;
};

Q_DECLARE_INTERFACE(KIPluginOne2One, "KIPluginOne2One")
