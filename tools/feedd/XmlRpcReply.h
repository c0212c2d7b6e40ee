#pragma once

#include <QByteArray>
#include <QString>

// The two replies the service sends to a call: a fault, or one string value. Text is
// escaped by QXmlStreamWriter, so whatever a fault string or payload holds, the reply
// stays well-formed.
class XmlRpcReply {
public:
    XmlRpcReply() = delete;

    static QByteArray fault(int code, const QString& text);
    static QByteArray string(const QString& value);
};
