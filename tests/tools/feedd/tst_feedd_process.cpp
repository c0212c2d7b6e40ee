// The real vireo-feedd program: its demo, its announcement, its log, its exit statuses
// and a clean stop on SIGTERM. Every process is bounded in time and killed if it hangs.

#include "FeeddTestSupport.h"

#include "vtvplugin/trailers/TrailerCredentials.h"
#include "vtvplugin/trailers/TrailerRequest.h"
#include "vtvplugin/trailers/TrailerTypes.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QTcpServer>

#include <csignal>

using namespace feeddtest;

namespace {

struct Outcome {
    int status = -1;
    QString out;
    QString err;
};

Outcome runFeedd(const QStringList& arguments, int timeoutMs = 10000)
{
    application();
    QProcess feedd;
    feedd.start(QStringLiteral(VIREO_FEEDD_BIN), arguments);
    if (!feedd.waitForFinished(timeoutMs)) {
        feedd.kill();
        feedd.waitForFinished();
        return {};
    }
    return { feedd.exitStatus() == QProcess::NormalExit ? feedd.exitCode() : -1,
        QString::fromUtf8(feedd.readAllStandardOutput()),
        QString::fromUtf8(feedd.readAllStandardError()) };
}

// One ffmpeg run decodes every file, so each is known to play to its end, and describes
// each input as "FORMAT CODEC...". Empty when ffmpeg refuses any of them.
QStringList decodeAll(const QStringList& files)
{
    QStringList arguments { QStringLiteral("-hide_banner"), QStringLiteral("-nostdin") };
    for (const QString& file : files)
        arguments << QStringLiteral("-i") << file;
    for (qsizetype i = 0; i < files.size(); ++i)
        arguments << QStringLiteral("-map") << QString::number(i);
    arguments << QStringLiteral("-f") << QStringLiteral("null") << QStringLiteral("-");
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"), arguments);
    if (!ffmpeg.waitForFinished(30000) || ffmpeg.exitCode() != 0) {
        ffmpeg.kill();
        ffmpeg.waitForFinished();
        return {};
    }
    const QString log = QString::fromUtf8(ffmpeg.readAllStandardError())
                            .section(QStringLiteral("Output #0"), 0, 0);
    static const QRegularExpression stream(
        QStringLiteral("Stream #\\d+:\\d+\\S*: (?:Video|Audio): (\\w+)"));
    QStringList inputs;
    for (const QString& block : log.split(QStringLiteral("Input #")).mid(1)) {
        QString description = block.section(QLatin1Char(','), 1, 1).trimmed();
        for (const QRegularExpressionMatch& match : stream.globalMatch(block))
            description += QLatin1Char(' ') + match.captured(1);
        inputs.append(description);
    }
    return inputs;
}

} // namespace

class FeeddProcess : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_dir.isValid()); }
    void TearDown() override
    {
        if (m_feedd.state() != QProcess::NotRunning) {
            m_feedd.kill();
            m_feedd.waitForFinished(5000);
        }
    }
    QString library() const { return m_dir.path() + QStringLiteral("/library"); }

    // The service's base URL, once it has printed it.
    QString start(const QStringList& arguments, int timeoutMs)
    {
        application();
        m_feedd.start(QStringLiteral(VIREO_FEEDD_BIN), arguments);
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < timeoutMs && m_feedd.state() != QProcess::NotRunning) {
            if (m_feedd.canReadLine())
                return QString::fromUtf8(m_feedd.readLine()).trimmed();
            m_feedd.waitForReadyRead(100);
        }
        return {};
    }

    QTemporaryDir m_dir;
    QProcess m_feedd;
};

TEST_F(FeeddProcess, DemoIsServedAndSigtermStopsTheServiceCleanly)
{
    if (QStandardPaths::findExecutable(QStringLiteral("ffmpeg")).isEmpty())
        GTEST_SKIP() << "ffmpeg is not installed";
    const QString base = start({ QStringLiteral("--demo"), QStringLiteral("--library"), library(),
                                   QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0") },
        30000);
    ASSERT_TRUE(QRegularExpression(QStringLiteral("^http://127\\.0\\.0\\.1:[1-9][0-9]*$"))
                    .match(base)
                    .hasMatch())
        << base.toStdString() << m_feedd.readAllStandardError().toStdString();

    // The demo: twelve or more clips and JPEG thumbnails, four lists of ten or more in
    // different orders.
    QFile file(library() + QLatin1Char('/') + Catalogue::fileName());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QJsonObject catalogue = QJsonDocument::fromJson(file.readAll()).object();
    const QJsonArray trailers = catalogue.value(QStringLiteral("trailers")).toArray();
    EXPECT_GE(trailers.size(), 12);
    QSet<QString> orders;
    for (const QJsonValue& list : catalogue.value(QStringLiteral("lists")).toObject()) {
        EXPECT_GE(list.toArray().size(), 10);
        orders.insert(QString::fromUtf8(QJsonDocument(list.toArray()).toJson()));
    }
    EXPECT_EQ(orders.size(), 4);
    QStringList files;
    QStringList expected;
    for (const QJsonValue& trailer : trailers) {
        const QString media
            = library() + QLatin1Char('/') + trailer[QStringLiteral("media")].toString();
        files << media
              << library() + QLatin1Char('/') + trailer[QStringLiteral("thumbnail")].toString();
        expected << QStringLiteral("flv h264 aac") << QStringLiteral("image2 mjpeg");
        EXPECT_EQ(QFileInfo(media).size(), trailer[QStringLiteral("size")].toInteger());
    }
    EXPECT_EQ(decodeAll(files).join(QLatin1Char('\n')).toStdString(),
        expected.join(QLatin1Char('\n')).toStdString());

    // A list and a trailer through the real program; each request logs one line.
    const QString method = TrailerTypes::methodName(1);
    const QString key = TrailerCredentials::apiKey();
    const QByteArray body = TrailerRequest::body(method, key,
        TrailerRequest::signature(
            method, TrailerRequest::loaderParameters(key), TrailerCredentials::signingSecret()));
    const quint16 port = quint16(base.section(QLatin1Char(':'), -1).toUInt());
    const HttpReply reply = exchange(port, post(body));
    ASSERT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body.count("&lt;video&gt;"), trailers.size());
    const HttpReply clip = exchange(port, get("/media/0001x.flv", "Range: bytes=0-2\r\n"));
    EXPECT_EQ(clip.status, 206);
    EXPECT_EQ(clip.body, "FLV");

    ::kill(pid_t(m_feedd.processId()), SIGTERM);
    ASSERT_TRUE(m_feedd.waitForFinished(5000));
    EXPECT_EQ(m_feedd.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(m_feedd.exitCode(), 0);
    const QString log = QString::fromUtf8(m_feedd.readAllStandardError());
    EXPECT_TRUE(QRegularExpression(QStringLiteral("POST /xmlrpc/ 200 \\d+ bytes [0-9.]+ ms\n"))
                    .match(log)
                    .hasMatch())
        << log.toStdString();
    EXPECT_TRUE(log.contains(QStringLiteral("GET /media/0001x.flv 206 3 bytes ")))
        << log.toStdString();
}

TEST_F(FeeddProcess, ExitStatusesSayWhyItDidNotRun)
{
    QDir().mkpath(library());
    writeFile(library() + QLatin1Char('/') + Catalogue::fileName(), "{ not json");
    QTcpServer taken;
    ASSERT_TRUE(taken.listen(QHostAddress::LocalHost, 0));
    const QString busy = QStringLiteral("127.0.0.1:%1").arg(taken.serverPort());
    const QString empty = m_dir.path() + QStringLiteral("/empty");
    QDir().mkpath(empty);
    writeLibrary(empty, 2);

    const struct {
        QStringList arguments;
        int status;
        const char* says; // on standard output for 0, standard error otherwise
    } cases[] = {
        { { QStringLiteral("--help") }, 0, "--listen <HOST:PORT>" },
        { { QStringLiteral("--version") }, 0, "vireo-feedd 1." },
        { { QStringLiteral("--bogus") }, 2, "Unknown option 'bogus'" },
        { { QStringLiteral("--listen"), QStringLiteral("nowhere") }, 2,
            "--listen wants HOST:PORT" },
        { { QStringLiteral("--library") }, 2, "Missing value after '--library'" },
        { { QStringLiteral("extra") }, 2, "unexpected argument: extra" },
        { { QStringLiteral("--library"), library() }, 1, "catalogue.json: not JSON" },
        { { QStringLiteral("--library"), m_dir.path() + QStringLiteral("/missing") }, 1,
            "catalogue.json" },
        { { QStringLiteral("--library"), empty, QStringLiteral("--listen"), busy }, 1,
            "cannot listen on 127.0.0.1" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments.join(QLatin1Char(' ')).toStdString());
        const Outcome outcome = runFeedd(c.arguments);
        EXPECT_EQ(outcome.status, c.status);
        const QString& text = c.status == 0 ? outcome.out : outcome.err;
        EXPECT_TRUE(text.contains(QString::fromUtf8(c.says))) << text.toStdString();
    }
}
