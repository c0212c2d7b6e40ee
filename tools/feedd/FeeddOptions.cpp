#include "FeeddOptions.h"

#include <QCommandLineParser>
#include <QStandardPaths>

namespace {

const QString kListen = QStringLiteral("listen");
const QString kLibrary = QStringLiteral("library");
const QString kDemo = QStringLiteral("demo");
const QString kHelp = QStringLiteral("help");
const QString kVersion = QStringLiteral("version");

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "The local trailer feed service: answers the signed XML-RPC calls for the four "
        "ranked trailer lists from a folder of trailers, and serves their media and "
        "thumbnails."));
    parser.addOption({ kListen,
        QStringLiteral("Listen on HOST:PORT (default 127.0.0.1:8642; port 0 picks a free one)."),
        QStringLiteral("HOST:PORT") });
    parser.addOption({ kLibrary,
        QStringLiteral("The folder of trailers and its catalogue.json (default %1).")
            .arg(FeeddOptions::defaultLibrary()),
        QStringLiteral("DIR") });
    parser.addOption({ kDemo,
        QStringLiteral("First write a demo catalogue of short clips into the library folder "
                       "when it is missing or empty.") });
    parser.addOption({ { QStringLiteral("h"), kHelp }, QStringLiteral("Show this help.") });
    parser.addOption({ kVersion, QStringLiteral("Show the version.") });
}

} // namespace

QString FeeddOptions::defaultLibrary()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
        + QStringLiteral("/vireo-feedd");
}

QString FeeddOptions::helpText()
{
    QCommandLineParser parser;
    describe(parser);
    return parser.helpText()
        + QStringLiteral("\nExit status: 0 stopped by SIGTERM or SIGINT, 1 cannot start (bad "
                         "catalogue, demo or address), 2 usage error.\n");
}

bool FeeddOptions::parseListen(const QString& text, QHostAddress& address, quint16& port)
{
    const qsizetype colon = text.lastIndexOf(QLatin1Char(':'));
    if (colon <= 0)
        return false;
    QString host = text.left(colon);
    const QString portText = text.mid(colon + 1);
    bool ok = false;
    const uint number = portText.toUInt(&ok);
    if (!ok || number > 65535 || portText.isEmpty() || !portText.front().isDigit())
        return false;
    if (host == QLatin1String("localhost")) {
        address = QHostAddress::LocalHost;
    } else {
        const bool bracketed = host.startsWith(QLatin1Char('[')) && host.endsWith(QLatin1Char(']'));
        if (bracketed)
            host = host.mid(1, host.size() - 2);
        if (!address.setAddress(host)
            || bracketed != (address.protocol() == QAbstractSocket::IPv6Protocol))
            return false;
    }
    port = quint16(number);
    return true;
}

std::optional<FeeddOptions> FeeddOptions::parse(const QStringList& arguments, QString* error)
{
    const auto refuse = [error](const QString& why) -> std::optional<FeeddOptions> {
        if (error)
            *error = why;
        return std::nullopt;
    };
    FeeddOptions options;
    QCommandLineParser parser;
    describe(parser);
    if (!parser.parse(QStringList { QStringLiteral("vireo-feedd") } + arguments))
        return refuse(parser.errorText());
    options.help = parser.isSet(kHelp);
    options.version = parser.isSet(kVersion);
    if (options.help || options.version)
        return options;
    if (!parser.positionalArguments().isEmpty())
        return refuse(
            QStringLiteral("unexpected argument: ") + parser.positionalArguments().first());
    if (parser.isSet(kListen) && !parseListen(parser.value(kListen), options.address, options.port))
        return refuse(QStringLiteral("--listen wants HOST:PORT (an IP address or localhost, "
                                     "and a port from 0 to 65535), not: ")
            + parser.value(kListen));
    options.library = parser.isSet(kLibrary) ? parser.value(kLibrary) : defaultLibrary();
    if (options.library.isEmpty())
        return refuse(QStringLiteral("--library wants a folder"));
    options.demo = parser.isSet(kDemo);
    return options;
}
