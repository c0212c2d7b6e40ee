#include "RemotePairing.h"

#include "RemoteLog.h"

#include <QRandomGenerator>

#include <array>

namespace mediashell {

namespace {

    // 128 bits: a token cannot be guessed where a code can.
    QString newToken()
    {
        std::array<quint32, 4> words {};
        QRandomGenerator::system()->fillRange(words.data(), words.size());
        return QString::fromLatin1(
            QByteArray(reinterpret_cast<const char*>(words.data()), sizeof(words)).toHex());
    }

    QString newCode()
    {
        return QStringLiteral("%1").arg(
            QRandomGenerator::system()->bounded(10000), 4, 10, QLatin1Char('0'));
    }

} // namespace

RemotePairing::RemotePairing(const RemoteLimits& limits, QObject* parent)
    : QObject(parent)
    , m_limits(limits)
{
    m_coolDownEnd.setSingleShot(true);
    connect(&m_coolDownEnd, &QTimer::timeout, this, [this] {
        qCInfo(lcRemote) << "Pairing takes codes again";
        setWaiting(m_waiting);
        emit changed();
    });
}

void RemotePairing::setCode(const QString& code)
{
    if (code == m_code)
        return;
    m_code = code;
    emit changed();
}

void RemotePairing::setWaiting(bool waiting)
{
    m_waiting = waiting;
    if (!waiting || isCoolingDown())
        setCode({});
    else if (m_code.isEmpty())
        setCode(newCode());
}

int RemotePairing::secondsLeft() const
{
    return int((m_coolDownEnd.remainingTime() + 999) / 1000);
}

RemotePairing::Attempt RemotePairing::tryCode(const QString& code)
{
    Attempt attempt;
    if (isCoolingDown()) {
        attempt.verdict = Verdict::CoolingDown;
        attempt.secondsLeft = secondsLeft();
        return attempt;
    }
    if (!m_code.isEmpty() && code == m_code) {
        m_wrong = 0;
        attempt.verdict = Verdict::Paired;
        attempt.token = newToken();
        m_tokens.append(attempt.token);
        while (m_tokens.size() > m_limits.maxTokens)
            m_tokens.removeFirst();
        setCode({});
        setWaiting(m_waiting);
        return attempt;
    }
    if (++m_wrong < m_limits.maxWrongCodes) {
        attempt.triesLeft = m_limits.maxWrongCodes - m_wrong;
        return attempt;
    }
    qCWarning(lcRemote) << m_wrong << "wrong pairing codes: pairing pauses for"
                        << m_limits.coolDownMS / 1000 << "s";
    m_wrong = 0;
    m_coolDownEnd.start(m_limits.coolDownMS);
    setCode({});
    attempt.verdict = Verdict::CoolingDown;
    attempt.secondsLeft = secondsLeft();
    return attempt;
}

bool RemotePairing::knows(const QString& token) const
{
    return !token.isEmpty() && m_tokens.contains(token);
}

void RemotePairing::forgetAll()
{
    qCInfo(lcRemote) << "Forgetting" << m_tokens.size() << "paired phone(s)";
    m_tokens.clear();
}

} // namespace mediashell
