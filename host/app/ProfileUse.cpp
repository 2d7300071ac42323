#include "ProfileUse.h"

#include "FileNames.h"
#include "ProfileReport.h"

#include <algorithm>

namespace {

/// A correction, and the models that it needs, as indices into ProfileReport::models.
///
/// The correction of chromatic aberration uses red and blue relative to green, so it needs all three models; if
/// distortion is corrected too, green's model replaces the distortion model.
struct CorrectionRow {
    const char *name;
    bool Corrections::*member;
    const char *lack;
    int firstModel;
    int modelCount;
};

constexpr CorrectionRow kCorrections[] = {
    {"distortion", &Corrections::distortion, "no distortion coefficients", 0, 1},
    {"chromatic aberration", &Corrections::chromatic, "the model of green, red or blue is missing", 1, 3},
    {"vignetting", &Corrections::vignetting, "no vignette model", 4, 1},
};
constexpr int kModelCount = 5;

/// Returns whether a distortion model corrects anything. Its element contains the other models, so every profile has
/// one, but possibly without coefficients.
bool Straightens(const LensParam &model)
{
    return !model.coefficients.isEmpty() || model.tangential1 != 0.0 || model.tangential2 != 0.0;
}

void JudgeCorrection(const CorrectionRow &row, const ProfileReport &report, ProfileUse *use)
{
    const auto first = report.models.cbegin() + row.firstModel;
    const auto last = first + row.modelCount;
    const QString name = QLatin1String(row.name);
    const bool there = std::all_of(first, last, [](const ProfileReportModel &model) { return model.values.found; });
    if (!there || (row.member == &Corrections::distortion && !Straightens(first->values))) {
        use->lacks << QStringLiteral("%1 (%2)").arg(name, QLatin1String(row.lack));
        return;
    }
    const auto flawed =
        std::find_if(first, last, [](const ProfileReportModel &model) { return !model.flaw.isEmpty(); });
    if (flawed == last) {
        use->holds.*row.member = true;
        return;
    }
    use->flaws << QStringLiteral("%1 (%2 model: %3)").arg(name, flawed->name, flawed->flaw);
    use->lacks << use->flaws.last();
}

QString Sides(double width, double height)
{
    return QStringLiteral("%1x%2").arg(QString::number(width), QString::number(height));
}

} // namespace

ProfileUse JudgeProfile(const QString &file)
{
    return JudgeProfile(file, ReadProfileReport(AbsolutePath(file)));
}

ProfileUse JudgeProfile(const QString &file, const ProfileReport &report)
{
    ProfileUse use;
    use.path = AbsolutePath(file);
    use.problem = report.problem;
    use.width = report.imageWidth;
    use.height = report.imageLength;
    if (!report.usable || report.models.size() != kModelCount)
        return use;
    for (const CorrectionRow &row : kCorrections)
        JudgeCorrection(row, report, &use);
    return use;
}

Corrections ChooseCorrections(const ProfileUse &profile, const Corrections &asked, QString *why)
{
    if (!asked.Any()) {
        if (!profile.holds.Any())
            *why = QStringLiteral("has no usable correction: ") + profile.lacks.join(QStringLiteral(", "));
        return profile.holds;
    }
    QStringList lacking;
    for (const CorrectionRow &row : kCorrections) {
        if (asked.*row.member && !(profile.holds.*row.member))
            lacking += profile.lacks.filter(QLatin1String(row.name));
    }
    if (lacking.isEmpty())
        return asked;
    *why = QStringLiteral("cannot make the requested corrections: ") + lacking.join(QStringLiteral(", "));
    return Corrections();
}

QString SizeMismatch(const ProfileUse &profile, int width, int height)
{
    const bool isPortrait = width <= height;
    if ((isPortrait ? height : width) == profile.width && (isPortrait ? width : height) == profile.height)
        return QString();
    const QString expected = isPortrait ? Sides(profile.height, profile.width) : Sides(profile.width, profile.height);
    return QStringLiteral(
               "has %1 pixels, but the profile was made for %2; corrected as the top left part of such a picture")
        .arg(Sides(width, height), expected);
}

QString NamesOf(const Corrections &corrections)
{
    QStringList names;
    for (const CorrectionRow &row : kCorrections) {
        if (corrections.*row.member)
            names << QLatin1String(row.name);
    }
    return names.join(QStringLiteral(", "));
}
