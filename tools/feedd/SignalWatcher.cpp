#include "SignalWatcher.h"

#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {

volatile sig_atomic_t g_writeFd = -1;

void onSignal(int signal)
{
    const int saved = errno;
    const char number = char(signal);
    if (g_writeFd >= 0) {
        const ssize_t written = ::write(g_writeFd, &number, 1);
        (void)written; // nothing to be done about a full pipe inside a handler
    }
    errno = saved;
}

} // namespace

SignalWatcher::SignalWatcher(std::initializer_list<int> watched, QObject* parent)
    : QObject(parent)
    , m_watched(watched)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, m_fds) != 0)
        return;
    g_writeFd = m_fds[1];
    m_notifier = std::make_unique<QSocketNotifier>(m_fds[0], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &SignalWatcher::readSignal);
    struct sigaction action { };
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int signal : m_watched)
        ::sigaction(signal, &action, nullptr);
}

SignalWatcher::~SignalWatcher()
{
    for (const int signal : m_watched)
        ::signal(signal, SIG_DFL);
    g_writeFd = -1;
    m_notifier.reset();
    for (const int fd : m_fds) {
        if (fd >= 0)
            ::close(fd);
    }
}

void SignalWatcher::readSignal()
{
    char number = 0;
    while (::read(m_fds[0], &number, 1) == 1)
        emit received(int(static_cast<unsigned char>(number)));
}
