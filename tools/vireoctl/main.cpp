#include "VireoCtl.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>

int main(int argc, char* argv[])
{
    // The library's debug log would bury the one-line errors on standard error;
    // QT_LOGGING_RULES still turns it on ("vireo.*.debug=true").
    QLoggingCategory::setFilterRules(QStringLiteral("vireo.*.debug=false"));
    QCoreApplication app(argc, argv);
    QFile out;
    QFile err;
    out.open(stdout, QIODevice::WriteOnly);
    err.open(stderr, QIODevice::WriteOnly);
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    return VireoCtl::run(args, out, err);
}
