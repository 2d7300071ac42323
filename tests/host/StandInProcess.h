// Process object that takes the place of the plug-in's in tests of the wizard.
#pragma once

#include "KException.h"
#include "TestFiles.h"
#include "app/HostApplication.h"
#include "app/PictureRun.h"

#include <QFileInfo>
#include <QIcon>
#include <QSemaphore>
#include <QThread>
#include <QWizardPage>

#include <atomic>

/// Process that records its calls and reports like a fitted one. Picture names choose the behavior: "bad" fails, "slow"
/// waits for `go` and fails when it is interrupted, "none" finds no profile, "plain" reports nothing, "off" has all
/// corrections switched off, "open" has no profile yet.
class StandInProcess : public KIPluginOne2One {
public:
    QString Name() const override { return "Stand-in"_s; }
    QString Author() const override { return QString(); }
    QString Company() const override { return QString(); }
    QString Comment() const override { return QString(); }
    QString Version() const override { return QString(); }
    QIcon Icon() const override { return QIcon(); }
    QString UID() const override { return QString(); }
    QIcon BeforeAfter() const override { return QIcon(); }
    QWizardPage *WizardPage() override { return page.get(); }
    void OnValidatePage() override { calls << "validate"_s; }
    void *AllocParameters(QDomElement element) override
    {
        ++records;
        return new Record{ReadParameters(element), element.attribute("Framing"_s), element.attribute("Format"_s), {}};
    }
    void FreeParameters(void *record) override
    {
        --records;
        delete static_cast<Record *>(record);
    }
    QDomElement GetXmlParameters(void *record) override
    {
        return DescribeParameters(Name(), static_cast<Record *>(record)->parameters,
                                  static_cast<Record *>(record)->results);
    }
    void SetFiles(QStringList files) override
    {
        QStringList names;
        for (const QString &file : qAsConst(files))
            names << QFileInfo(file).fileName();
        calls << "files "_s + names.join(QLatin1Char(' '));
        framing = static_cast<HostApplication *>(qApp)->GetPluginSetting(UID(), "Framing"_s, QString()).toString();
    }
    QDomElement GetFileXmlParams(QString file) override
    {
        const bool off = file.contains("off"_s);
        const bool open = file.contains("open"_s) || file.contains("none"_s);
        return DescribeParameters(Name(), {{!off, false, false}, open ? QString() : profile}, {{"Framing"_s, framing}});
    }
    void Process(QString fileName, void *record, QString &output) override
    {
        const QFileInfo info(fileName);
        if (info.fileName().startsWith("slow"_s)) {
            began.release();
            while (!go.tryAcquire(1, 1)) {
                if (QThread::currentThread()->isInterruptionRequested())
                    throw KException("interrupted"_s, KPlace());
            }
        }
        if (info.fileName().startsWith("bad"_s))
            throw KException(fileName + ": pixels\nare lost"_s, KPlace());
        const bool finds = !info.fileName().startsWith("none"_s);
        auto *done = static_cast<Record *>(record);
        if (!info.fileName().startsWith("plain"_s))
            done->results = {{"Profile"_s, finds ? "/lenses/found.lcp"_s : QString()},
                             {"Entries"_s, "50 mm 100 %"_s},
                             {"Done"_s, finds ? "distortion"_s : QString()},
                             {"Why"_s, finds ? "vignetting: no model"_s : "unknown lens"_s}};
        if (!finds)
            throw KException("unknown lens"_s, KPlace());
        output = info.path() + QLatin1Char('/') + info.completeBaseName() + "_corrected.tiff"_s;
        WriteFile(output, (done->parameters.profile + done->framing + done->format).toUtf8());
    }

    struct Record {
        PictureParameters parameters;
        QString framing, format;
        QVector<QPair<QString, QString>> results;
    };
    std::unique_ptr<QWizardPage> page;
    QString profile, framing;
    QStringList calls; // on the GUI thread
    std::atomic<int> records{0};
    static inline QSemaphore began{0}, go{0}; // shared by all processes
};
