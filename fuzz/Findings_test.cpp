// Replays the files that once crashed or hung a fuzz target, through the same functions.
#include "Target.h"

#include <QDirIterator>
#include <QtTest>

class tst_Findings : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void replay_data();
    void replay();
};

void tst_Findings::replay_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("path");
    QDirIterator files(QStringLiteral(VITRELUX_FINDINGS), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next(), target = files.fileInfo().dir().dirName();
        QTest::newRow(qPrintable(target + QLatin1Char('/') + files.fileName())) << target << path;
    }
}

void tst_Findings::replay()
{
    QFETCH(QString, target);
    QFETCH(QString, path);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray input = file.readAll();
    const auto found = std::find_if(FuzzTargets().begin(), FuzzTargets().end(),
                                    [&](const FuzzTarget &one) { return target == QLatin1String(one.name); });
    QVERIFY2(found != FuzzTargets().end(), "no target has the folder's name");
    found->run(reinterpret_cast<const std::uint8_t *>(input.constData()), static_cast<std::size_t>(input.size()));
}

QTEST_GUILESS_MAIN(tst_Findings)
#include "Findings_test.moc"
