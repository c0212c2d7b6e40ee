#pragma once

#include <QString>

// The service's API key and signing secret. Neither is stored as a plain text in the
// binary: each is kept scrambled and rebuilt when asked for. The secret is only ever
// an input to the signature; it is never logged or sent.
class TrailerCredentials {
public:
    TrailerCredentials() = delete;

    static QString apiKey();
    static QString signingSecret();
};
