#pragma once

#include <QHostAddress>
#include <QString>
#include <QStringList>

#include <optional>

// The command line of vireo-feedd.
struct FeeddOptions {
    // `arguments` without the program name. A usage error gives nothing and says why.
    static std::optional<FeeddOptions> parse(const QStringList& arguments, QString* error);

    // "HOST:PORT" with HOST an IP address (IPv6 in brackets) or "localhost", PORT
    // 0 to 65535.
    static bool parseListen(const QString& text, QHostAddress& address, quint16& port);
    static QString defaultLibrary();
    static QString helpText();

    bool help = false; // print helpText() and stop
    bool version = false; // print the version and stop
    QHostAddress address = QHostAddress::LocalHost;
    quint16 port = 8642;
    QString library;
    bool demo = false;
};
