#include "reposit/RMaskedText.h"

#include <QByteArray>

QString unmaskText(const unsigned char* bytes, std::size_t length)
{
    QByteArray plain(static_cast<qsizetype>(length), Qt::Uninitialized);
    for (std::size_t i = 0; i < length; ++i)
        plain[static_cast<qsizetype>(i)] = static_cast<char>(bytes[i] ^ maskByteAt(i));
    return QString::fromUtf8(plain);
}
