#pragma once

#include <QtGlobal>

// What one client may ask of the service. Every request and connection may be hostile:
// these bound the memory and the time it can hold.
struct FeedLimits {
    // A request body (the XML-RPC call) larger than this is refused with 413 before it
    // is read.
    qint64 maxBodyBytes = 1024 * 1024;
    // The request line and headers; more is refused with 431.
    qint64 maxHeadBytes = 16 * 1024;
    // From its opening, or from the end of the previous response, a connection has this
    // long to deliver a complete request; the time its answers are being sent does not
    // count.
    int requestTimeoutMS = 10000;
    // An answer that the client takes nothing of for this long (its buffers full) is
    // given up, so clients that never read cannot hold connections.
    int stalledStreamMS = 60000;
    // A connection reads no further request while this many of its answers are not yet
    // handed to the system: a client that sends requests without reading the answers
    // holds no more than this (and at most one open file) on the service.
    int maxPendingAnswers = 8;
    // A connection takes requests for this long from its opening; then it is closed
    // once the answers to the requests read so far have been sent, so that a client
    // sending a request now and then cannot keep its connection for ever.
    int connectionLifeMS = 60000;
    // Connections open at once; one more is closed as soon as it is accepted.
    int maxConnections = 256;
    // Connections open at once from one client (an IPv4 address, or an IPv6 /64
    // network, which one host usually has whole): one client cannot take every
    // connection and keep all others out.
    int maxConnectionsPerClient = 32;
    // After a refusal the service reads (and throws away) what the client still sends
    // for at most this long, so that the client sees the refusal rather than a reset.
    int lingerMS = 2000;
};
