#pragma once

#include <QString>

// The service options kept in the user's settings, organised under the service's
// domain: which server to talk to and whether remote downloads are allowed.
class ROptions {
public:
    ROptions() = delete;

    // The organisation name of the settings stores.
    static QString settingsDomain();

    // Host and plain HTTP port ("port", 80 when unset).
    static void getServerName(QString& host, int& port);
    // Host and secure port; the port is always 443 whatever "sport" holds.
    static void getXMLRPCServerName(QString& host, int& port);
    // "http://host:port" from getServerName.
    static QString getServerURL();

    static bool remoteDownloadsEnabled();
    static void setRemoteDownloadsEnabled(bool enabled);
};

// Reads the stored host and the port under portKey (defaultPort when unset, unreadable
// or 0). A host outside the service's domains is replaced by the built-in host.
void getServerNameImpl(QString& host, int& port, const char* portKey, int defaultPort);

// Makes path readable and writable by every user, creating it as an empty file when
// it does not exist.
void ensureFileIsPublic(const QString& path);
