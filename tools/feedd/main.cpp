#include "Feedd.h"

#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vireo-feedd"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VIREO_VERSION));
    QTextStream out(stdout);
    QTextStream err(stderr);
    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    return Feedd::run(arguments, out, err);
}
