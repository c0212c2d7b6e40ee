#pragma once

#include <QString>
#include <QUrl>

// Where the trailer lists come from: a base URL "http://HOST[:PORT]", taken from the
// environment variable VIREO_TRAILER_ENDPOINT, else the setting "trailers/endpoint" of
// the shell's settings file, else the local feed service's default address. A value
// that is not such a URL is logged and skipped.
class TrailerEndpoint {
public:
    TrailerEndpoint() = delete;

    static QString defaultBase() { return QStringLiteral("http://127.0.0.1:8642"); }
    static const char* environmentVariable() { return "VIREO_TRAILER_ENDPOINT"; }
    static QString settingKey() { return QStringLiteral("trailers/endpoint"); }
    // The shell's settings file: mediashell/mediashell.conf (INI) in the user's
    // configuration folder ($XDG_CONFIG_HOME, else ~/.config).
    static QString settingsFilePath();

    // The base URL in effect.
    static QUrl base();
    // base() + "/xmlrpc/": where the loader posts.
    static QUrl xmlrpcUrl();

    // `text` as a base URL: scheme http, a host, an optional port, and no user, path
    // (other than "/"), query or fragment. An invalid URL otherwise.
    static QUrl parseBase(const QString& text);
};
