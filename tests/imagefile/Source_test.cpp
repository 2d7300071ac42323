// A disk that fails in the midst of a file, seen from inside the layer.
#include "byte_reader.h"

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
    void byteReader();
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

void tst_Source::byteReader()
{
    QByteArray data;
    for (int i = 0; i < 200000; ++i) // three pieces and some
        data.append(char(i * 7 + i / 256));
    const Source source(data.constData(), std::size_t(data.size()));
    ByteReader reader(source, 65530);
    for (int i = 65530; i < 65545; ++i)
        QCOMPARE(int(reader.Byte()), int(uchar(data[i])));
    QVERIFY(reader.Skip(65530));
    QCOMPARE(reader.Position(), std::uint64_t(131075));
    QCOMPARE(reader.Number(2), std::uint64_t(uchar(data[131075]) << 8 | uchar(data[131076])));
    QByteArray rest(200000 - 131077, '\0');
    QVERIFY(reader.Read(rest.data(), std::size_t(rest.size())));
    QCOMPARE(rest, data.mid(131077));
    QVERIFY(!reader.Failed() && reader.Left() == 0);
    QCOMPARE(reader.Number(4), std::uint64_t(0));
    QVERIFY(reader.Failed() && !reader.Skip(0) && !reader.Read(rest.data(), 1));
    QVERIFY(ByteReader(source, 200001).Failed() && !ByteReader(source, 200000).Failed());
}

QTEST_GUILESS_MAIN(tst_Source)
#include "Source_test.moc"
