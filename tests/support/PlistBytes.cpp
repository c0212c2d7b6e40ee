#include "PlistBytes.h"

#include <QtEndian>

QByteArray PlistBytes::nestedXml(int depth)
{
    return "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>deep</key>"
        + QByteArray("<array>").repeated(depth - 1) + QByteArray("</array>").repeated(depth - 1)
        + "</dict></plist>";
}

QByteArray PlistBytes::nestedBinary(int depth)
{
    // The top dictionary, its key, then one array inside the next; the last is empty.
    QList<QByteArray> objects { "\xD1" + ref(1) + ref(2), ascii("deep") };
    for (int i = 2; i < depth; ++i)
        objects.append("\xA1" + ref(static_cast<quint32>(i + 1)));
    objects.append("\xA0");
    return binary(objects);
}

QByteArray PlistBytes::binary(const QList<QByteArray>& objects)
{
    QByteArray out = "bplist00";
    QByteArray table;
    for (const QByteArray& object : objects) {
        table += ref(static_cast<quint32>(out.size()));
        out += object;
    }
    const quint64 tableOffset = static_cast<quint64>(out.size());
    out += table + QByteArray(6, '\0') + "\x04\x04";
    for (const quint64 value : { static_cast<quint64>(objects.size()), quint64(0), tableOffset }) {
        const quint64 bigEndian = qToBigEndian(value);
        out += QByteArray(reinterpret_cast<const char*>(&bigEndian), sizeof bigEndian);
    }
    return out;
}

QByteArray PlistBytes::ref(quint32 object)
{
    const quint32 bigEndian = qToBigEndian(object);
    return QByteArray(reinterpret_cast<const char*>(&bigEndian), sizeof bigEndian);
}

QByteArray PlistBytes::ascii(const QByteArray& text)
{
    return static_cast<char>(0x50 | text.size()) + text;
}
