#include "input/CecInput.h"

#include "input/RemoteLog.h"

namespace mediashell {

using shell::RemoteAction;

namespace {

    // The TV repeats a held button every few hundred milliseconds; a code after a longer
    // silence is a new press, should its release have been lost on the bus.
    constexpr qint64 kRepeatGapMS = 1'000;
    constexpr int kLargestCode = 0xff;

    QString hexName(int code)
    {
        return QStringLiteral("0x%1").arg(code, 2, 16, QLatin1Char('0'));
    }

} // namespace

CecInput::CecInput(std::unique_ptr<CecAdapter> adapter, RemoteButtonMap codes, QObject* parent)
    : QObject(parent)
    , m_adapter(std::move(adapter))
    , m_codes(std::move(codes))
{
}

CecInput::~CecInput()
{
    if (m_opening.joinable())
        m_opening.join();
    if (m_open) {
        m_adapter->close();
        qCDebug(lcRemote) << "HDMI-CEC adapter released";
    }
}

RemoteButtonMap CecInput::defaultCodes()
{
    return RemoteButtonMap(&CecInput::codeName,
        {
            { "0x00", "select" }, // Select
            { "0x01", "up" }, { "0x02", "down" }, { "0x03", "left" }, { "0x04", "right" },
            { "0x09", "menu" }, // Root Menu
            { "0x0d", "menu" }, // Exit
            { "0x91", "menu" }, // Return, on some TVs
            { "0x2b", "select" }, // Enter
            { "0x44", "playpause" }, // Play
            { "0x46", "playpause" }, // Pause
            { "0x60", "playpause" }, // Play Function
            { "0x61", "playpause" }, // Pause-Play Function
            { "0x45", "menu" }, // Stop, as the keyboard's Media Stop
            { "0x35", "info" }, // Display Information
        });
}

QString CecInput::codeName(const QString& text)
{
    const QString trimmed = text.trimmed();
    bool isNumber = false;
    const int code = trimmed.startsWith(u"0x", Qt::CaseInsensitive)
        ? trimmed.mid(2).toInt(&isNumber, 16)
        : trimmed.toInt(&isNumber, 10);
    if (!isNumber || code < 0 || code > kLargestCode)
        return {};
    return hexName(code);
}

void CecInput::start()
{
    if (m_opening.joinable())
        return;
    m_opening = std::thread([this] { openAdapter(); });
}

// On the opening thread; the outcome is reported on this object's.
void CecInput::openAdapter()
{
    QString why;
    const std::optional<QStringList> ports = m_adapter->detect(&why);
    if (!ports)
        return report(QtWarningMsg,
            QStringLiteral("Warning: HDMI-CEC is off, libcec cannot be used: %1").arg(why), false);
    if (ports->isEmpty())
        return report(
            QtInfoMsg, QStringLiteral("No HDMI-CEC adapter: the TV's remote is not used"), false);
    const QString port = ports->first();
    const auto keys = [this](int code, unsigned heldMS) {
        QMetaObject::invokeMethod(
            this, [this, code, heldMS] { handleKey(code, heldMS); }, Qt::QueuedConnection);
    };
    if (!m_adapter->open(port, keys, &why))
        return report(QtWarningMsg,
            QStringLiteral("Warning: cannot open the HDMI-CEC adapter %1: %2").arg(port, why),
            false);
    m_open = true;
    if (!m_adapter->setActiveSource())
        return report(QtWarningMsg,
            QStringLiteral("Warning: HDMI-CEC adapter %1 is open, but the TV did not switch "
                           "to the box")
                .arg(port),
            true);
    report(QtInfoMsg,
        QStringLiteral("HDMI-CEC adapter %1 is open; the box is the active source").arg(port),
        true);
}

void CecInput::report(QtMsgType type, const QString& line, bool open)
{
    QMetaObject::invokeMethod(
        this,
        [this, type, line, open] {
            if (type == QtWarningMsg)
                qCWarning(lcRemote).noquote() << line;
            else
                qCInfo(lcRemote).noquote() << line;
            emit started(open);
        },
        Qt::QueuedConnection);
}

void CecInput::handleKey(int code, unsigned heldMS)
{
    if (heldMS > 0) {
        if (code == m_heldCode)
            m_heldCode = -1;
        return;
    }
    const bool repeat = code == m_heldCode && m_sinceHeldCode.elapsed() < kRepeatGapMS;
    m_heldCode = code;
    m_sinceHeldCode.start();
    const QString name = hexName(code);
    const std::optional<RemoteAction> action = m_codes.action(name);
    if (!action) {
        qCDebug(lcRemote).noquote() << "HDMI-CEC code" << name << "is bound to nothing";
        return;
    }
    if (repeat && !RemoteButtonMap::repeatsWhenHeld(*action))
        return;
    emit actionTriggered(*action);
}

} // namespace mediashell
