#include "reposit/svcxmlrpc/RXMLRPCFormat.h"

QString fillPlaceholders(const QString& format, std::initializer_list<QString> args)
{
    QString out;
    out.reserve(format.size() + 32);
    auto next = args.begin();
    for (qsizetype i = 0; i < format.size(); ++i) {
        const QChar ch = format.at(i);
        if (ch == QLatin1Char('%') && i + 1 < format.size() && next != args.end()
            && (format.at(i + 1) == QLatin1Char('s') || format.at(i + 1) == QLatin1Char('d'))) {
            out += *next++;
            ++i;
        } else {
            out += ch;
        }
    }
    return out;
}
