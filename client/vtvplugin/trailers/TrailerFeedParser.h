#pragma once

#include "vtvplugin/platform/ExpatParser.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class VTVMediaAsset;

// The two stages of a trailer list reply. The outer document is an XML-RPC reply whose
// string value carries the list as a second XML document; a "fault" element anywhere
// in it marks a fault, and the string value is then the fault's text. The inner
// document lists "video" elements, each of which becomes a trailer asset once it has a
// trailer URL, an id and a title. Only web addresses (http or https, with a host) are
// followed: a video whose trailer or thumbnail URL is anything else (a local file, say)
// is skipped with a warning.
//
// A reply is at most a few megabytes, but internal entities can make its text far
// longer than its bytes, so every text that is kept is bounded as well: each field
// keeps at most BoundedText::kMaxFieldChars characters, and a document whose text
// passes its bound, or a list past kMaxVideos, ends the parse there.
class TrailerFeedParser : private ExpatParser::Handler {
public:
    // Receives each trailer asset in list order.
    using AssetSink = std::function<void(std::shared_ptr<VTVMediaAsset>)>;

    // All the text of the outer document, its string value being nearly all of it, in
    // characters.
    static constexpr qsizetype kMaxPayloadChars = 8 * 1024 * 1024;
    // All the text of the inner document together, in characters.
    static constexpr qsizetype kMaxListChars = 8 * 1024 * 1024;
    // The service sends 25; a list this long is hostile.
    static constexpr int kMaxVideos = 1000;

    explicit TrailerFeedParser(AssetSink sink);

    // The outer phase. On a parse error the error is logged, the reply counts as a
    // fault and its description becomes the payload.
    bool parseReply(const QByteArray& reply, QString* error);
    bool isFault() const { return m_bXMLFault; }
    const QString& payload() const;

    // The inner phase: parses the payload the outer phase collected. Assets made
    // before an error stand.
    bool parsePayload(QString* error);

private:
    void startElement(const QString& name) override;
    void characters(const QString& text) override;
    void endElement(const QString& name) override;

    void replyStartElement(const QString& name);
    void replyCharacters(const QString& text);
    void listStartElement(const QString& name);
    void listCharacters(const QString& text);
    void listEndElement(const QString& name);
    void storeField(const QString& text);
    void finishVideo();
    void takeVideo();
    void clearVideo();
    bool parse(const QByteArray& document, QString* error);

    AssetSink m_sink;
    // Collects the inner document during the outer phase; empty (not engaged) during
    // the inner phase, which is how the event handlers tell the phases apart.
    std::optional<QString> m_pXMLPayload;
    // The payload once the inner phase has taken it.
    QString m_payloadTaken;
    bool m_bReadingPayload = false;
    bool m_bXMLFault = false;

    // The video being read and the element being read inside it.
    QString m_pVideoID;
    QString m_pTitle;
    QString m_pDescription;
    QString m_pThumbnailURL;
    QString m_pTrailerURL;
    qint32 m_nTrailerDuration = 0;
    qint32 m_nTrailerSize = 0;
    QString m_currentElement;
    // expat may hand one element's text over in pieces (around entity references);
    // the pieces are joined and trimmed once the element ends.
    QString m_currentText;

    // The text of the document being parsed so far.
    qsizetype m_documentChars = 0;
    int m_videoCount = 0;
};
