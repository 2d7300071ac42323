// A process on images, with a wizard page and a parameter record for each image.
#pragma once

#include "KIAbout.h"

#include <QDomElement>

class QWizardPage;

/// The order of the virtual operations is a binary contract: add none, move none.
///
/// A parameter record is opaque to the host. Who gets one from AllocParameters owns it until FreeParameters.
class KIPluginProcess : public KIAbout {
public:
    /// The page on which the user sets the process up; always the same one, owned by the process. Null if there is
    /// none.
    virtual QWizardPage *WizardPage() = 0;
    /// The user leaves the page: time to store defaults.
    virtual void OnValidatePage() { }
    /// A new record: the stored defaults for a null element, otherwise what the element holds.
    virtual void *AllocParameters(QDomElement) { return nullptr; }
    /// The record as an element without a parent, which the host may keep and put into a document of its own.
    virtual QDomElement GetXmlParameters(void *) { return QDomElement(); }
    virtual void CopyParameters(void * /*destination*/, void * /*source*/) { }
    virtual void FreeParameters(void *) { }
    /// A picture of what the process does.
    virtual QIcon BeforeAfter() const = 0;
};

Q_DECLARE_INTERFACE(KIPluginProcess, "KIPluginProcess")
