// Plug-in that takes the place of the real one, records the calls it gets, and can misbehave.
//
// VITRELUX_PROBE chooses its behavior, VITRELUX_PROBE_NOTES names the file that records the calls, and
// VITRELUX_PROBE_RIVAL the file that it writes to simulate another program.
#include "Files.h"
#include "KException.h"
#include "KIApplication.h"
#include "KIPluginLibrary.h"
#include "KIPluginOne2One.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <csignal>

#include <new>
#include <stdexcept>
#include <unistd.h>

namespace {

void Note(const QString &text)
{
    QFile file(qEnvironmentVariable("VITRELUX_PROBE_NOTES"));
    if (file.open(QIODevice::Append))
        file.write(text.toUtf8() + '\n');
}

void Misbehave(const QByteArray &manner, const QString &output)
{
    if (manner == "kernel exception")
        throw KException(QStringLiteral("\nfirst line\nsecond line about \"%1\"").arg(output), KPlace());
    if (manner == "out of memory")
        throw std::bad_alloc();
    if (manner == "standard exception")
        throw std::runtime_error("ran into something");
    if (manner == "other exception")
        throw 42;
    if (manner == "rival")
        WriteFile(qEnvironmentVariable("VITRELUX_PROBE_RIVAL"), "rival");
    if (manner == "interrupt") {
        kill(getpid(), SIGINT);
        sigset_t pending;
        do {
            usleep(10000);
            sigpending(&pending);
        } while (sigismember(&pending, SIGINT) == 1);
    }
    if (manner == "block") {
        for (;;)
            pause();
    }
}

QString OpenFile(int descriptor)
{
    return QFile::symLinkTarget(QStringLiteral("/proc/self/fd/%1").arg(descriptor));
}

/// Returns how many open descriptors refer to standard output's file or to the lock file of a work folder.
int CountOutputsAndLocks()
{
    int count = 0;
    for (int i = 0; i < 100; ++i)
        count += OpenFile(i) == OpenFile(STDOUT_FILENO) || OpenFile(i).contains(QLatin1String(".vitrelux-lock"));
    return count;
}

} // namespace

class ProbeProcess : public QObject, public KIPluginOne2One {
    Q_OBJECT
    Q_INTERFACES(KIPluginOne2One)
public:
    using QObject::QObject;
    QString Name() const override { return QStringLiteral("Probe process"); }
    QString Author() const override { return QString(); }
    QString Company() const override { return QString(); }
    QString Comment() const override { return QString(); }
    QString Version() const override { return QString(); }
    QIcon Icon() const override { return QIcon(); }
    QString UID() const override { return QString(); }
    QIcon BeforeAfter() const override { return QIcon(); }
    QWizardPage *WizardPage() override { return nullptr; }
    void *AllocParameters(QDomElement element) override
    {
        QStringList words(QStringLiteral("AllocParameters"));
        for (const char *name : {"Disto", "CA", "Falloff", "LCPfilename"})
            words << element.attribute(QString::fromLatin1(name), QStringLiteral("missing"));
        Note(words.join(QLatin1Char(' ')));
        return new int(7);
    }
    void FreeParameters(void *record) override
    {
        Note(QStringLiteral("FreeParameters %1").arg(*static_cast<int *>(record)));
        delete static_cast<int *>(record);
    }
    void SetFiles(QStringList) override { Note(QStringLiteral("SetFiles")); }
    QDomElement GetFileXmlParams(QString) override { return QDomElement(); }
    void Process(QString fileName, void *record, QString &outputFileName) override
    {
        const QFileInfo info(fileName);
        outputFileName =
            info.absolutePath() + QLatin1Char('/') + info.completeBaseName() + QLatin1String("_corrected.tiff");
        Note(QStringLiteral("Process %1 %2 %3 %4")
                 .arg(info.fileName(), info.canonicalFilePath())
                 .arg(*static_cast<int *>(record))
                 .arg(CountOutputsAndLocks()));
        WriteFile(outputFileName + QLatin1String(".part"), "half");
        WriteFile(outputFileName, "probe");
        Misbehave(qgetenv("VITRELUX_PROBE"), outputFileName);
    }
};

class ProbeLibrary : public QObject, public KIPluginLibrary {
    Q_OBJECT
    Q_INTERFACES(KIPluginLibrary)
    Q_PLUGIN_METADATA(IID "com.brelt.vitrelux")
public:
    ProbeLibrary()
    {
        if (qgetenv("VITRELUX_PROBE") == "descriptors")
            Note(OpenFile(STDIN_FILENO) + OpenFile(STDOUT_FILENO) + OpenFile(STDERR_FILENO));
        auto *host = static_cast<KIApplication *>(qApp->qt_metacast("KIApplication"));
        Note(host && host->ImageInstances() && !host->UIInstances() ? QStringLiteral("Library with kernels")
                                                                    : QStringLiteral("Library without kernels"));
    }
    ~ProbeLibrary() override { Note(QStringLiteral("~Library")); }
    QList<QPointer<QObject>> Plugins(KIPluginLibrary::MGX kind) override
    {
        Note(QStringLiteral("Plugins %1").arg(int(kind)));
        if (qgetenv("VITRELUX_PROBE") == "no process")
            return {new QObject(this)};
        return {new QObject(this), new ProbeProcess(this)}; // the host must try a cast on each
    }
};

#include "ProbePlugin.moc"
