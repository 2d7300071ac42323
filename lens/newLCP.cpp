#include "newLCP.h"

#include "ProfileDocument_p.h"

#include <QDomElement>
#include <QFileInfo>
#include <QString>

namespace {

/// Groups of values; not every model has all of them.
enum ValueKind : unsigned { kPlace = 1, kRadial = 2, kTangential = 4, kScale = 8, kVignette = 16 };

/// Value element of a model, and the function that stores its number.
struct ValueRule {
    const char *tag;
    ValueKind kind;
    void (*store)(LensParam &model, float value);
};

void Append(LensParam &model, float value)
{
    model.coefficients.append(value);
}

const ValueRule kValueRules[] = {
    {"stCamera:FocalLengthX", kPlace, [](LensParam &model, float value) { model.focalLengthX = value; }},
    {"stCamera:FocalLengthY", kPlace, [](LensParam &model, float value) { model.focalLengthY = value; }},
    {"stCamera:ImageXCenter", kPlace, [](LensParam &model, float value) { model.imageXCenter = value; }},
    {"stCamera:ImageYCenter", kPlace, [](LensParam &model, float value) { model.imageYCenter = value; }},
    {"stCamera:ScaleFactor", kScale, [](LensParam &model, float value) { model.scaleFactor = value; }},
    {"stCamera:TangentialDistortParam1", kTangential, [](LensParam &model, float value) { model.tangential1 = value; }},
    {"stCamera:TangentialDistortParam2", kTangential, [](LensParam &model, float value) { model.tangential2 = value; }},
    // Appended in file order, regardless of the numbers in their tags.
    {"stCamera:RadialDistortParam1", kRadial, Append},
    {"stCamera:RadialDistortParam2", kRadial, Append},
    {"stCamera:RadialDistortParam3", kRadial, Append},
    {"stCamera:VignetteModelParam1", kVignette, Append},
    {"stCamera:VignetteModelParam2", kVignette, Append},
    {"stCamera:VignetteModelParam3", kVignette, Append},
};

/// Model element inside the distortion model, and the values read from it.
struct SubModelRule {
    const char *tag;
    LensParam newLCP::*model;
    unsigned kinds; // ValueKind flags
};

const SubModelRule kSubModelRules[] = {
    {"stCamera:ChromaticGreenModel", &newLCP::greenModel, kPlace | kRadial},
    {"stCamera:ChromaticRedGreenModel", &newLCP::redGreenModel, kPlace | kRadial | kScale},
    {"stCamera:ChromaticBlueGreenModel", &newLCP::blueGreenModel, kPlace | kRadial | kScale},
    {"stCamera:VignetteModel", &newLCP::vignetteModel, kPlace | kVignette},
};

/// Returns the rule for a tag, null if there is none.
template <typename Rule, size_t count> const Rule *FindRule(const Rule (&rules)[count], const QString &tag)
{
    for (const Rule &rule : rules) {
        if (tag == QLatin1String(rule.tag))
            return &rule;
    }
    return nullptr;
}

/// Returns the text of an element as a number; 0 if it is not one.
float Number(const QDomElement &element)
{
    return element.text().toFloat();
}

void ReadValue(const QDomElement &element, unsigned kinds, LensParam &model)
{
    const ValueRule *rule = FindRule(kValueRules, element.tagName());
    if (rule && (rule->kind & kinds))
        rule->store(model, Number(element));
}

} // namespace

newLCP::newLCP(const QString &fileName, bool &ok)
{
    QString whyNotRead;
    *this = newLCP(fileName, ok, &whyNotRead);
}

newLCP::newLCP(const QString &fileName, bool &ok, QString *whyNotRead)
{
    const ProfileDocument profile = ReadProfileDocument(fileName);
    if (profile.fault != ProfileFault::NotOpened)
        ok = ReadEntry(profile.document.documentElement());
    else if (QFileInfo(fileName).isFile())
        *whyNotRead = profile.why;
}

newLCP::newLCP(const QDomElement &root, bool &ok)
{
    ok = ReadEntry(root);
}

void newLCP::Init()
{
    sensorFormatFactor = 1.0F;
    scale = 0.0F;
    imageWidth = 0.0;
    imageLength = 0.0;
    modelKind = 0;
}

void newLCP::Reset()
{
    for (LensParam *model : {&distortionModel, &greenModel, &redGreenModel, &blueGreenModel, &vignetteModel})
        model->Reset();
    Init();
}

bool newLCP::ReadEntry(const QDomElement &root)
{
    const QDomElement entry = FirstEntry(root);
    if (!IsResource(entry))
        return false;
    const QDomElement modelElement = ModelElement(entry);
    // Metadata after the model element is never read.
    for (QDomElement element = entry.firstChildElement(); element != modelElement;
         element = element.nextSiblingElement())
        ReadMetadata(element);
    if (modelElement.isNull())
        return false;
    ReadModel(modelElement);
    ComputePixelValues();
    return true;
}

void newLCP::ReadMetadata(const QDomElement &element)
{
    const QString tag = element.tagName();
    if (tag == QLatin1String("stCamera:ImageWidth"))
        imageWidth = Number(element);
    else if (tag == QLatin1String("stCamera:ImageLength"))
        imageLength = Number(element);
    else if (tag == QLatin1String("stCamera:SensorFormatFactor"))
        sensorFormatFactor = Number(element);
}

void newLCP::ReadModel(const QDomElement &modelElement)
{
    const QString kind = modelElement.tagName();
    distortionModel.Found();
    if (kind == QLatin1String("stCamera:PerspectiveModel"))
        modelKind = static_cast<int>(LensModel::Perspective);
    else if (kind == QLatin1String("stCamera:FisheyeModel"))
        modelKind = static_cast<int>(LensModel::Fisheye);

    for (QDomElement child = modelElement.firstChildElement(); !child.isNull(); child = child.nextSiblingElement()) {
        const SubModelRule *rule = FindRule(kSubModelRules, child.tagName());
        if (!rule) {
            ReadValue(child, kPlace | kRadial | kTangential, distortionModel);
            continue;
        }
        LensParam &model = this->*rule->model;
        model.Found();
        for (QDomElement value = child.firstChildElement(); !value.isNull(); value = value.nextSiblingElement())
            ReadValue(value, rule->kinds, model);
    }
}

void newLCP::ComputePixelValues()
{
    const float w = static_cast<float>(imageWidth) - 1.0F;
    const float h = static_cast<float>(imageLength) - 1.0F;
    for (LensParam *model : {&distortionModel, &greenModel, &redGreenModel, &blueGreenModel, &vignetteModel}) {
        model->centerX = model->imageXCenter * w;
        model->centerY = model->imageYCenter * h;
        model->focalPixels = static_cast<float>(model->focalLengthX * w); // the width is the unit of both axes
    }
}
