#pragma once

#include <QHostAddress>
#include <QString>
#include <QStringList>

// The command line of vireo-feedd.
class FeeddOptions {
public:
    enum class Outcome { Run, Help, Version, UsageError };

    // `arguments` without the program name. On a usage error, `error` says what is
    // wrong.
    static FeeddOptions parse(const QStringList& arguments);

    // "HOST:PORT" with HOST an IP address (IPv6 in brackets) or "localhost", PORT
    // 0 to 65535.
    static bool parseListen(const QString& text, QHostAddress& address, quint16& port);
    static QString defaultLibrary();
    static QString helpText();

    Outcome outcome = Outcome::Run;
    QString error;
    QHostAddress address = QHostAddress::LocalHost;
    quint16 port = 8642;
    QString library;
    bool demo = false;
};
