#include "ProfileReport.h"

#include "ProfileDocument_p.h"
#include "newLCP.h"

#include <QFileInfo>

#include <cmath>

namespace {

const QString kExpected = QStringLiteral("expected an .lcp profile (XML)");

constexpr int kMaxTextLength = 200; // a text in a damaged file may be as long as the file

QString Named(const QDomElement &element)
{
    return QLatin1Char('<') + element.tagName().left(kMaxTextLength) + QLatin1Char('>');
}

/// Returns the first non-empty text of a child with one of the tags, tried in order; empty if there is none.
QString ChildText(const QDomElement &parent, std::initializer_list<const char *> tags)
{
    for (const char *tag : tags) {
        const QString text = parent.firstChildElement(QLatin1String(tag)).text().simplified().left(kMaxTextLength);
        if (!text.isEmpty())
            return text;
    }
    return QString();
}

std::optional<double> ChildNumber(const QDomElement &parent, const char *tag)
{
    bool isNumber = false;
    const double number = ChildText(parent, {tag}).toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? std::optional<double>(number) : std::nullopt;
}

// --- Why a file cannot be used ---

QString WhyNoFile(const QString &fileName)
{
    const QFileInfo info(fileName);
    if (info.isDir())
        return QStringLiteral("a folder; ") + kExpected;
    if (info.exists() && !info.isFile())
        return QStringLiteral("not a regular file; ") + kExpected;
    return QString();
}

QString WhyNoDocument(const ProfileDocument &profile)
{
    if (profile.fault == ProfileFault::NotOpened)
        return QStringLiteral("can't be opened: ") + profile.why;
    if (profile.fault == ProfileFault::Refused)
        return QStringLiteral("not a profile: ") + profile.why;
    if (profile.bytes == 0)
        return QStringLiteral("an empty file; ") + kExpected;
    if (profile.fault == ProfileFault::None)
        return QString();
    const QDomElement root = profile.document.documentElement();
    const QString what = root.isNull() ? QStringLiteral("not XML") : QStringLiteral("damaged or cut short");
    return QStringLiteral("%1: %2 at line %3, column %4; %5")
        .arg(what, profile.why, QString::number(profile.line), QString::number(profile.column),
             root.isNull() ? kExpected : QStringLiteral("expected complete XML"));
}

/// Returns the problem of a document in which first child elements don't lead to an entry.
QString WhyNoEntry(const QDomElement &root)
{
    QDomElement last = root;
    while (!last.firstChildElement().isNull())
        last = last.firstChildElement();
    return QStringLiteral("XML, but not a lens profile: its root is %1, and following first child elements down to %2 "
                          "finds no <rdf:li>")
        .arg(Named(root), Named(last));
}

/// Returns the problem of an entry in which newLCP finds no model.
QString WhyNoModel(const QDomElement &entry)
{
    if (!IsResource(entry)) {
        const QDomElement description = entry.firstChildElement(QStringLiteral("rdf:Description"));
        if (!description.isNull())
            return QStringLiteral("the values are attributes of <rdf:Description>; only the element form is supported "
                                  "(<rdf:li rdf:parseType=\"Resource\"> with an element for each value)");
        return QStringLiteral("the first <rdf:li> has no rdf:parseType=\"Resource\"; only that form is supported");
    }
    return QStringLiteral("no model in the first <rdf:li>; expected a <stCamera:PerspectiveModel> or "
                          "<stCamera:FisheyeModel> with rdf:parseType=\"Resource\"");
}

/// Returns what is wrong with one side of the calibrated picture; empty if it is valid.
QString WhyNoSize(const QDomElement &entry, const char *tag, double value)
{
    if (std::isfinite(value) && value > 1.0) // positions are fractions of the size minus one
        return QString();
    const QString name = QLatin1String(tag);
    const QDomElement element = entry.firstChildElement(name);
    if (element.isNull())
        return QStringLiteral("no <%1>; all its values are fractions of that size").arg(name);
    if (value == 0.0 && element.text().toFloat() > 1.0F)
        return QStringLiteral("<%1> comes after the model, where it is ignored; it must come before").arg(name);
    return QStringLiteral("\"%2\" as <%1>; expected a number of pixels above 1")
        .arg(name, element.text().simplified().left(40));
}

// --- Content ---

void DescribeEntry(const QDomElement &entry, ProfileReport &report)
{
    report.profileName = ChildText(entry, {"stCamera:ProfileName"});
    report.make = ChildText(entry, {"stCamera:Make"});
    report.model = ChildText(entry, {"stCamera:Model"});
    report.camera = ChildText(entry, {"stCamera:CameraPrettyName", "stCamera:UniqueCameraModel"});
    report.lens = ChildText(entry, {"stCamera:LensPrettyName", "stCamera:Lens"});
    report.focalLengthMm = ChildNumber(entry, "stCamera:FocalLength");
    report.focusDistanceM = ChildNumber(entry, "stCamera:FocusDistance");
    if (const auto apex = ChildNumber(entry, "stCamera:ApertureValue"))
        report.fNumber = std::exp2(*apex / 2.0); // as in EXIF: APEX value = 2 log2(f-number)
    for (QDomElement sibling = entry; !sibling.isNull(); sibling = sibling.nextSiblingElement(entry.tagName()))
        ++report.entryCount;
}

/// Use of a model.
enum class ModelRole {
    Warp,  // maps the picture, according to the profile's kind
    Shift, // maps one color relative to green, always by the perspective formula
    Gain
};

struct ModelInfo {
    const char *name;
    LensParam newLCP::*member;
    ModelRole role;
    const char *tag; // of its element inside the distortion model's; null for the distortion model itself
};

const ModelInfo kModels[] = {
    {"distortion", &newLCP::distortionModel, ModelRole::Warp, nullptr},
    {"green", &newLCP::greenModel, ModelRole::Warp, "stCamera:ChromaticGreenModel"},
    {"red against green", &newLCP::redGreenModel, ModelRole::Shift, "stCamera:ChromaticRedGreenModel"},
    {"blue against green", &newLCP::blueGreenModel, ModelRole::Shift, "stCamera:ChromaticBlueGreenModel"},
    {"vignette", &newLCP::vignetteModel, ModelRole::Gain, "stCamera:VignetteModel"},
};

/// Returns whether the file specifies the model's center. newLCP reads a missing one as the top left corner.
bool HasCenter(const QDomElement &modelElement, const ModelInfo &info)
{
    const QDomElement element = info.tag ? modelElement.lastChildElement(QLatin1String(info.tag)) : modelElement;
    return ChildNumber(element, "stCamera:ImageXCenter") && ChildNumber(element, "stCamera:ImageYCenter");
}

/// Returns whether the model's values allow finite positions or gains.
bool HasUsableValues(const LensParam &model, ModelRole role)
{
    bool isUsable = model.focalPixels > 0.0F && std::isfinite(model.focalPixels) && model.scaleFactor > 0.0F
        && std::isfinite(model.scaleFactor) && std::isfinite(model.tangential1) && std::isfinite(model.tangential2)
        && std::isfinite(model.centerX) && std::isfinite(model.centerY);
    if (role == ModelRole::Gain) // only this one uses the vertical focal length
        isUsable = isUsable && model.focalLengthY > 0.0 && std::isfinite(model.focalLengthY);
    for (float coefficient : model.coefficients)
        isUsable = isUsable && std::isfinite(coefficient);
    return isUsable;
}

/// Returns why correcting with a model would ruin the picture; empty if it wouldn't.
QString Flaw(const newLCP &lcp, const ModelInfo &info, const QDomElement &modelElement)
{
    const LensParam &model = lcp.*info.member;
    if (!model.found)
        return QString();
    if (!HasUsableValues(model, info.role))
        return QStringLiteral(
            "a focal length is missing or a value is not a number; this correction would ruin the picture");
    if (!HasCenter(modelElement, info))
        return QStringLiteral(
            "the center (ImageXCenter, ImageYCenter) is missing or not a number; this correction would ruin "
            "the picture");
    const int count = model.coefficients.size();
    if (info.role != ModelRole::Warp || lcp.Kind() != LensModel::Fisheye || count == 1 || count == 2)
        return QString();
    return QStringLiteral("a fisheye with %1 coefficients is not supported (1 or 2 are); this correction would give a "
                          "picture of one color")
        .arg(count);
}

void DescribeModels(const newLCP &lcp, const QDomElement &modelElement, ProfileReport &report)
{
    report.fisheye = lcp.Kind() == LensModel::Fisheye;
    report.imageWidth = lcp.imageWidth;
    report.imageLength = lcp.imageLength;
    for (const ModelInfo &info : kModels)
        report.models.append({QLatin1String(info.name), lcp.*info.member, Flaw(lcp, info, modelElement)});
}

// --- Unexpected effects ---

/// Returns the effect of an unusual number of coefficients; empty for a usual one.
QString NoteOnCoefficients(int count, ModelRole role, LensModel kind)
{
    if (role == ModelRole::Gain)
        return count >= 3 ? QString() : QStringLiteral("%1 of 3 coefficients; the missing ones count as 0").arg(count);
    const bool isFlaw = role == ModelRole::Warp && kind == LensModel::Fisheye; // reported as a flaw
    return isFlaw || count <= 3
        ? QString()
        : QStringLiteral("%1 radial coefficients are not supported (up to 3 are); none is applied").arg(count);
}

void NoteModel(const newLCP &lcp, const ModelInfo &info, const QString &flaw, QStringList &notes)
{
    const LensParam &model = lcp.*info.member;
    if (!model.found)
        return;
    const QString prefix = QLatin1String(info.name) + QStringLiteral(" model: ");
    for (const QString &note : {flaw, NoteOnCoefficients(model.coefficients.size(), info.role, lcp.Kind())}) {
        if (!note.isEmpty())
            notes << prefix + note;
    }
}

/// Adds the effects of models that the profile lacks.
void NoteMissingModels(const newLCP &lcp, QStringList &notes)
{
    if (!lcp.greenModel.found)
        notes << QStringLiteral("no green model: if chromatic aberration is switched on, nothing at all is corrected");
    else if (!lcp.redGreenModel.found || !lcp.blueGreenModel.found)
        notes << QStringLiteral(
            "the red or the blue model is missing: correcting chromatic aberration would ruin the picture");
    if (!lcp.vignetteModel.found)
        notes << QStringLiteral("no vignette model: vignetting is not corrected");
}

void AddNotes(const newLCP &lcp, const QDomElement &modelElement, ProfileReport &report)
{
    if (report.entryCount > 1)
        report.notes << QStringLiteral("%1 entries; the first one is used for every picture").arg(report.entryCount);
    const QString tag = modelElement.tagName();
    if (tag != QLatin1String("stCamera:PerspectiveModel") && tag != QLatin1String("stCamera:FisheyeModel"))
        report.notes << QStringLiteral("model of unknown kind, %1, treated as perspective").arg(Named(modelElement));
    for (int i = 0; i < report.models.size(); ++i)
        NoteModel(lcp, kModels[i], report.models[i].flaw, report.notes);
    NoteMissingModels(lcp, report.notes);
}

/// Fills the report from a document; returns why it cannot be used, empty if it can.
QString DescribeDocument(const QDomElement &root, ProfileReport &report)
{
    const QDomElement entry = FirstEntry(root);
    if (entry.isNull())
        return WhyNoEntry(root);
    DescribeEntry(entry, report);
    bool hasModel = false;
    const newLCP lcp(root, hasModel);
    if (!hasModel)
        return WhyNoModel(entry);
    DescribeModels(lcp, ModelElement(entry), report);
    QString why = WhyNoSize(entry, "stCamera:ImageWidth", lcp.imageWidth);
    if (why.isEmpty())
        why = WhyNoSize(entry, "stCamera:ImageLength", lcp.imageLength);
    if (why.isEmpty())
        AddNotes(lcp, ModelElement(entry), report);
    return why;
}

} // namespace

ProfileReport ReadProfileReport(const QString &fileName)
{
    ProfileReport report;
    report.problem = WhyNoFile(fileName);
    if (!report.problem.isEmpty())
        return report;
    const ProfileDocument profile = ReadProfileDocument(fileName);
    report.problem = WhyNoDocument(profile);
    if (report.problem.isEmpty())
        report.problem = DescribeDocument(profile.document.documentElement(), report);
    report.usable = report.problem.isEmpty();
    return report;
}
