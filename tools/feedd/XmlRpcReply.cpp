#include "XmlRpcReply.h"

#include <QXmlStreamWriter>

namespace {

void writeMember(
    QXmlStreamWriter& xml, const QString& name, const QString& type, const QString& value)
{
    xml.writeStartElement(QStringLiteral("member"));
    xml.writeTextElement(QStringLiteral("name"), name);
    xml.writeStartElement(QStringLiteral("value"));
    xml.writeTextElement(type, value);
    xml.writeEndElement();
    xml.writeEndElement();
}

} // namespace

QByteArray XmlRpcReply::fault(int code, const QString& text)
{
    QByteArray out;
    QXmlStreamWriter xml(&out);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("methodResponse"));
    xml.writeStartElement(QStringLiteral("fault"));
    xml.writeStartElement(QStringLiteral("value"));
    xml.writeStartElement(QStringLiteral("struct"));
    writeMember(xml, QStringLiteral("faultCode"), QStringLiteral("int"), QString::number(code));
    writeMember(xml, QStringLiteral("faultString"), QStringLiteral("string"), text);
    xml.writeEndDocument();
    return out;
}

QByteArray XmlRpcReply::string(const QString& value)
{
    QByteArray out;
    out.reserve(value.size() + value.size() / 4 + 256);
    QXmlStreamWriter xml(&out);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("methodResponse"));
    xml.writeStartElement(QStringLiteral("params"));
    xml.writeStartElement(QStringLiteral("param"));
    xml.writeStartElement(QStringLiteral("value"));
    xml.writeTextElement(QStringLiteral("string"), value);
    xml.writeEndDocument();
    return out;
}
