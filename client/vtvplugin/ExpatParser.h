#pragma once

#include <QByteArray>
#include <QString>

#include <expat.h>

#include <memory>
#include <type_traits>

// An expat push parser that forwards element and text events to a handler. Owns the
// XML_Parser; external entities and external DTD subsets are never loaded.
class ExpatParser {
public:
    class Handler {
    public:
        virtual ~Handler() = default;
        virtual void startElement(const QString &name) = 0;
        virtual void characters(const QString &text) = 0;
        virtual void endElement(const QString &name) = 0;

    protected:
        Handler() = default;
        Handler(const Handler &) = default;
        Handler &operator=(const Handler &) = default;
    };

    explicit ExpatParser(Handler &handler);

    // Feeds the whole document. On failure answers false and puts a readable error
    // (with line and column) into *error when given; events already delivered stand.
    bool parse(const QByteArray &document, QString *error);

private:
    struct ParserFree {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };

    static void XMLCALL onStart(void *self, const XML_Char *name, const XML_Char **atts);
    static void XMLCALL onEnd(void *self, const XML_Char *name);
    static void XMLCALL onText(void *self, const XML_Char *text, int length);

    Handler &m_handler;
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserFree> m_parser;
};
