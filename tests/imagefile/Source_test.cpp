// A disk that fails in the midst of a file, seen from inside the layer.
#include "source.h"

#include <QDir>
#include <QTemporaryFile>
#include <QtTest>

#include <fcntl.h>
#include <unistd.h>

using namespace imagefile;

namespace {

/// Puts a folder in the place of an open file: reading it fails with an error, as a disk does.
bool Break(const QString &path)
{
    for (int fd = 3; fd < 100; ++fd) {
        if (QFile::symLinkTarget(QStringLiteral("/proc/self/fd/%1").arg(fd)) != path)
            continue;
        const int folder = ::open("/", O_RDONLY);
        return ::dup2(folder, fd) == fd && ::close(folder) == 0;
    }
    return false;
}

} // namespace

class tst_Source : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void brokenDisk();
};

void tst_Source::brokenDisk()
{
    QTemporaryFile file;
    QVERIFY(file.open() && file.write(QByteArray(1000, 'x')) == 1000 && file.flush());
    const QString path = QFileInfo(file.fileName()).canonicalFilePath();
    file.close();
    Source source;
    QVERIFY(bool(source.Open(path.toStdString())));
    char bytes[100];
    QCOMPARE(source.ReadAt(950, bytes, sizeof bytes), std::size_t(50));
    QVERIFY(bool(source.Check())); // the end is no failure
    QVERIFY(Break(path));
    QCOMPARE(source.ReadAt(0, bytes, sizeof bytes), std::size_t(0));
    QCOMPARE(int(source.Check().Error()), int(GFL_ERROR_FILE_READ));
    QVERIFY(QByteArray::fromStdString(source.Check().Why()).contains(path.toUtf8()));
}

QTEST_GUILESS_MAIN(tst_Source)
#include "Source_test.moc"
