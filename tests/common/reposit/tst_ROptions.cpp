#include "reposit/ROptions.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// The settings store lives in a temporary folder, never in ~/.config.
TEST(ROptions, ForeignHostsAndUnusablePortsFallBackToDefaultsAndDownloadsAreStoredOnlyWhenOff)
{
    QTemporaryDir dir;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir.path());
    QString builtIn;
    int port = 0;
    ROptions::getServerName(builtIn, port);
    ASSERT_TRUE(builtIn.contains(ROptions::settingsDomain()));
    EXPECT_EQ(port, 80);
    // Each row stores "host", and its port as both "port" and "sport".
    const struct {
        const char *host, *url;
        QVariant port;
    } rows[] = {
        { "media.VIREOMOVIES.net", "http://media.VIREOMOVIES.net:8080", 8080 },
        { "cdn.vireo-media.com", "http://cdn.vireo-media.com:80", 0 },
        { "media.vireomovies.net", "http://media.vireomovies.net:80", "eighty" },
        { "vireomovies.evil.example", nullptr, 8080 },
    };
    for (const auto& row : rows) {
        QSettings server(QSettings::UserScope, ROptions::settingsDomain(), "server");
        server.setValue("host", row.host);
        server.setValue("port", row.port);
        server.setValue("sport", row.port);
        server.sync();
        QString host;
        ROptions::getXMLRPCServerName(host, port);
        EXPECT_EQ(port, 443) << row.host;
        EXPECT_EQ(ROptions::getServerURL(), row.url ? row.url : "http://" + builtIn + ":8080");
    }

    const QString options = dir.filePath(ROptions::settingsDomain() + "/options.conf");
    EXPECT_TRUE(ROptions::remoteDownloadsEnabled());
    ROptions::setRemoteDownloadsEnabled(false);
    EXPECT_FALSE(ROptions::remoteDownloadsEnabled());
    EXPECT_EQ(
        QSettings(options, QSettings::IniFormat).allKeys(), QStringList { "remote_downloads" });
    ROptions::setRemoteDownloadsEnabled(true);
    EXPECT_TRUE(QSettings(options, QSettings::IniFormat).allKeys().isEmpty());
}

} // namespace
