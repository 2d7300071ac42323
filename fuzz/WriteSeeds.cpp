// Writes seeds for fuzz targets: fuzz_seeds DIR creates DIR/TARGET/*.
#include "Files.h"
#include "KImage.h"
#include "NoteFile.h"
#include "ProfileIndex.h"
#include "ProfileText.h"
#include "SpelledProfile.h"
#include "Target.h"
#include "command/CommandTable.h"

#include <lcms2.h>

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

namespace {

class Seeds {
public:
    Seeds(const QString &root, const char *target) : m_folder(root + QLatin1Char('/') + QLatin1String(target))
    {
        QDir().mkpath(m_folder);
    }
    void Add(const QByteArray &content) { WriteFile(m_folder + QStringLiteral("/made%1").arg(m_count++), content); }

private:
    QString m_folder;
    int m_count = 0;
};

void WriteProfiles(const QString &root)
{
    Seeds plain(root, "lens_profile"), fitted(root, "profile_fit");
    plain.Add(profiletext::Profile(profiletext::FullEntry(0.0) + profiletext::FullEntry(0.1)));
    const SpelledNode green = {"ChromaticGreenModel", {{"ScaleFactor", "1.001"}, {"RadialDistortParam1", "-0.1"}}, {}};
    const SpelledNode light = {"VignetteModel", {{"FocalLengthX", "1.1"}, {"VignetteModelParam1", "-0.7"}}, {}};
    const SpelledNode lens = {
        "PerspectiveModel", {{"FocalLengthX", "1.1"}, {"RadialDistortParam1", "-0.1"}}, {green, light}};
    const QList<SpelledValue> setting = {
        {"Make", "Maker"},     {"Model", "BODY"},      {"ImageWidth", "6000"}, {"ImageLength", "4000"},
        {"FocalLength", "24"}, {"FocusDistance", "3"}, {"ApertureValue", "4"}, {"SensorFormatFactor", "1.5"}};
    for (int spelling = 0; spelling < kSpellings; ++spelling)
        fitted.Add(SpelledProfile({{"", setting, {lens}}}, static_cast<enum Spelling>(spelling)));
    Seeds values(root, "profile_values"), warp(root, "lens_warp"), copies(root, "crop_copy"), sizes(root, "resize");
    for (Seeds *seeds : {&values, &warp, &copies, &sizes})
        for (const int byte : {0, 3, 5, 8})
            seeds->Add(QByteArray(400, static_cast<char>(byte)));
}

void WriteIndex(const QString &root)
{
    const QTemporaryDir folder;
    WriteFile(folder.filePath(QStringLiteral("a.lcp")), profiletext::Profile(profiletext::FullEntry(0.0)));
    WriteFile(folder.filePath(QStringLiteral("b.lcp")), "<x/>");
    const QString cache = folder.filePath(QStringLiteral("index"));
    ProfileIndex(cache).Scan({folder.path()});
    const QByteArray whole = ReadFile(cache);
    constexpr int kBodyAt =
        4 + 4 + 4 + 16 + 4; // magic number, version, size and bytes of the checksum, size of the body
    Seeds seeds(root, "profile_index");
    seeds.Add('\0' + whole);
    seeds.Add('\1' + whole.mid(kBodyAt));
}

void WriteMetadata(const QString &root)
{
    Seeds metadata(root, "metadata"), facts(root, "picture_facts"), lists(root, "exif_lists");
    for (const NoteKind &kind : NoteKinds()) {
        quint32 place = 0;
        const QByteArray exif = ExifWithNote(kind, &place);
        metadata.Add(exif);
        facts.Add(exif);
    }
    const QByteArray xmp =
        "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">"
        "<rdf:Description xmlns:aux=\"http://ns.adobe.com/exif/1.0/aux/\" "
        "xmlns:crs=\"http://ns.adobe.com/camera-raw-settings/1.0/\" aux:Lens=\"24.0-70.0 mm f/2.8\" "
        "aux:LensInfo=\"24/1 70/1 28/10 28/10\" aux:ApproximateFocusDistance=\"3/1\" crs:AlreadyApplied=\"True\" "
        "crs:LensProfileEnable=\"1\" crs:HasCrop=\"True\" crs:CropTop=\"0.1\" crs:CropLeft=\"0.1\" "
        "crs:CropBottom=\"0.9\" crs:CropRight=\"0.9\" crs:CropAngle=\"0\"/></rdf:RDF></x:xmpmeta>";
    facts.Add(QByteArray("\0\0", 2) + xmp + 'x');
    lists.Add("\1\7\2FOV: 50 x 30 ~ 60\n\2\21\0"
              "45\xC2\xB0 30' 7.5\"\n\3\3\0"
              "10 22 235\n\3\x19\2"
              + QByteArray(128, 9));
}

void WriteTexts(const QString &root)
{
    Seeds(root, "settings")
        .Add("image/exifMode\n<s><image><exifMode>2</exifMode><rawGamma>2.2</rawGamma>"
             "<rawAutoBright>true</rawAutoBright></image></s>");
    Seeds analytics(root, "analytics");
    const QByteArray event = "{\"timestamp\":1,\"name\":\"n\",\"category\":\"c\",\"type\":\"action\",\"value\":[1,{}]}";
    analytics.Add('\0' + event);
    const QJsonArray events = {QJsonDocument::fromJson(event).object()};
    const QJsonObject store = {{QStringLiteral("events"), events},
                               {QStringLiteral("userId"), QStringLiteral("u")},
                               {QStringLiteral("n"), 1.5}};
    analytics.Add('\1' + QJsonDocument(store).toBinaryData());
    Seeds tables(root, "data_tables");
    tables.Add("NIKON CORPORATION\nNIKON D70\nNIKON;D70;1.5\n# comment\nCanon;10 22 235;Lens;1 # fisheye\n");
    Seeds names(root, "output_names");
    names.Add("{name}_{folder}.{ext}.tif\na/b.jpg\nc/d.e.png\n");
    Seeds lines(root, "command_line");
    for (const VerbRow &verb : AllVerbs()) {
        const QByteArray name = verb.name;
        for (const char *example : verb.examples)
            if (example)
                lines.Add(QByteArray(example).replace(' ', '\n').replace("vitrelux\n", ""));
        for (const OptionRow &row : OptionsOf(verb.verb))
            lines.Add(name + "\n--" + row.names[0] + (row.value ? "\n1\n" : "\n") + "a.jpg");
    }
}

void WriteCurves(const QString &root)
{
    Seeds seeds(root, "tone_curves");
    cmsToneCurve *gamma = cmsBuildGamma(nullptr, 2.2);
    const cmsUInt16Number points[] = {0, 9000, 30000, 65535};
    cmsToneCurve *table = cmsBuildTabulatedToneCurve16(nullptr, 4, points);
    const cmsHPROFILE profiles[] = {cmsCreate_sRGBProfile(), cmsCreateGrayProfile(cmsD50_xyY(), gamma),
                                    cmsCreateGrayProfile(cmsD50_xyY(), table), cmsCreateLab4Profile(nullptr)};
    for (const cmsHPROFILE profile : profiles) {
        cmsUInt32Number size = 0;
        cmsSaveProfileToMem(profile, nullptr, &size);
        QByteArray bytes(static_cast<int>(size), '\0');
        cmsSaveProfileToMem(profile, bytes.data(), &size);
        seeds.Add(bytes);
        cmsCloseProfile(profile);
    }
    cmsFreeToneCurve(gamma);
    cmsFreeToneCurve(table);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2)
        qFatal("usage: fuzz_seeds DIR");
    StartKernel();
    const QString root = QString::fromLocal8Bit(argv[1]);
    WriteProfiles(root);
    WriteIndex(root);
    WriteMetadata(root);
    WriteTexts(root);
    WriteCurves(root);
    return 0;
}
