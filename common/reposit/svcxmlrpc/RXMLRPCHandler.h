#pragma once

#include "reposit/svcxmlrpc/RXMLRPCValue.h"
#include "reposit/sxp/IPersistObj.h"

#include <QString>
#include <QVariant>

#include <cstddef>

class RXMLRPCObject;

namespace SXP {
class IParser;
}

// What every XML-RPC parse handler has: the object it fills, the value being read,
// and the error text and flags that the parse operations read back afterwards.
class RXMLRPCHandler : public SXP::IPersistObj {
public:
    ~RXMLRPCHandler() override;

    RXMLRPCHandler(const RXMLRPCHandler&) = delete;
    RXMLRPCHandler& operator=(const RXMLRPCHandler&) = delete;

    // The handlers only read: there is nothing to write back.
    void WriteElement(SXP::IOutStreamT<SXP::CFileOutStream>* stream,
        std::map<std::string, std::string>& attributes) override;

    // Appends text to the error text and marks the parse as failed.
    void setError(const QString& text);
    bool hasError() const { return m_nError != 0; }
    const QString& errorText() const { return m_strError; }
    // Set once the element the handler owns has closed.
    bool isFinished() const { return m_nFinished != 0; }

protected:
    explicit RXMLRPCHandler(RXMLRPCObject* object);

    // The messages below are source texts for RXMLRPCObject::tr(); a "%s" or "%d" in
    // them is filled with arg.

    // Records the message and stops the parse.
    void fail(SXP::IParser* parser, const char* message, const QString& arg);
    // Whether one more container may open when `open` are open already; if not, fails
    // with the message.
    bool roomToNest(SXP::IParser* parser, std::size_t open, const char* message);
    // Stores the current value under name, after its equals; a value without a name is
    // stored under "unknown" and the message recorded.
    void storeMember(RXMLRPCStruct& target, const QString& name, const char* noNameMessage);
    // Replaces everything recorded so far by the message.
    void replaceError(const char* message);
    void setFinished() { m_nFinished = 1; }

    RXMLRPCObject* const m_pObject;
    QVariant m_currentValue;

private:
    int m_nError = 0;
    QString m_strError;
    int m_nFinished = 0;
};
