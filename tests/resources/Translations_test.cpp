// Compares translations with the sources: every language is complete and has all placeholders.
#include <QDir>
#include <QDomDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QList<QDomElement> Descendants(const QDomElement &element, const char *tag)
{
    QList<QDomElement> found;
    const QDomNodeList nodes = element.elementsByTagName(QLatin1String(tag));
    for (int i = 0; i < nodes.size(); ++i)
        found << nodes.at(i).toElement();
    return found;
}

/// Returns the messages of a translation file, by context and source text.
QMap<QString, QDomElement> Messages(const QString &path)
{
    QFile file(path);
    QDomDocument document;
    QMap<QString, QDomElement> messages;
    if (!file.open(QIODevice::ReadOnly) || !document.setContent(&file))
        return messages;
    for (const QDomElement &context : Descendants(document.documentElement(), "context")) {
        const QString name = context.firstChildElement(QStringLiteral("name")).text();
        for (const QDomElement &message : Descendants(context, "message"))
            messages[name + QLatin1String(": ") + message.firstChildElement(QStringLiteral("source")).text()] = message;
    }
    return messages;
}

/// Returns a text's placeholders and accelerator, which translations must keep.
QStringList Markers(const QString &text)
{
    QStringList markers;
    auto match = QRegularExpression(QStringLiteral("%L?([1-9]|n)|&(?=\\S)")).globalMatch(text);
    while (match.hasNext())
        markers << match.next().captured();
    markers.sort();
    return markers;
}

} // namespace

class tst_Translations : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void complete_data();
    void complete();

private:
    QTemporaryDir m_fromSources;
};

void tst_Translations::initTestCase()
{
    QProcess update;
    update.setProcessChannelMode(QProcess::ForwardedChannels);
    update.start(QStringLiteral(VITRELUX_TRANSLATIONS "/update-translations"), {m_fromSources.path()});
    QVERIFY(update.waitForFinished() && update.exitCode() == 0);
}

void tst_Translations::complete_data()
{
    QTest::addColumn<QString>("name");
    const QStringList names = QDir(m_fromSources.path()).entryList({QStringLiteral("*.ts")});
    QCOMPARE(names.size(), 20); // ten languages each for plug-in and program
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << name;
}

void tst_Translations::complete()
{
    QFETCH(QString, name);
    const QMap<QString, QDomElement> wanted = Messages(m_fromSources.filePath(name));
    const QMap<QString, QDomElement> present = Messages(QStringLiteral(VITRELUX_TRANSLATIONS "/") + name);
    QVERIFY(!wanted.isEmpty());
    QCOMPARE(present.keys(), wanted.keys()); // if not, run resources/translations/update-translations and translate
    for (auto message = present.begin(); message != present.end(); ++message) {
        const QDomElement translation = message->firstChildElement(QStringLiteral("translation"));
        QVERIFY2(!translation.hasAttribute(QStringLiteral("type")), qPrintable(message.key())); // unfinished
        QList<QDomElement> forms = Descendants(translation, "numerusform");
        if (forms.isEmpty())
            forms << translation;
        for (const QDomElement &form : qAsConst(forms)) {
            QVERIFY2(!form.text().trimmed().isEmpty(), qPrintable(message.key()));
            QVERIFY2(Markers(form.text()) == Markers(message->firstChildElement(QStringLiteral("source")).text()),
                     qPrintable(message.key() + QLatin1String(" -> ") + form.text()));
        }
    }
}

QTEST_GUILESS_MAIN(tst_Translations)
#include "Translations_test.moc"
