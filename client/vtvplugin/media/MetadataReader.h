#pragma once

#include "vtvplugin/media/MovieMetadata.h"
#include "vtvplugin/platform/ExpatParser.h"

#include <QByteArray>
#include <QString>

// Reads a movie's metadata XML. Element names are matched wherever they stand; no
// root element or nesting is required. "title", "sversion", "ccontentid" and
// "vcontentid" are trimmed and appended; "description" is appended untrimmed; "cast",
// "directors" and "producers" collect their "name" children (or direct text), blank
// names skipped; "duration" and "cversion" are kept when above 0; "genre" is
// transparent. The document's declared encoding is honoured.
//
// Every field (a list counts as one, its entries with one separator each) keeps at most
// BoundedText::kMaxFieldChars characters; the rest of it is dropped. Entities can make
// a small file expand far beyond its size, so a document whose text passes
// kMaxDocumentChars ends there, as if at a parse error.
class MetadataReader : private ExpatParser::Handler {
public:
    // All the text of one document, entities expanded, in characters.
    static constexpr qsizetype kMaxDocumentChars = 512 * 1024;

    // The file beside a movie: read only when it is a regular file of bounded size.
    // A missing file gives empty metadata; a refused or unparsable one is logged.
    static MovieMetadata readFile(const QString& path);
    // One document. Whatever was read before an error is kept; the error text goes
    // to `error` when given.
    static bool parse(const QByteArray& document, MovieMetadata& metadata, QString* error);

private:
    explicit MetadataReader(MovieMetadata& metadata)
        : m_metadata(metadata)
    {
    }

    void startElement(const QString& name) override;
    void characters(const QString& text) override;
    void endElement(const QString& name) override;
    void storeCurrentItem(const QString& trimmed);
    static void appendTrimmed(QString& field, const QString& piece);
    static void appendEntry(QStringList& list, qsizetype& listChars, const QString& entry);

    MovieMetadata& m_metadata;
    // The element being collected, and the text collected for it.
    QString _currentItem;
    QString _currentData;
    qsizetype m_documentChars = 0;
    qsizetype m_castChars = 0;
    qsizetype m_directorsChars = 0;
    qsizetype m_producersChars = 0;
};
