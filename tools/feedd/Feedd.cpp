#include "Feedd.h"

#include "Catalogue.h"
#include "DemoCatalogue.h"
#include "FeedHttpServer.h"
#include "FeeddOptions.h"
#include "SignalWatcher.h"

#include <QCoreApplication>
#include <QTextStream>

#include <csignal>

namespace {

constexpr int kStopped = 0;
constexpr int kCannotStart = 1;
constexpr int kUsage = 2;

int cannotStart(QTextStream& err, const QString& reason)
{
    err << "vireo-feedd: " << reason << Qt::endl;
    return kCannotStart;
}

} // namespace

int Feedd::run(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QString usageError;
    const std::optional<FeeddOptions> parsed = FeeddOptions::parse(arguments, &usageError);
    if (!parsed) {
        err << "vireo-feedd: " << usageError << "\nTry vireo-feedd --help." << Qt::endl;
        return kUsage;
    }
    const FeeddOptions& options = *parsed;
    if (options.help) {
        out << FeeddOptions::helpText() << Qt::flush;
        return kStopped;
    }
    if (options.version) {
        out << "vireo-feedd " << QCoreApplication::applicationVersion() << Qt::endl;
        return kStopped;
    }

    QString error;
    if (options.demo && !DemoCatalogue::writeIfEmpty(options.library, &error))
        return cannotStart(err, QStringLiteral("cannot write the demo: ") + error);
    std::optional<Catalogue> catalogue = Catalogue::load(options.library, &error);
    if (!catalogue)
        return cannotStart(err, error);
    FileHandle library = FileHandle::openFolder(options.library);
    if (!library.isValid())
        return cannotStart(err, QStringLiteral("cannot open the folder ") + options.library);

    // Watched before the service announces itself, so a stop sent at once is clean.
    SignalWatcher stop({ SIGTERM, SIGINT });
    QObject::connect(&stop, &SignalWatcher::received, QCoreApplication::instance(),
        [] { QCoreApplication::quit(); });
    FeedHttpServer server(
        std::make_shared<const Catalogue>(std::move(*catalogue)), std::move(library));
    if (!server.start(options.address, options.port, &error))
        return cannotStart(err, error);
    out << server.listenBase() << Qt::endl;
    QCoreApplication::exec();
    return kStopped;
}
