#pragma once

#include <QtGlobal>

namespace mediashell {

// What one phone remote server allows. The defaults suit a household; tests shorten
// the times.
struct RemoteLimits {
    // A WebSocket message (and any one frame of it) larger than this closes its
    // connection: a button press is a few dozen bytes.
    qint64 maxMessageBytes = 1024;
    // Messages a client may send a second (and at once); the excess is dropped.
    int maxMessagesPerSecond = 20;
    // Browsers connected at once; one more is closed as soon as it is accepted.
    int maxClients = 8;
    // Wrong codes in a row (from any browser) before pairing pauses for a while.
    int maxWrongCodes = 5;
    int coolDownMS = 30'000;
    // The page's side: connections open at once, how long each may live, and how much
    // of a request it may buffer (the page is one GET).
    int maxPageConnections = 16;
    int pageConnectionMS = 10'000;
    qint64 maxPageRequestBytes = 16 * 1024;
    // Tokens kept; the oldest is forgotten first.
    int maxTokens = 32;
};

} // namespace mediashell
