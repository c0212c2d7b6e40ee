#include "PhoneRemote.h"

#include "PhoneRemoteAppliance.h"
#include "RemoteLog.h"

#include "views/ShellView.h"

#include <QHostInfo>
#include <QNetworkInterface>
#include <QSettings>

namespace mediashell {

PhoneRemote::PhoneRemote(Perform perform, const RemoteLimits& limits, QObject* parent)
    : QObject(parent)
    , m_perform(std::move(perform))
    , m_server(limits)
{
    m_screenChanged.setSingleShot(true);
    m_screenChanged.setInterval(0);
    connect(&m_screenChanged, &QTimer::timeout, this, &PhoneRemote::showScreen);
    connect(&m_server, &RemoteServer::actionRequested, this,
        [this](shell::RemoteAction action) { m_perform(action); });
    connect(&m_server, &RemoteServer::changed, this, &PhoneRemote::showPairing);
}

PhoneRemote::~PhoneRemote() = default;

bool PhoneRemote::start(quint16 port, QString* error)
{
    if (!m_server.listen(QHostAddress::Any, port, error))
        return false;
    m_pageUrl = findPageUrl(m_server.pagePort());
    m_appliance
        = std::make_unique<PhoneRemoteAppliance>(m_pageUrl, [this] { m_server.restartPairing(); });
    return true;
}

std::optional<quint16> PhoneRemote::configuredPort(int commandLinePort, const QString& settingsFile)
{
    if (commandLinePort >= 0)
        return quint16(commandLinePort);
    const QVariant value = QSettings(settingsFile, QSettings::IniFormat).value("remote/port");
    if (!value.isValid() || value.toString().isEmpty())
        return std::nullopt;
    bool number = false;
    const uint port = value.toString().toUInt(&number);
    if (number && port >= 1 && port <= 65534)
        return quint16(port);
    qCWarning(lcRemote).noquote() << "Ignoring the setting remote/port in" << settingsFile
                                  << "- not a port from 1 to 65534:" << value.toString();
    return std::nullopt;
}

QString PhoneRemote::findPageUrl(quint16 port)
{
    QString host = QHostInfo::localHostName();
    for (const QHostAddress& address : QNetworkInterface::allAddresses()) {
        if (address.protocol() == QAbstractSocket::IPv4Protocol && !address.isLoopback()
            && !address.isLinkLocal()) {
            host = address.toString();
            break;
        }
    }
    return QStringLiteral("http://%1:%2/").arg(host).arg(port);
}

shell::Appliance* PhoneRemote::appliance() const
{
    return m_appliance.get();
}

void PhoneRemote::follow(ShellView* view)
{
    if (m_view) {
        for (QObject* part : m_view->children())
            disconnect(part, nullptr, this, nullptr);
    }
    m_view = view;
    if (!view)
        return;
    const auto later = [this] { m_screenChanged.start(); };
    connect(view->screen(), &ScreenView::changed, this, later);
    connect(view->menu(), &MenuView::changed, this, later);
    connect(view->centered(), &CenteredView::changed, this, later);
    connect(view->player(), &PlayerView::changed, this, later);
    showPairing();
    showScreen();
}

void PhoneRemote::showScreen()
{
    if (!m_view)
        return;
    QString title;
    QString focused;
    switch (m_view->screen()->kind()) {
    case ScreenView::Kind::Menu:
    case ScreenView::Kind::Centered: {
        const bool centered = m_view->screen()->kind() == ScreenView::Kind::Centered;
        title = centered ? m_view->centered()->title() : m_view->menu()->title();
        const RowsModel* rows = m_view->menu()->rows();
        const int row = m_view->menu()->focusedRow();
        if (row >= 0 && row < rows->count())
            focused = rows->data(rows->index(row), RowsModel::TitleRole).toString();
        break;
    }
    case ScreenView::Kind::Player: {
        const PlayerView* player = m_view->player();
        if (player->state() == PlayerView::State::Prompt)
            focused = player->promptRows().value(player->promptFocus());
        break;
    }
    default:
        break;
    }
    m_server.setScreen(title, focused);
}

void PhoneRemote::showPairing()
{
    if (m_view)
        m_view->pairing()->update(m_server.pairingCode(), m_pageUrl);
}

} // namespace mediashell
