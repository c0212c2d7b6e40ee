#include "input/LircInput.h"

#include "input/RemoteLog.h"

#include <QLocalSocket>
#include <QTimer>

#include <algorithm>

namespace mediashell {

using shell::RemoteAction;

namespace {

    // lircd restarts within a second or two; an absent lircd costs a try every 10 s.
    constexpr int kFirstRetryMS = 250;
    constexpr int kLastRetryMS = 10'000;
    // A lircd line is some 50 bytes; its names are short.
    constexpr qsizetype kLongestLine = 512;
    constexpr qsizetype kLongestName = 128;
    // What the socket holds unread: enough for hundreds of lines, bounded in a flood.
    constexpr qint64 kReadBuffer = 64 * 1024;
    // A held button repeats after this, as a held key does.
    constexpr qint64 kRepeatDelayMS = 250;
    // A sofa presses a few buttons a second; ten at once, then twenty a second at most.
    constexpr int kBurst = 10;
    constexpr int kPerSecond = 20;

} // namespace

LircInput::LircInput(QString socketPath, RemoteButtonMap buttons, QObject* parent)
    : QObject(parent)
    , m_path(std::move(socketPath))
    , m_buttons(std::move(buttons))
    , m_socket(new QLocalSocket(this))
    , m_retry(new QTimer(this))
    , m_retryMS(kFirstRetryMS)
    , m_rate(kBurst, kPerSecond)
{
    m_sincePress.start();
    m_socket->setReadBufferSize(kReadBuffer);
    m_retry->setSingleShot(true);
    connect(m_retry, &QTimer::timeout, this, &LircInput::connectToLircd);
    connect(m_socket, &QLocalSocket::connected, this, &LircInput::connected);
    connect(m_socket, &QLocalSocket::readyRead, this, &LircInput::readAvailable);
    // A refused or failed connection and a closed one alike.
    connect(
        m_socket, &QLocalSocket::stateChanged, this, [this](QLocalSocket::LocalSocketState state) {
            if (state != QLocalSocket::UnconnectedState)
                return;
            // Qt calls a missing socket file an invalid name; lircd is simply not running.
            lost(m_socket->error() == QLocalSocket::ServerNotFoundError
                    ? QStringLiteral("no such socket")
                    : m_socket->errorString());
        });
}

LircInput::~LircInput()
{
    // No retry or log line from a socket that goes with this object.
    m_socket->disconnect(this);
}

RemoteButtonMap LircInput::defaultButtons()
{
    return RemoteButtonMap(&LircInput::buttonName,
        {
            { "KEY_UP", "up" },
            { "KEY_DOWN", "down" },
            { "KEY_LEFT", "left" },
            { "KEY_RIGHT", "right" },
            { "KEY_OK", "select" },
            { "KEY_ENTER", "select" },
            { "KEY_SELECT", "select" },
            { "KEY_BACK", "menu" },
            { "KEY_EXIT", "menu" },
            { "KEY_MENU", "menu" },
            { "KEY_ESC", "menu" },
            { "KEY_STOP", "menu" },
            { "KEY_PLAYPAUSE", "playpause" },
            { "KEY_PLAY", "playpause" },
            { "KEY_PAUSE", "playpause" },
            { "KEY_INFO", "info" },
        });
}

QString LircInput::buttonName(const QString& text)
{
    const bool plain = !text.isEmpty() && text.size() <= kLongestName
        && std::none_of(text.begin(), text.end(), [](QChar c) { return c.isSpace(); });
    return plain ? text : QString();
}

void LircInput::start()
{
    if (m_socket->state() == QLocalSocket::UnconnectedState && !m_retry->isActive())
        connectToLircd();
}

void LircInput::connectToLircd()
{
    m_line.clear();
    m_skippingLine = false;
    m_loggedIgnored = false;
    m_socket->connectToServer(m_path, QIODevice::ReadOnly);
}

void LircInput::connected()
{
    qCInfo(lcRemote).noquote() << "Reading lircd at" << m_path;
    m_wasConnected = true;
    m_retryMS = kFirstRetryMS;
    m_logged = false;
}

void LircInput::lost(const QString& why)
{
    if (m_retry->isActive())
        return;
    // Most desktops have no lircd at all: only losing one that answered is worth a warning.
    if (!m_logged && m_wasConnected)
        qCWarning(lcRemote).noquote()
            << QStringLiteral("Warning: no lircd at %1 (%2); trying again in the background")
                   .arg(m_path, why);
    else if (!m_logged)
        qCInfo(lcRemote).noquote()
            << QStringLiteral("No lircd at %1 (%2); trying again in the background")
                   .arg(m_path, why);
    else
        qCDebug(lcRemote).noquote() << "lircd at" << m_path << "again in" << m_retryMS << "ms";
    m_logged = true;
    m_retry->start(m_retryMS);
    m_retryMS = std::min(m_retryMS * 2, kLastRetryMS);
}

void LircInput::readAvailable()
{
    char chunk[4096];
    qint64 read = 0;
    while ((read = m_socket->read(chunk, sizeof chunk)) > 0)
        takeBytes(QByteArrayView(chunk, read));
}

void LircInput::takeBytes(QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const qsizetype newline = bytes.indexOf('\n');
        const QByteArrayView piece = newline < 0 ? bytes : bytes.first(newline);
        if (!m_skippingLine && m_line.size() + piece.size() > kLongestLine) {
            ignore("a line longer than lircd's", m_line);
            m_skippingLine = true;
            m_line.clear();
        }
        if (!m_skippingLine)
            m_line.append(piece);
        if (newline < 0)
            return;
        if (!m_skippingLine)
            takeLine(m_line);
        m_line.clear();
        m_skippingLine = false;
        bytes = bytes.sliced(newline + 1);
    }
}

void LircInput::takeLine(QByteArrayView line)
{
    const QList<QByteArray> fields = line.toByteArray().simplified().split(' ');
    bool isCode = false;
    bool isCount = false;
    if (fields.size() == 4) {
        fields[0].toULongLong(&isCode, 16);
        fields[1].toUInt(&isCount, 16);
    }
    const QString button = isCode && isCount ? buttonName(QString::fromUtf8(fields[2])) : QString();
    if (button.isEmpty())
        return ignore("a line that is not lircd's", line);
    const std::optional<RemoteAction> action = m_buttons.action(button);
    if (!action) {
        qCDebug(lcRemote).noquote() << "lircd button" << button << "is bound to nothing";
        return;
    }
    const bool repeat = fields[1].toUInt(nullptr, 16) > 0;
    if (repeat
        && (!RemoteButtonMap::repeatsWhenHeld(*action) || m_sincePress.elapsed() < kRepeatDelayMS))
        return;
    if (!repeat)
        m_sincePress.start();
    // Over the rate, an action is dropped: a flood must not pile up work for the shell.
    if (m_rate.take())
        emit actionTriggered(*action);
}

void LircInput::ignore(const char* what, QByteArrayView line)
{
    // Once a connection: a flood of such lines must not become a flood of log lines.
    if (!m_loggedIgnored)
        qCDebug(lcRemote).noquote()
            << "Ignoring" << what
            << "from lircd:" << line.first(std::min<qsizetype>(line.size(), 40));
    m_loggedIgnored = true;
}

} // namespace mediashell
