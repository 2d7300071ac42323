#include "BinaryJson.h"

#include <QJsonArray>
#include <QtEndian>

#include <cstring>

namespace {

constexpr int kHeaderBytes = 8; // the tag "qbjs", and version 1
constexpr int kMaxDepth = 100;

/// Reader of Qt 5's format (qtbase, qbinaryjson_p.h): little-endian words, and offsets from the start of the container
/// that they are in. A container begins with its size in bytes, its kind and element count, and the offset of its
/// table. An array's table has its values, an object's table the offsets of its entries.
class BinaryJson {
public:
    explicit BinaryJson(const QByteArray &data) : m_data(data), m_bytesLeft(data.size()) { }

    QJsonObject Root()
    {
        if (!m_data.startsWith(QByteArray("qbjs\1\0\0\0", kHeaderBytes)))
            return {};
        const QJsonValue root = Container(kHeaderBytes, 0);
        return m_isDamaged ? QJsonObject() : root.toObject();
    }

private:
    enum Type { Null, Bool, Double, String, Array, Object };

    const char *Bytes(qint64 at, qint64 count)
    {
        if (at >= 0 && count <= m_data.size() - at)
            return m_data.constData() + at;
        m_isDamaged = true;
        return nullptr;
    }

    template <class T> T Number(qint64 at)
    {
        const char *bytes = Bytes(at, sizeof(T));
        return bytes ? qFromLittleEndian<T>(bytes) : T();
    }

    /// Counts the bytes that elements use. Valid elements share none; damaged ones may overlap or contain each other,
    /// and reading them could take forever.
    void Use(qint64 bytes)
    {
        m_bytesLeft -= bytes;
        if (m_bytesLeft < 0)
            m_isDamaged = true;
    }

    /// Returns the text at @p at. It begins with its length in characters: 16 bits for Latin-1, 32 bits for UTF-16.
    QString Text(qint64 at, bool isLatin1)
    {
        const qint64 length = isLatin1 ? Number<quint16>(at) : Number<quint32>(at);
        Use(isLatin1 ? length : 2 * length);
        if (m_isDamaged)
            return {};
        if (isLatin1) {
            const char *latin1 = Bytes(at + 2, length);
            return latin1 ? QString::fromLatin1(latin1, static_cast<int>(length)) : QString();
        }
        const char *utf16 = Bytes(at + 4, 2 * length);
        QString text(utf16 ? static_cast<int>(length) : 0, Qt::Uninitialized);
        if (utf16)
            qFromLittleEndian<quint16>(utf16, length, text.data());
        return text;
    }

    QJsonValue Value(qint64 container, quint32 word, int depth)
    {
        const bool isDirect = (word & 8) != 0; // a number stored in the word, or a text in Latin-1
        const qint64 at = container + (word >> 5);
        switch (word & 7) {
        case Null:
            return QJsonValue::Null;
        case Bool:
            return (word >> 5) != 0;
        case Double: {
            if (isDirect)
                return static_cast<qint32>(word) >> 5;
            const auto bits = Number<quint64>(at);
            double number = 0.0;
            std::memcpy(&number, &bits, sizeof number);
            return number;
        }
        case String:
            return Text(at, isDirect);
        case Array:
        case Object:
            return Container(at, depth + 1);
        }
        m_isDamaged = true;
        return {};
    }

    QJsonValue Container(qint64 at, int depth)
    {
        const auto form = Number<quint32>(at + 4);
        const bool isObject = (form & 1) != 0;
        const qint64 count = form >> 1, table = at + Number<quint32>(at + 8);
        Use(4 * count);
        if (depth > kMaxDepth)
            m_isDamaged = true;
        QJsonArray array;
        QJsonObject object;
        for (qint64 i = 0; i < count && !m_isDamaged; ++i) {
            const auto word = Number<quint32>(table + 4 * i);
            if (!isObject) {
                array.append(Value(at, word, depth));
                continue;
            }
            const qint64 entry = at + word;
            const auto value = Number<quint32>(entry);
            object.insert(Text(entry + 4, (value & 16) != 0), Value(at, value, depth));
        }
        return isObject ? QJsonValue(object) : QJsonValue(array);
    }

    const QByteArray &m_data;
    qint64 m_bytesLeft;
    bool m_isDamaged = false;
};

} // namespace

QJsonObject ObjectOfBinaryJson(const QByteArray &data)
{
    return BinaryJson(data).Root();
}
