// Process on images, with a wizard page and one parameter record per image.
#pragma once

#include "KIAbout.h"

#include <QDomElement>

class QWizardPage;

/// The order of the virtual functions is a binary contract: don't add or move any.
///
/// A parameter record is opaque to the host. The caller of AllocParameters owns it until FreeParameters.
class KIPluginProcess : public KIAbout {
public:
    /// Returns the page on which the user sets up the process: the same one in each call, unless the host deleted it
    /// with its wizard. The process's destructor deletes a page that still exists. Null if the process has no page.
    virtual QWizardPage *WizardPage() = 0;
    /// Called when the user leaves the page; stores defaults.
    virtual void OnValidatePage() { }
    /// Returns a new record with the contents of the element, or with the stored defaults for a null element.
    virtual void *AllocParameters(QDomElement) { return nullptr; }
    /// Returns the record as an element without a parent, which the host may keep and insert into its own document.
    virtual QDomElement GetXmlParameters(void *) { return QDomElement(); }
    virtual void CopyParameters(void * /*destination*/, void * /*source*/) { }
    virtual void FreeParameters(void *) { }
    /// Returns a picture that shows the effect of the process.
    virtual QIcon BeforeAfter() const = 0;
};

Q_DECLARE_INTERFACE(KIPluginProcess, "KIPluginProcess")
