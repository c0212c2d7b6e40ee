#pragma once

#include <QElapsedTimer>

namespace shell {

// A token bucket: a burst of `burst` events at once, then `perSecond` events a second.
// An event over the rate is refused, not queued, so a flood from a remote (lircd, a
// phone) leaves no backlog of actions behind.
class RateLimiter {
public:
    RateLimiter(int burst, int perSecond);

    // True when an event may pass now, and counts it.
    bool take();

private:
    const double m_burst;
    const double m_perMS;
    double m_tokens;
    QElapsedTimer m_clock;
    qint64 m_lastMS = 0;
};

} // namespace shell
