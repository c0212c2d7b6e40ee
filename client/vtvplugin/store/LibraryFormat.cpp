#include "vtvplugin/store/LibraryFormat.h"

#include <QStringList>

#include <algorithm>

bool LibraryFormat::isValidPairID(const QString& pairID)
{
    return pairID.length() == kPairIDLength && staysInFolder(pairID)
        && !pairID.contains(QChar(u'\0'));
}

bool LibraryFormat::isWellFormedPairID(const QString& pairID)
{
    const auto letterOrDigit = [](QChar c) { return c.unicode() < 128 && c.isLetterOrNumber(); };
    return pairID.length() == kPairIDLength
        && std::all_of(pairID.cbegin(), pairID.cend(), letterOrDigit);
}

bool LibraryFormat::isReservedMovieSuffix(const QString& suffix)
{
    static const QStringList reserved
        = { QStringLiteral("xml"), QStringLiteral("png"), QStringLiteral("plist") };
    return reserved.contains(suffix, Qt::CaseInsensitive);
}

bool LibraryFormat::isReservedIdentifier(const QString& identifier)
{
    const auto baseName
        = [](QLatin1String file) { return file.left(file.indexOf(QLatin1Char('.'))); };
    return identifier == baseName(kConfigFile) || identifier == baseName(kStatsFile);
}

bool LibraryFormat::staysInFolder(const QString& name)
{
    return !name.contains(QLatin1Char('/')) && name != QLatin1String(".")
        && name != QLatin1String("..");
}
