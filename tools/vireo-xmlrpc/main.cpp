#include "XmlRpcTool.h"

#include <QCoreApplication>
#include <QFile>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QFile in, out, err;
    in.open(stdin, QIODevice::ReadOnly);
    out.open(stdout, QIODevice::WriteOnly);
    err.open(stderr, QIODevice::WriteOnly);
    QStringList args = app.arguments();
    args.removeFirst();
    return XmlRpcTool::run(args, in, out, err);
}
