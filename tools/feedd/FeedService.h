#pragma once

#include "Catalogue.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <memory>

// The XML-RPC side of the service, without HTTP: a posted call in, the reply out (a
// fault, or the asked slice of a list as the payload string). Replies are kept for
// the lists asked again, as a box asks for the same few over and over.
class FeedService {
public:
    explicit FeedService(std::shared_ptr<const Catalogue> catalogue);

    // `base` is where the client reaches the service ("http://HOST[:PORT]"): the URLs
    // of the list point there.
    QByteArray answer(const QByteArray& body, const QString& base);

private:
    std::shared_ptr<const Catalogue> m_catalogue;
    const QString m_apiKey;
    const QString m_secret;
    QHash<QString, QByteArray> m_replies;
};
