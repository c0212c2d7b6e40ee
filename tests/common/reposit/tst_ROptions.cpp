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

    // Each row stores "host", and its port as both "port" and "sport"; a null url means
    // the built-in host on port 8080.
    const struct {
        const char *name, *host;
        QVariant port;
        const char* url;
    } rows[] = {
        { "stored", "media.vireomovies.net", 8080, "http://media.vireomovies.net:8080" },
        { "domain in other case, port 0", "media.VIREOMOVIES.net", 0,
            "http://media.VIREOMOVIES.net:80" },
        { "second domain, port not a number", "cdn.vireo-media.com", "eighty",
            "http://cdn.vireo-media.com:80" },
        { "foreign host", "vireomovies.evil.example", 8080, nullptr },
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
        EXPECT_EQ(port, 443) << row.name;
        const QString url = row.url ? QString::fromLatin1(row.url)
                                    : QStringLiteral("http://%1:8080").arg(builtIn);
        EXPECT_EQ(ROptions::getServerURL().toStdString(), url.toStdString()) << row.name;
    }
}

TEST_F(OptionsTest, RemoteDownloadsDefaultOnAndStoredOnlyWhenOff)
{
    const QString path
        = m_dir.filePath(ROptions::settingsDomain() + QStringLiteral("/options.conf"));
    const auto storedKeys = [&path] { return QSettings(path, QSettings::IniFormat).allKeys(); };
    EXPECT_TRUE(ROptions::remoteDownloadsEnabled());
    ROptions::setRemoteDownloadsEnabled(false);
    EXPECT_FALSE(ROptions::remoteDownloadsEnabled());
    EXPECT_EQ(storedKeys(), QStringList { QStringLiteral("remote_downloads") });
    ROptions::setRemoteDownloadsEnabled(true);
    EXPECT_TRUE(ROptions::remoteDownloadsEnabled());
    EXPECT_TRUE(storedKeys().isEmpty());
}

TEST_F(OptionsTest, EnsureFileIsPublicOpensUpFilesAndFolders)
{
    const auto path = [this](const char* name) { return m_dir.filePath(QLatin1String(name)); };
    QFile existing(path("private"));
    ASSERT_TRUE(existing.open(QIODevice::WriteOnly));
    ASSERT_EQ(existing.write("kept"), 4);
    existing.close();
    ASSERT_TRUE(existing.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
    ASSERT_TRUE(QDir().mkdir(path("folder"), QFile::ReadOwner | QFile::ExeOwner));

    const mode_t oldMask = ::umask(022);
    for (const char* name : { "new.plist", "private", "folder", "absent/file" })
        ensureFileIsPublic(path(name));
    ::umask(oldMask);

    const auto modeOf = [&path](const char* name) {
        struct stat info { };
        return ::stat(QFile::encodeName(path(name)).constData(), &info) == 0 ? info.st_mode & 07777
                                                                             : 0;
    };
    EXPECT_EQ(modeOf("new.plist"), 0666u);
    EXPECT_EQ(modeOf("private"), 0666u);
    EXPECT_EQ(QFileInfo(path("private")).size(), 4);
    EXPECT_EQ(modeOf("folder"), 0777u);
    EXPECT_FALSE(QFileInfo::exists(path("absent")));
}

} // namespace
