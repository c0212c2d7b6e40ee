#include "ScreenWalk.h"

#include <QFile>
#include <QGuiApplication>
#include <QLoggingCategory>

int main(int argc, char* argv[])
{
    // Text controls measure with real fonts, which needs a GUI application but no
    // window: run offscreen unless told otherwise.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QLoggingCategory::setFilterRules(QStringLiteral("vireo.*.debug=false"));
    QGuiApplication app(argc, argv);
    QFile out;
    QFile err;
    out.open(stdout, QIODevice::WriteOnly);
    err.open(stderr, QIODevice::WriteOnly);
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    return ScreenWalk::run(args, out, err);
}
