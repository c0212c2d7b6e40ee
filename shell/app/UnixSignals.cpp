#include "UnixSignals.h"

#include "ShellLog.h"

#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace mediashell {

namespace {

    int g_fds[2] = { -1, -1 };
    struct sigaction g_previousTerm;
    struct sigaction g_previousInt;

    extern "C" void onSignal(int number)
    {
        const int saved = errno;
        const unsigned char byte = static_cast<unsigned char>(number);
        // A full socket only loses a repeated signal; the first one is already there.
        [[maybe_unused]] const ssize_t written = ::write(g_fds[0], &byte, 1);
        errno = saved;
    }

} // namespace

UnixSignals::UnixSignals(QObject* parent)
    : QObject(parent)
{
    if (g_fds[0] >= 0) {
        qCWarning(lcShell) << "Signals are already watched";
        return;
    }
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_fds) != 0) {
        qCWarning(lcShell) << "No socket pair for signals:" << strerror(errno);
        g_fds[0] = g_fds[1] = -1;
        return;
    }
    ::fcntl(g_fds[0], F_SETFL, ::fcntl(g_fds[0], F_GETFL) | O_NONBLOCK);
    ::fcntl(g_fds[1], F_SETFL, ::fcntl(g_fds[1], F_GETFL) | O_NONBLOCK);
    m_notifier = new QSocketNotifier(g_fds[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &UnixSignals::readSignal);

    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, &g_previousTerm);
    ::sigaction(SIGINT, &action, &g_previousInt);
}

UnixSignals::~UnixSignals()
{
    if (!m_notifier)
        return;
    ::sigaction(SIGTERM, &g_previousTerm, nullptr);
    ::sigaction(SIGINT, &g_previousInt, nullptr);
    delete m_notifier;
    m_notifier = nullptr;
    ::close(g_fds[0]);
    ::close(g_fds[1]);
    g_fds[0] = g_fds[1] = -1;
}

void UnixSignals::readSignal()
{
    unsigned char byte = 0;
    while (::read(g_fds[1], &byte, 1) == 1) {
        qCDebug(lcShell) << "Signal" << int(byte);
        emit received(int(byte));
    }
}

} // namespace mediashell
