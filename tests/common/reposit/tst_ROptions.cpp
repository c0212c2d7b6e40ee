#include "reposit/ROptions.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

// Every settings store of a test lives in its own temporary folder, never in ~/.config.
class OptionsTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.path());
    }
    QTemporaryDir m_dir;
};

TEST_F(OptionsTest, ForeignHostsAndUnusablePortsFallBackToDefaults)
{
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
        { "media.vireomovies.net", "http://media.vireomovies.net:8080", 8080 },
        { "media.VIREOMOVIES.net", "http://media.VIREOMOVIES.net:80", 0 },
        { "cdn.vireo-media.com", "http://cdn.vireo-media.com:80", "eighty" },
        { "vireomovies.evil.example", nullptr, 8080 },
    };
    for (const auto& row : rows) {
        QSettings server(
            QSettings::UserScope, ROptions::settingsDomain(), QStringLiteral("server"));
        server.setValue(QStringLiteral("host"), QString::fromLatin1(row.host));
        server.setValue(QStringLiteral("port"), row.port);
        server.setValue(QStringLiteral("sport"), row.port);
        server.sync();
        QString host;
        ROptions::getXMLRPCServerName(host, port);
        EXPECT_EQ(port, 443) << row.host;
        EXPECT_EQ(ROptions::getServerURL(),
            row.url ? QString::fromLatin1(row.url) : QStringLiteral("http://%1:8080").arg(builtIn));
    }
}

TEST_F(OptionsTest, RemoteDownloadsAreStoredOnlyWhenOffAndPublicFilesOpenedUp)
{
    const auto storedKeys = [this] {
        return QSettings(
            m_dir.filePath(ROptions::settingsDomain() + QStringLiteral("/options.conf")),
            QSettings::IniFormat)
            .allKeys();
    };
    EXPECT_TRUE(ROptions::remoteDownloadsEnabled());
    ROptions::setRemoteDownloadsEnabled(false);
    EXPECT_FALSE(ROptions::remoteDownloadsEnabled());
    EXPECT_EQ(storedKeys(), QStringList { QStringLiteral("remote_downloads") });
    ROptions::setRemoteDownloadsEnabled(true);
    EXPECT_TRUE(storedKeys().isEmpty());

    const QString created = m_dir.filePath(QStringLiteral("new.plist"));
    const QString folder = m_dir.filePath(QStringLiteral("folder"));
    ASSERT_TRUE(QDir().mkdir(folder, QFile::ReadOwner | QFile::ExeOwner));
    const mode_t oldMask = ::umask(022);
    for (const QString& path : { created, folder, m_dir.filePath(QStringLiteral("no/file")) })
        ensureFileIsPublic(path);
    ::umask(oldMask);
    const auto modeOf = [](const QString& path) {
        struct stat info { };
        return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_mode & 07777 : 0;
    };
    EXPECT_EQ(modeOf(created), 0666u);
    EXPECT_EQ(modeOf(folder), 0777u);
    EXPECT_FALSE(QFileInfo::exists(m_dir.filePath(QStringLiteral("no"))));
}

} // namespace
