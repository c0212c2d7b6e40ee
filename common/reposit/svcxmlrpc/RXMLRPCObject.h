#pragma once

#include "reposit/svcxmlrpc/RXMLRPCValue.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QNetworkRequest>
#include <QString>

// One XML-RPC message: a call (method name and parameters) or a reply (fault or
// result). The parse operations report problems through their error text and answer
// false; values read before a problem stay in the object.
class RXMLRPCObject {
    Q_DECLARE_TR_FUNCTIONS(RXMLRPCObject)

public:
    RXMLRPCObject();
    virtual ~RXMLRPCObject();

    RXMLRPCObject(const RXMLRPCObject&) = delete;
    RXMLRPCObject& operator=(const RXMLRPCObject&) = delete;

    // Reads a "methodCall" document. The method name and parameters accumulate over
    // calls: a second document appends parameters and keeps the first method name.
    bool parseRequest(const QByteArray& xml, QString& error);
    // Reads a "methodResponse": a fault fills the fault fields and answers true;
    // otherwise the first value's text is read as a payload (parseReplyPayload).
    bool parseReply(const QByteArray& xml, QString& error);
    // Reads an XML fragment into nested structs of the result, adding to what the
    // result already holds.
    bool parseReplyPayload(const QString& payload, QString& error);

    void setFault(int code, const QString& text);

    // Kept for callers of the message interface; they write nothing.
    void dumpRequest();
    void dumpReply();

    // Two messages are equal only when they are the same object.
    bool operator==(const RXMLRPCObject& other) const { return this == &other; }

    // Carried along for the transport; parsing neither reads nor writes it.
    QNetworkRequest& httpHeader() { return m_httpHeader; }
    const QNetworkRequest& httpHeader() const { return m_httpHeader; }

    const QString& methodName() const { return m_strMethodName; }
    void setMethodName(const QString& name) { m_strMethodName = name; }

    RXMLRPCList& params() { return m_params; }
    const RXMLRPCList& params() const { return m_params; }

    bool isFault() const { return m_bFault; }
    int faultCode() const { return m_nFaultCode; }
    const QString& faultString() const { return m_strFaultString; }
    void setFaultFlag(bool fault) { m_bFault = fault; }
    void setFaultCode(int code) { m_nFaultCode = code; }
    void setFaultString(const QString& text) { m_strFaultString = text; }

    RXMLRPCStruct& result() { return m_result; }
    const RXMLRPCStruct& result() const { return m_result; }

private:
    QNetworkRequest m_httpHeader;
    QString m_strMethodName;
    RXMLRPCList m_params;
    bool m_bFault = false;
    int m_nFaultCode = 0;
    QString m_strFaultString;
    RXMLRPCStruct m_result;
};
