#include "vtvplugin/trailers/TrailerEndpoint.h"

#include "vtvplugin/platform/VtvLog.h"

#include <QSettings>
#include <QStandardPaths>

namespace {

// The first usable candidate; a bad one is logged and passed over.
QUrl usable(const QString& text, const char* origin)
{
    if (text.isEmpty())
        return {};
    const QUrl url = TrailerEndpoint::parseBase(text);
    if (!url.isValid())
        qCWarning(lcTrailers).noquote() << QStringLiteral(
            "Warning: ignoring a trailer endpoint that is not http://HOST[:PORT] from %1:")
                                               .arg(QLatin1String(origin))
                                        << text;
    return url;
}

} // namespace

QString TrailerEndpoint::settingsFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/mediashell/mediashell.conf");
}

QUrl TrailerEndpoint::parseBase(const QString& text)
{
    const QUrl url(text.trimmed(), QUrl::StrictMode);
    const bool plain = url.isValid() && url.scheme() == QLatin1String("http")
        && !url.host().isEmpty() && url.userInfo().isEmpty()
        && (url.path().isEmpty() || url.path() == QLatin1String("/")) && !url.hasQuery()
        && !url.hasFragment();
    if (!plain)
        return {};
    QUrl base;
    base.setScheme(QStringLiteral("http"));
    base.setHost(url.host());
    base.setPort(url.port());
    return base;
}

QUrl TrailerEndpoint::base()
{
    const QUrl fromEnvironment
        = usable(qEnvironmentVariable(environmentVariable()), environmentVariable());
    if (fromEnvironment.isValid())
        return fromEnvironment;
    const QSettings settings(settingsFilePath(), QSettings::IniFormat);
    const QUrl fromSettings = usable(settings.value(settingKey()).toString(), "trailers/endpoint");
    if (fromSettings.isValid())
        return fromSettings;
    return parseBase(defaultBase());
}

QUrl TrailerEndpoint::xmlrpcUrl()
{
    QUrl url = base();
    url.setPath(QStringLiteral("/xmlrpc/"));
    return url;
}
