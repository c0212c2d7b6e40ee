#include "vtvplugin/trailers/TrailerCredentials.h"
#include "vtvplugin/trailers/TrailerEndpoint.h"
#include "vtvplugin/trailers/TrailerRequest.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// Digests computed independently (Python's hashlib) over the documented input.
TEST(TrailerRequestTest, SignsMethodParametersAndSecretInOrder)
{
    const auto parameters = TrailerRequest::loaderParameters(u"KEY123"_s);
    EXPECT_EQ(TrailerRequest::signatureInput(
                  u"vireo.stats.videos.getTopRated"_s, parameters, u"s3cret"_s),
        u"vireo.stats.videos.getTopRatedapiKeyKEY123limit25offset0timePeriod4"
        u"videoLoadBitVector17s3cret"_s);
    const struct {
        const char* name;
        QString method;
        TrailerRequest::Parameters parameters;
        QString secret, digest;
    } rows[] = {
        { "ASCII", u"vireo.stats.videos.getTopRated"_s, parameters, u"s3cret"_s,
            u"22c3fe78c51db7780e4afff0a9bb49202bf0758f"_s },
        { "non-ASCII as UTF-8", u"vireo.stats.videos.getMostViewed"_s,
            TrailerRequest::loaderParameters(u"K\u00e9"_s), u"x"_s,
            u"f1ec9244fe23b3f15027d31c4109e0649d54a921"_s },
        // The digest stops at the first NUL, as it always has.
        { "up to a NUL", u"abc"_s, {}, QChar(0) + u"tail"_s,
            u"a9993e364706816aba3e25717850c26c9cd0d89d"_s },
    };
    for (const auto& row : rows)
        EXPECT_EQ(TrailerRequest::signature(row.method, row.parameters, row.secret), row.digest)
            << row.name;
}

TEST(TrailerRequestTest, BodyIsByteForByteTheServicesCall)
{
    EXPECT_EQ(TrailerRequest::body(u"vireo.stats.videos.getTopFavorites"_s, u"K"_s, u"S"_s),
        "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
        "<methodCall><methodName>vireo.stats.videos.getTopFavorites</methodName>\n"
        "<params><param><value><struct>\n"
        "<member><name>apiKey</name><value><string>K</string></value></member>\n"
        "<member><name>limit</name><value><int>25</int></value></member>\n"
        "<member><name>offset</name><value><int>0</int></value></member>\n"
        "<member><name>timePeriod</name><value><int>4</int></value></member>\n"
        "<member><name>videoLoadBitVector</name><value><int>17</int></value></member>\n"
        "<member><name>signature</name><value><string>S</string></value></member>\n"
        "</struct></value></param></params>\n"
        "</methodCall>");
}

TEST(TrailerRequestTest, TheCredentialsAreNoReadableTextInTheProgram)
{
    const QString key = TrailerCredentials::apiKey();
    const QString secret = TrailerCredentials::signingSecret();
    EXPECT_EQ(key.size(), 32);
    EXPECT_FALSE(secret.isEmpty());
    QFile self(u"/proc/self/exe"_s);
    ASSERT_TRUE(self.open(QIODevice::ReadOnly));
    const QByteArray image = self.readAll();
    EXPECT_FALSE(image.contains(key.toLatin1()));
    EXPECT_FALSE(image.contains(secret.toLatin1()));
}

// The environment, then the setting, then the local service; a bad value is passed
// over for the next one. Only plain http bases count.
TEST(TrailerEndpointTest, EnvironmentThenSettingThenTheLocalService)
{
    QTemporaryDir config;
    qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
    const auto set = [](const char* environment, const QString& setting) {
        qputenv(TrailerEndpoint::environmentVariable(), environment);
        QSettings(TrailerEndpoint::settingsFilePath(), QSettings::IniFormat)
            .setValue(TrailerEndpoint::settingKey(), setting);
    };
    const struct {
        const char* environment;
        QString setting, expected;
    } rows[] = {
        { "", u""_s, u"http://127.0.0.1:8642/xmlrpc/"_s },
        { "", u"http://feeds.example:9000"_s, u"http://feeds.example:9000/xmlrpc/"_s },
        { "http://[::1]:7000/", u"http://feeds.example:9000"_s, u"http://[::1]:7000/xmlrpc/"_s },
        { "ftp://127.0.0.1:21", u"http://feeds.example:9000"_s,
            u"http://feeds.example:9000/xmlrpc/"_s },
        { "ftp://127.0.0.1:21", u"not a url"_s, u"http://127.0.0.1:8642/xmlrpc/"_s },
    };
    for (const auto& row : rows) {
        set(row.environment, row.setting);
        EXPECT_EQ(TrailerEndpoint::xmlrpcUrl().toString(), row.expected) << row.environment;
    }
    qunsetenv(TrailerEndpoint::environmentVariable());

    for (const char* bad : { "https://h:1", "http://", "http://h/path", "http://u:p@h:1",
             "http://h:1?q", "http://h:1#f", "http://h:99999", "h:1" })
        EXPECT_FALSE(TrailerEndpoint::parseBase(QString::fromLatin1(bad)).isValid()) << bad;
    EXPECT_EQ(
        TrailerEndpoint::parseBase(u" http://10.0.0.2:81/ "_s).toString(), u"http://10.0.0.2:81"_s);
}

} // namespace
