#include "reposit/ROptions.h"

#include "reposit/RMaskedText.h"
#include "reposit/RepositLog.h"

#include <QFile>
#include <QLoggingCategory>
#include <QSettings>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr RMaskedText kServiceDomain("vireomovies.net");
constexpr RMaskedText kDefaultHost("svc.vireomovies.net");
constexpr RMaskedText kAcceptedDomainA("vireomovies.net");
constexpr RMaskedText kAcceptedDomainB("vireo-media.com");

const QString kServerStore = QStringLiteral("server");
const QString kOptionsStore = QStringLiteral("options");
const QString kRemoteDownloadsKey = QStringLiteral("remote_downloads");

constexpr int kPlainPort = 80;
constexpr int kSecurePort = 443;

bool isAcceptedHost(const QString& host)
{
    return host.contains(kAcceptedDomainA.text(), Qt::CaseInsensitive)
        || host.contains(kAcceptedDomainB.text(), Qt::CaseInsensitive);
}

} // namespace

QString ROptions::settingsDomain()
{
    return kServiceDomain.text();
}

void getServerNameImpl(QString& host, int& port, const char* portKey, int defaultPort)
{
    const QSettings settings(QSettings::UserScope, ROptions::settingsDomain(), kServerStore);
    const QString hostKey = QStringLiteral("host");
    if (settings.contains(hostKey))
        host = settings.value(hostKey).toString();

    bool converted = false;
    port = settings.value(QString::fromLatin1(portKey)).toInt(&converted);
    if (!converted || port == 0)
        port = defaultPort;

    if (host.isEmpty() || !isAcceptedHost(host))
        host = kDefaultHost.text();
}

void ROptions::getServerName(QString& host, int& port)
{
    getServerNameImpl(host, port, "port", kPlainPort);
}

void ROptions::getXMLRPCServerName(QString& host, int& port)
{
    getServerNameImpl(host, port, "sport", kSecurePort);
    // The service answers XML-RPC only on its standard secure port.
    port = kSecurePort;
}

QString ROptions::getServerURL()
{
    QString host;
    int port = 0;
    getServerName(host, port);
    return QStringLiteral("http://") + host + QStringLiteral(":") + QString::number(port);
}

bool ROptions::remoteDownloadsEnabled()
{
    const QSettings settings(QSettings::UserScope, settingsDomain(), kOptionsStore);
    return settings.value(kRemoteDownloadsKey, true).toBool();
}

void ROptions::setRemoteDownloadsEnabled(bool enabled)
{
    QSettings settings(QSettings::UserScope, settingsDomain(), kOptionsStore);
    // Enabled is the default, so it is stored as the absence of the key.
    if (enabled)
        settings.remove(kRemoteDownloadsKey);
    else
        settings.setValue(kRemoteDownloadsKey, false);
}

void ensureFileIsPublic(const QString& path)
{
    const QByteArray nativePath = QFile::encodeName(path);
    struct stat info { };
    if (::stat(nativePath.constData(), &info) != 0) {
        const int fd = ::open(nativePath.constData(), O_WRONLY | O_CREAT, 0666);
        if (fd == -1) {
            const int error = errno;
            qCWarning(lcOptions).noquote()
                << "Warning in ensureFileIsPublic: cannot create" << path << std::strerror(error);
            return;
        }
        ::close(fd);
        info.st_mode = S_IFREG;
    }
    const mode_t mode = S_ISDIR(info.st_mode) ? 0777 : 0666;
    if (::chmod(nativePath.constData(), mode) != 0) {
        const int error = errno;
        qCWarning(lcOptions).noquote() << "Warning in ensureFileIsPublic: cannot change mode of"
                                       << path << std::strerror(error);
    }
}
