// The real vireo-feedd program: its demo, its log, its exit statuses and a clean stop on
// SIGTERM. Every process is bounded in time and killed if it hangs.

#include "FeeddProcess.h"
#include "FeeddTestSupport.h"

#include "vtvplugin/trailers/TrailerCredentials.h"
#include "vtvplugin/trailers/TrailerRequest.h"
#include "vtvplugin/trailers/TrailerTypes.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTemporaryDir>

using namespace feeddtest;

TEST(FeeddProgram, ServesItsDemoAndStopsCleanlyOnSigterm)
{
    if (QStandardPaths::findExecutable(QStringLiteral("ffmpeg")).isEmpty())
        GTEST_SKIP() << "ffmpeg, which makes the demo's clips, is not installed";
    application();
    FeeddProcess feedd(QStringLiteral(VIREO_FEEDD_BIN));
    const QString base = feedd.waitForBase();
    ASSERT_FALSE(base.isEmpty()) << feedd.output().toStdString();

    // Twelve or more clips with JPEG thumbnails, in four lists of ten or more.
    QFile file(feedd.demoLibrary() + u'/' + Catalogue::fileName());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QJsonObject catalogue = QJsonDocument::fromJson(file.readAll()).object();
    const QJsonArray trailers = catalogue.value(QStringLiteral("trailers")).toArray();
    EXPECT_GE(trailers.size(), 12);
    for (const QJsonValue& list : catalogue.value(QStringLiteral("lists")).toObject())
        EXPECT_GE(list.toArray().size(), 10);
    EXPECT_EQ(catalogue.value(QStringLiteral("lists")).toObject().size(), 4);
    EXPECT_TRUE(trailers[0]["thumbnail"].toString().endsWith(".jpg"));

    // A list and a range of a clip through the real program; each request logs one line.
    const QString method = TrailerTypes::methodName(1);
    const QString key = TrailerCredentials::apiKey();
    const quint16 port = quint16(base.section(u':', -1).toUInt());
    const HttpReply reply = exchange(port,
        post(TrailerRequest::body(method, key,
            TrailerRequest::signature(method, TrailerRequest::loaderParameters(key),
                TrailerCredentials::signingSecret()))));
    ASSERT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body.count("&lt;video&gt;"), trailers.size());
    const HttpReply clip = exchange(port, get("/media/0001x.flv", "Range: bytes=0-2\r\n"));
    EXPECT_EQ(clip.status, 206);
    EXPECT_EQ(clip.body, "FLV");

    EXPECT_EQ(feedd.terminate(), 0);
    const QString log = feedd.output();
    EXPECT_TRUE(log.contains(QStringLiteral("POST /xmlrpc/ 200 "))
        && log.contains(QStringLiteral("GET /media/0001x.flv 206 3 bytes ")))
        << log.toStdString();
}

TEST(FeeddProgram, ExitStatusesSayWhyItDidNotRun)
{
    application();
    QTemporaryDir dir;
    writeLibrary(dir.path(), 2);
    QTcpServer taken;
    ASSERT_TRUE(taken.listen(QHostAddress::LocalHost, 0));
    const QString busy = QStringLiteral("127.0.0.1:%1").arg(taken.serverPort());
    const struct {
        QStringList arguments;
        int status;
        const char* says; // on standard output for 0, standard error otherwise
    } cases[] = {
        { { "--help" }, 0, "--listen <HOST:PORT>" },
        { { "--version" }, 0, "vireo-feedd 1." },
        { { "--bogus" }, 2, "Unknown option 'bogus'" },
        { { "--listen", "nowhere" }, 2, "--listen wants HOST:PORT" },
        { { "extra" }, 2, "unexpected argument: extra" },
        { { "--library", dir.filePath("missing") }, 1, "missing/catalogue.json" },
        { { "--library", dir.path(), "--listen", busy }, 1, "cannot listen on 127.0.0.1" },
    };
    for (const auto& c : cases) {
        QProcess feedd;
        feedd.start(QStringLiteral(VIREO_FEEDD_BIN), c.arguments);
        if (!feedd.waitForFinished(10000))
            feedd.kill();
        EXPECT_EQ(feedd.exitStatus() == QProcess::NormalExit ? feedd.exitCode() : -1, c.status)
            << c.says;
        const QByteArray text
            = c.status == 0 ? feedd.readAllStandardOutput() : feedd.readAllStandardError();
        EXPECT_TRUE(text.contains(c.says)) << text.toStdString();
    }
}
