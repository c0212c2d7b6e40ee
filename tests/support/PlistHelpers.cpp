#include "PlistHelpers.h"

#include <gtest/gtest.h>

#include "vtvplugin/platform/PlistCodec.h"

#include <QFile>

void PlistHelpers::write(const QString& path, const QVariantMap& map)
{
    QFile out(path);
    const QByteArray bytes = PlistCodec::encode(map);
    ASSERT_TRUE(out.open(QIODevice::WriteOnly) && out.write(bytes) == bytes.size())
        << qPrintable(path);
}

QVariantMap PlistHelpers::read(const QString& path)
{
    QFile in(path);
    QVariantMap map;
    if (in.open(QIODevice::ReadOnly))
        PlistCodec::decode(in.readAll(), map);
    return map;
}

QString PlistHelpers::value(const QString& path, const QString& key)
{
    return read(path).value(key).toString();
}
