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

        // Ends the parse from inside an event: no further event arrives, and parse()
        // fails with `reason` (a text that is not empty). The first reason given stands.
        void stopParsing(const QString& reason);

    private:
        friend class ExpatParser;
        QString m_stopReason;
    };

    explicit ExpatParser(Handler& handler);

    // Feeds the whole document. On failure answers false and puts a readable error
    // (with line and column, or the handler's reason for stopping) into *error when
    // given; events already delivered stand.
    bool parse(const QByteArray& document, QString* error);

private:
    struct ParserFree {
        void operator()(XML_ParserStruct* parser) const;
    };
    // expat's callbacks, which forward to the handler.
    struct Events;

    Handler& m_handler;
    std::unique_ptr<XML_ParserStruct, ParserFree> m_parser;
};
