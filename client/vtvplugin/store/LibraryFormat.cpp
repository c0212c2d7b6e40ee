#include "vtvplugin/store/LibraryFormat.h"

#include <algorithm>

bool LibraryFormat::isValidPairID(const QString& pairID)
{
    return pairID.length() == kPairIDLength && staysInFolder(pairID)
        && !pairID.contains(QChar(u'\0'));
}

bool LibraryFormat::isWellFormedPairID(const QString& pairID)
{
    const auto letterOrDigit = [](QChar c) { return c.unicode() < 128 && (c.isLetterOrNumber()); };
    return pairID.length() == kPairIDLength
        && std::all_of(pairID.cbegin(), pairID.cend(), letterOrDigit);
}

bool LibraryFormat::staysInFolder(const QString& name)
{
    return !name.contains(QLatin1Char('/')) && name != QLatin1String(".")
        && name != QLatin1String("..");
}
