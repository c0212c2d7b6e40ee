#include "toolkit/stack/RateLimiter.h"

#include <algorithm>

namespace shell {

RateLimiter::RateLimiter(int burst, int perSecond)
    : m_burst(burst)
    , m_perMS(perSecond / 1000.0)
    , m_tokens(burst)
{
    m_clock.start();
}

bool RateLimiter::take()
{
    const qint64 now = m_clock.elapsed();
    m_tokens = std::min(m_burst, m_tokens + double(now - m_lastMS) * m_perMS);
    m_lastMS = now;
    if (m_tokens < 1.0)
        return false;
    m_tokens -= 1.0;
    return true;
}

} // namespace shell
