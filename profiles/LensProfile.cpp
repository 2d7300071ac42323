#include "LensProfile.h"

#include "InputLimits.h"
#include "PictureFrame.h"
#include "ProfileCheck_p.h"
#include "ProfileXml_p.h"
#include "Rational_p.h"
#include "XmlDocument.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double kInfinityM = 10000.0; // profiles use this value and larger ones for infinity
// No lens exceeds these bounds; within them no polynomial overflows.
constexpr double kMinFocal = 0.01, kMaxFocal = 1000.0, kMaxCoefficient = 1e12;

struct TextRule {
    const char *name;
    QString ProfileEntry::*text;
};
constexpr TextRule kTextRules[] = {
    {"Make", &ProfileEntry::make},
    {"Model", &ProfileEntry::model},
    {"UniqueCameraModel", &ProfileEntry::uniqueModel},
    {"CameraPrettyName", &ProfileEntry::cameraName},
    {"Lens", &ProfileEntry::lens},
    {"LensID", &ProfileEntry::lensId},
    {"LensPrettyName", &ProfileEntry::lensName},
    {"LensInfo", &ProfileEntry::lensInfo},
    {"ProfileName", &ProfileEntry::profileName},
};

/// A numeric field of an entry's setting or frame. Within the bounds, quotients are finite and no polynomial overflows.
struct EntryNumberRule {
    const char *name;
    double ProfileEntry::*value;
    double least, most;
};
constexpr EntryNumberRule kEntryNumberRules[] = {
    {"FocalLength", &ProfileEntry::focalMm, 0.1, 1e5}, // mm
    {"FocusDistance", &ProfileEntry::distanceM, 1e-3, 1e12},
    {"ImageWidth", &ProfileEntry::width, 1.0, 1e7},
    {"ImageLength", &ProfileEntry::height, 1.0, 1e7},
    {"SensorFormatFactor", &ProfileEntry::sensorFormatFactor, 0.05, 100.0},
};

struct ModelRule {
    const char *name;
    std::optional<ProfileModel> ProfileEntry::*model;
    const char *coefficients; // name without its number
};
constexpr ModelRule kSubModelRules[] = {
    {"ChromaticGreenModel", &ProfileEntry::green, "RadialDistortParam"},
    {"ChromaticRedGreenModel", &ProfileEntry::redGreen, "RadialDistortParam"},
    {"ChromaticBlueGreenModel", &ProfileEntry::blueGreen, "RadialDistortParam"},
    {"VignetteModel", &ProfileEntry::vignette, "VignetteModelParam"},
};

struct ModelNumberRule {
    const char *name;
    double ProfileModel::*value;
    double least, most;
};
constexpr ModelNumberRule kModelNumberRules[] = {
    {"ImageXCenter", &ProfileModel::centerX, -1.0, 2.0},
    {"ImageYCenter", &ProfileModel::centerY, -1.0, 2.0},
    {"ScaleFactor", &ProfileModel::scaleFactor, 0.5, 2.0},
    {"TangentialDistortParam1", &ProfileModel::tangential1, -kMaxCoefficient, kMaxCoefficient},
    {"TangentialDistortParam2", &ProfileModel::tangential2, -kMaxCoefficient, kMaxCoefficient},
};

bool AreEquivalent(const QString &a, const QString &b)
{
    if (a == b)
        return true;
    const std::optional<double> first = ParseRational(a), second = ParseRational(b);
    return first && second && *first == *second;
}

/// Builder of one entry from its XML fields.
class EntryReader {
public:
    EntryReader(const ProfileNode &node, LensProfile *profile)
        : m_node(node), m_profile(profile), m_index(profile->entries.size())
    {
    }

    void Read()
    {
        m_entry.line = m_node.line;
        NoteContradictions(m_node);
        ReadSetting();
        if (const ProfileNode *model = GeometricNode())
            ReadModels(*model);
        else
            Note(m_node.line, QStringLiteral("no perspective or fisheye model"), true);
        m_profile->entries.append(m_entry);
    }

private:
    void Note(qint64 line, const QString &text, bool unusable = false)
    {
        AddNote(m_profile, line, m_index, text, unusable);
    }

    static const ProfileField *Find(const ProfileNode &node, const QString &name)
    {
        const auto found = std::find_if(node.fields.rbegin(), node.fields.rend(),
                                        [&](const ProfileField &field) { return field.name == name; });
        return found == node.fields.rend() ? nullptr : &*found;
    }
    static const ProfileField *Find(const ProfileNode &node, const char *name)
    {
        return Find(node, QString::fromLatin1(name));
    }

    void NoteContradictions(const ProfileNode &node)
    {
        QHash<QString, QString> seen;
        for (const ProfileField &field : node.fields) {
            const auto before = seen.constFind(field.name);
            if (before != seen.constEnd() && !AreEquivalent(*before, field.value))
                Note(field.line,
                     QStringLiteral("%1 is given twice, \"%2\" and \"%3\"; the last one is used")
                         .arg(field.name, before->left(80), field.value.left(80)));
            seen.insert(field.name, field.value);
        }
    }

    /// Returns a number of the entry's setting or frame; 0 if it is missing or, with a note, invalid.
    double EntryNumber(const EntryNumberRule &rule)
    {
        const ProfileField *field = Find(m_node, rule.name);
        if (!field)
            return 0.0;
        const double value = ParseRational(field->value).value_or(0.0);
        if (value >= rule.least && value <= rule.most)
            return value;
        Note(field->line,
             QStringLiteral("%1 is \"%2\", not a number from %3 to %4; it is ignored")
                 .arg(QLatin1String(rule.name), field->value.left(80), QString::number(rule.least),
                      QString::number(rule.most)));
        return 0.0;
    }

    void ReadSetting()
    {
        for (const TextRule &rule : kTextRules) {
            if (const ProfileField *field = Find(m_node, rule.name))
                m_entry.*rule.text = field->value;
        }
        for (const EntryNumberRule &rule : kEntryNumberRules)
            m_entry.*rule.value = EntryNumber(rule);
        if (m_entry.distanceM >= kInfinityM)
            m_entry.distanceM = std::numeric_limits<double>::infinity();
        if (const ProfileField *raw = Find(m_node, "CameraRawProfile"))
            m_entry.raw =
                raw->value.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 || raw->value == QLatin1String("1");
        ReadAperture();
        for (const auto &list : m_node.lists)
            (list.first == QLatin1String("AlternateLensIDs") ? m_entry.alternateLensIds : m_entry.alternateLensNames) +=
                list.second;
    }

    void ReadAperture()
    {
        const ProfileField *field = Find(m_node, "ApertureValue");
        if (!field)
            return;
        const std::optional<double> apex = ParseRational(field->value);
        m_entry.hasAperture = apex && *apex > -4.0 && *apex < 20.0; // f/0.25 to f/1024
        if (m_entry.hasAperture)
            m_entry.apertureApex = *apex;
        else
            Note(field->line,
                 QStringLiteral("ApertureValue is \"%1\", not an aperture; it is ignored").arg(field->value.left(80)));
    }

    const ProfileNode *GeometricNode()
    {
        const ProfileNode *found = nullptr;
        for (const ProfileNode &node : m_node.models) {
            const bool isFisheye = node.name == QLatin1String("FisheyeModel");
            if (!isFisheye && node.name != QLatin1String("PerspectiveModel"))
                continue;
            if (found)
                Note(node.line, QStringLiteral("a second lens model in one entry; the last one is used"));
            found = &node;
            m_entry.kind = isFisheye ? ProfileEntry::Kind::Fisheye : ProfileEntry::Kind::Perspective;
        }
        return found;
    }

    void ReadModels(const ProfileNode &node)
    {
        NoteContradictions(node);
        ProfileModel base;
        base.focalLengthX = FocalLengthFromFrame();
        if (!ReadModelNumbers(node, &base))
            return; // its sub-models inherit the unreadable values
        ProfileModel geometry = base;
        const bool isRead = ReadCoefficients(node, "RadialDistortParam", &geometry);
        const bool hasTerms =
            !geometry.coefficients.isEmpty() || geometry.tangential1 != 0.0 || geometry.tangential2 != 0.0;
        if (isRead && hasTerms)
            Keep(node, geometry, &ProfileEntry::geometry);
        base.scaleFactor = 1.0;
        base.tangential1 = base.tangential2 = 0.0;
        for (const ProfileNode &child : node.models)
            ReadSubModel(child, base);
        if (node.models.empty() && !hasTerms)
            Note(node.line, QStringLiteral("a lens model without coefficients"), true);
    }

    void ReadSubModel(const ProfileNode &node, ProfileModel model)
    {
        if (node.name == QLatin1String("VignetteModelPiecewiseParam")) {
            Note(node.line, QStringLiteral("vignetting as points is not supported; the entry's vignetting is left out"),
                 true);
            m_isPiecewise = true;
        }
        const auto rule = std::find_if(std::begin(kSubModelRules), std::end(kSubModelRules),
                                       [&](const ModelRule &one) { return node.name == QLatin1String(one.name); });
        if (rule != std::end(kSubModelRules)) {
            NoteContradictions(node);
            if (m_entry.*rule->model)
                Note(node.line, QStringLiteral("a second %1 in one entry; the last one is used").arg(node.name));
            (m_entry.*rule->model).reset();
            ReadKnownSubModel(node, *rule, model);
            for (const ProfileNode &child : node.models)
                ReadSubModel(child, model); // the points are children of the vignetting model
        }
        if (m_isPiecewise)
            m_entry.vignette.reset();
    }

    void ReadKnownSubModel(const ProfileNode &node, const ModelRule &rule, ProfileModel model)
    {
        if (!ReadModelNumbers(node, &model) || !ReadCoefficients(node, rule.coefficients, &model))
            return;
        const bool isScaled = Find(node, "ScaleFactor") != nullptr; // lateral color may consist of only a scale
        if (!model.coefficients.isEmpty() || isScaled || model.tangential1 != 0.0 || model.tangential2 != 0.0)
            Keep(node, model, rule.model);
        else if (node.models.empty())
            Note(node.line, QStringLiteral("%1 has no coefficients").arg(node.name), true);
    }

    void Keep(const ProfileNode &node, const ProfileModel &model, std::optional<ProfileModel> ProfileEntry::*to)
    {
        if (model.focalLengthX > 0.0 || m_entry.focalMm > 0.0)
            m_entry.*to = model;
        else
            Note(node.line, QStringLiteral("neither FocalLengthX nor FocalLength: %1 can't be used").arg(node.name),
                 true);
    }

    double FocalLengthFromFrame() const
    {
        const double longSideMm = LongSideMm(m_entry.sensorFormatFactor, m_entry.width, m_entry.height);
        return longSideMm > 0.0 ? m_entry.focalMm / longSideMm : 0.0;
    }

    /// Reads one of a model's numbers. @return false, with a note, if it isn't a number within the bounds.
    bool ReadBounded(const ProfileNode &node, const ProfileField &field, double least, double most, double *to)
    {
        const std::optional<double> value = ParseRational(field.value);
        if (value && *value >= least && *value <= most) {
            *to = *value;
            return true;
        }
        Note(field.line,
             QStringLiteral("%1 is \"%2\", not a valid number: %3 can't be used")
                 .arg(field.name, field.value.left(80), node.name),
             true);
        return false;
    }

    bool ReadModelNumbers(const ProfileNode &node, ProfileModel *model)
    {
        const ProfileField *focal = Find(node, "FocalLengthX");
        if (focal && ParseRational(focal->value) == 0.0)
            Note(focal->line, QStringLiteral("FocalLengthX is 0; it is ignored"));
        else if (focal && !ReadBounded(node, *focal, kMinFocal, kMaxFocal, &model->focalLengthX))
            return false;
        return std::all_of(std::begin(kModelNumberRules), std::end(kModelNumberRules),
                           [&](const ModelNumberRule &rule) {
                               const ProfileField *field = Find(node, rule.name);
                               return !field || ReadBounded(node, *field, rule.least, rule.most, &(model->*rule.value));
                           });
    }

    bool ReadCoefficients(const ProfileNode &node, const char *name, ProfileModel *model)
    {
        const QString prefix = QString::fromLatin1(name);
        for (int number = 1; number <= 3; ++number) {
            const ProfileField *field = Find(node, prefix + QString::number(number));
            if (!field)
                continue;
            model->coefficients.resize(number); // missing ones with lower numbers are 0
            if (!ReadBounded(node, *field, -kMaxCoefficient, kMaxCoefficient, &model->coefficients.last()))
                return false;
        }
        const auto unknown = std::find_if(node.fields.begin(), node.fields.end(), [&](const ProfileField &field) {
            return field.name.startsWith(prefix) && field.name.midRef(prefix.size()).toInt() > 3;
        });
        if (unknown == node.fields.end())
            return true;
        Note(unknown->line, QStringLiteral("%1 is unknown: %2 can't be used").arg(unknown->name, node.name), true);
        return false;
    }

    const ProfileNode &m_node;
    LensProfile *m_profile;
    const int m_index;
    ProfileEntry m_entry;
    bool m_isPiecewise = false;
};

bool IsUsable(const ProfileEntry &entry)
{
    return entry.geometry || entry.green || entry.redGreen || entry.blueGreen || entry.vignette;
}

LensProfile Refused(LensProfile profile, const QString &why, QString *error)
{
    profile.entries.clear();
    if (error)
        *error = why;
    return profile;
}

} // namespace

LensProfile ParseLensProfile(const QByteArray &content, const QString &path, QString *error)
{
    LensProfile profile;
    profile.path = path;
    const QString why =
        ReadProfileXml(content, [&profile](const ProfileNode &node) { EntryReader(node, &profile).Read(); });
    if (!why.isEmpty())
        return Refused(profile, QStringLiteral("not a complete XML document: %1").arg(why), error);
    if (profile.entries.isEmpty())
        return Refused(profile, QStringLiteral("no entry (rdf:li in photoshop:CameraProfiles) in the file"), error);
    if (std::none_of(profile.entries.cbegin(), profile.entries.cend(), IsUsable)) {
        const auto note = std::find_if(profile.notes.cbegin(), profile.notes.cend(),
                                       [](const ProfileNote &one) { return one.unusable; });
        const QString first = note == profile.notes.cend()
            ? QStringLiteral("they have no models")
            : QStringLiteral("line %1: %2").arg(note->line).arg(note->text);
        return Refused(profile,
                       QStringLiteral("none of its %1 entries can be used: %2").arg(profile.entries.size()).arg(first),
                       error);
    }
    CheckProfile(&profile);
    return profile;
}

LensProfile ReadLensProfile(const QString &path, QString *error)
{
    LensProfile profile;
    profile.path = path;
    const QFileInfo info(path);
    if (info.exists() && !info.isFile() && !info.isDir()) // a pipe without a writer would block forever
        return Refused(profile, QStringLiteral("not a regular file"), error);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Refused(profile, file.errorString(), error);
    const QByteArray content = ReadXmlBytes(&file);
    if (file.error() != QFileDevice::NoError)
        return Refused(profile, file.errorString(), error);
    if (content.size() > kMaxXmlBytes)
        return Refused(profile, QStringLiteral("the file is larger than %1 MiB").arg(kMaxXmlBytes >> 20), error);
    return ParseLensProfile(content, path, error);
}
