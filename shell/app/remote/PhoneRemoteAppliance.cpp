#include "PhoneRemoteAppliance.h"

#include "PhoneRemoteMenu.h"

namespace mediashell {

PhoneRemoteAppliance::PhoneRemoteAppliance(
    const QString& pageUrl, std::function<void()> restartPairing, QObject* parent)
    : shell::Appliance(parent)
    , m_pageUrl(pageUrl)
    , m_restartPairing(std::move(restartPairing))
    // A root with no resources in it: no icon, no strings tables.
    , m_bundle(QStringLiteral(":/mediashell/phone-remote"))
{
}

PhoneRemoteAppliance::~PhoneRemoteAppliance() = default;

QString PhoneRemoteAppliance::moduleName() const
{
    return tr("Phone Remote");
}

QString PhoneRemoteAppliance::moduleKey() const
{
    return QStringLiteral("mediashell.phone-remote");
}

QString PhoneRemoteAppliance::moduleIconName() const
{
    return {};
}

const shell::Bundle& PhoneRemoteAppliance::bundle() const
{
    return m_bundle;
}

std::unique_ptr<shell::LayerController> PhoneRemoteAppliance::applianceControllerWithScene(
    shell::Scene& scene)
{
    return std::make_unique<PhoneRemoteMenu>(scene, m_pageUrl, m_restartPairing);
}

} // namespace mediashell
