#include "ProfileJson.h"

#include "LensProfile.h"

#include <QJsonArray>

#include <cmath>

namespace {

void InsertText(const char *key, const QString &text, QJsonObject *to)
{
    if (!text.isEmpty())
        to->insert(QLatin1String(key), text);
}

void InsertPositive(const char *key, double value, QJsonObject *to)
{
    if (std::isinf(value)) // JSON has no infinity
        to->insert(QLatin1String(key), QStringLiteral("infinity"));
    else if (value > 0.0)
        to->insert(QLatin1String(key), value);
}

QJsonObject ModelJson(const ProfileModel &model)
{
    QJsonArray coefficients;
    for (double coefficient : model.coefficients)
        coefficients.append(coefficient);
    QJsonObject json{{QStringLiteral("center"), QJsonArray{model.centerX, model.centerY}},
                     {QStringLiteral("scaleFactor"), model.scaleFactor},
                     {QStringLiteral("coefficients"), coefficients},
                     {QStringLiteral("tangential"), QJsonArray{model.tangential1, model.tangential2}}};
    InsertPositive("focalLengthX", model.focalLengthX, &json);
    return json;
}

QJsonObject ModelsJson(const ProfileEntry &entry)
{
    const struct {
        const char *key;
        const std::optional<ProfileModel> &model;
    } models[] = {{"distortion", entry.geometry},
                  {"green", entry.green},
                  {"red", entry.redGreen},
                  {"blue", entry.blueGreen},
                  {"light", entry.vignette}};
    QJsonObject json;
    for (const auto &one : models)
        if (one.model)
            json.insert(QLatin1String(one.key), ModelJson(*one.model));
    return json;
}

QJsonObject EntryJson(const ProfileEntry &entry)
{
    const bool isFisheye = entry.kind == ProfileEntry::Kind::Fisheye;
    QJsonObject json{
        {QStringLiteral("line"), entry.line},
        {QStringLiteral("projection"), isFisheye ? QStringLiteral("fisheye") : QStringLiteral("perspective")},
        {QStringLiteral("raw"), entry.raw},
        {QStringLiteral("models"), ModelsJson(entry)}};
    InsertPositive("focalLengthMm", entry.focalMm, &json);
    InsertPositive("distanceM", entry.distanceM, &json);
    if (entry.hasAperture)
        json.insert(QStringLiteral("fNumber"), std::exp2(entry.apertureApex / 2.0));
    InsertPositive("width", entry.width, &json);
    InsertPositive("height", entry.height, &json);
    InsertPositive("sensorFormatFactor", entry.sensorFormatFactor, &json);
    InsertText("profileName", entry.profileName, &json);
    InsertText("make", entry.make, &json);
    InsertText("model", entry.model, &json);
    InsertText("camera", entry.cameraName, &json);
    InsertText("lens", entry.lensName.isEmpty() ? entry.lens : entry.lensName, &json);
    InsertText("lensId", entry.lensId, &json);
    return json;
}

QJsonObject NoteJson(const ProfileNote &note)
{
    QJsonObject json{{QStringLiteral("line"), note.line},
                     {QStringLiteral("text"), note.text},
                     {QStringLiteral("unusable"), note.unusable}};
    if (note.entry >= 0)
        json.insert(QStringLiteral("entry"), note.entry + 1);
    return json;
}

} // namespace

QJsonObject ProfileJson(const LensProfile &profile)
{
    QJsonArray entries, notes;
    for (const ProfileEntry &entry : profile.entries)
        entries.append(EntryJson(entry));
    for (const ProfileNote &note : profile.notes)
        notes.append(NoteJson(note));
    return {{QStringLiteral("entries"), entries}, {QStringLiteral("notes"), notes}};
}
