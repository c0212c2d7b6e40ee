#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

struct XML_ParserStruct;

// An expat push parser that forwards element and text events to a handler. Owns the
// expat parser; external entities and external DTD subsets are never loaded.
class ExpatParser {
public:
    class Handler {
    public:
        virtual ~Handler() = default;
        virtual void startElement(const QString& name) = 0;
        virtual void characters(const QString& text) = 0;
        virtual void endElement(const QString& name) = 0;

    protected:
        Handler() = default;
        Handler(const Handler&) = default;
        Handler& operator=(const Handler&) = default;
    };

    explicit ExpatParser(Handler& handler);

    // Feeds the whole document. On failure answers false and puts a readable error
    // (with line and column) into *error when given; events already delivered stand.
    bool parse(const QByteArray& document, QString* error);

private:
    struct ParserFree {
        void operator()(XML_ParserStruct* parser) const;
    };

    std::unique_ptr<XML_ParserStruct, ParserFree> m_parser;
};
