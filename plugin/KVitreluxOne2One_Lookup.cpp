// Search for an image's profile: the maker determines the folder, the camera the candidates in it, and the lens the
// file.
#include "KVitreluxOne2One.h"

#include "ImageDef.h"

#include <QDir>
#include <QRegExp>

namespace {

bool Contains(const QString &text, const QString &part)
{
    return text.contains(part, Qt::CaseInsensitive);
}

/// Returns the first word of a maker's name: "NIKON" of "NIKON CORPORATION".
QString BrandOf(const QString &makerName)
{
    return makerName.split(QRegExp(QStringLiteral("\\W+")), Qt::SkipEmptyParts).value(0);
}

/// Returns the folder of a brand; the current folder if there is none.
QDir FolderOf(const QString &brand, const QDir &base)
{
    const QStringList entries = base.entryList();
    for (const QString &entry : entries) {
        if (Contains(brand, entry))
            return QDir(base.path() + QLatin1Char('\\') + entry); // a backslash everywhere: installations rely on it
    }
    return QDir(QString());
}

QStringList FilesForModel(const QString &modelName, const QDir &folder)
{
    QStringList files;
    const QStringList all = folder.entryList(QDir::Files);
    for (const QString &file : all) {
        if (Contains(file, modelName))
            files.append(file);
    }
    return files;
}

/// Returns the text before the last "mm" in a lens name, for example "10-20"; empty if there is none.
QString FocalOf(const QStringList &words)
{
    QString focal;
    for (const QString &word : words) {
        if (Contains(word, QStringLiteral("mm")))
            focal = word.split(QStringLiteral("mm"), Qt::SkipEmptyParts).value(0);
    }
    return focal;
}

/// Returns how many of the words a file name contains, not counting the first word, which is the maker.
int Score(const QString &file, const QStringList &words)
{
    int score = 0;
    for (int i = 1; i < words.size(); ++i)
        score += Contains(file, words[i]);
    return score;
}

/// Returns the first file whose name contains the most words of the lens name; empty if none contains any.
QString BestMatch(const QStringList &files, const QString &lens)
{
    const QStringList words = lens.split(QRegExp(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
    const QString maker = words.value(0);
    const QString focal = FocalOf(words);
    QString best;
    int bestScore = 0;
    for (const QString &file : files) {
        if (!Contains(file, focal) || !Contains(file, maker))
            continue;
        const int score = Score(file, words);
        if (score > bestScore) {
            best = file;
            bestScore = score;
        }
    }
    return best;
}

QStringList Lookup(const ShootingInformation &shooting, LensIDProperties &database, const QString &brand,
                   const QDir &folder, QString &message)
{
    const QStringList files = FilesForModel(shooting.modelName, folder);
    if (files.isEmpty()) {
        message = QStringLiteral("No matching LensID");
        return {};
    }
    const QStringList lenses = database.findLensList(brand, shooting.lensId);
    if (lenses.isEmpty()) {
        message = QStringLiteral("This camera-lens couple does not seem to be in database");
        return {};
    }
    if (lenses.size() > 1)
        return lenses; // lens names instead of paths: opening the first one fails
    const QString best = BestMatch(files, lenses.first());
    if (best.isEmpty())
        return {};
    message = QStringLiteral("Fichier correspondant : ") + best;
    return {best};
}

} // namespace

QStringList KVitreluxOne2One::GetLCPfilename(KIImageDef *image, QString &message)
{
    // A description of another class, made by the host, has no camera data.
    const auto *described = dynamic_cast<const ImageDef *>(image);
    if (!described)
        return {};
    ImageDef *picture = nullptr;
    ImageDef::IsAPicture(image->FileName(), picture, /*withThumbnail=*/true);
    if (!image->HasExif())
        return {};
    const ShootingInformation shooting = described->m_shooting;
    ImageDef::g_Lenses.Initialize(); // this module's table: the picture may be from the host's module
    LensIDProperties lenses(ImageDef::g_Lenses);

    const QString brand = BrandOf(shooting.makerName);
    if (!Contains(brand, QStringLiteral("Nikon")) && !Contains(brand, QStringLiteral("Canon"))) {
        message = QStringLiteral("Sorry: ") + brand + QStringLiteral("cameras are not yet in LensId.txt");
        return {};
    }
    const QDir folder = FolderOf(brand, QDir(m_lensPath));
    QStringList result = Lookup(shooting, lenses, brand, folder, message);
    for (QString &entry : result)
        entry = folder.absoluteFilePath(entry);
    return result;
}
