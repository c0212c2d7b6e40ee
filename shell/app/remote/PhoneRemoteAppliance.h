#pragma once

#include "toolkit/appliance/Appliance.h"

#include <functional>

namespace mediashell {

// The phone remote's entry in the shell's top menu, beside the appliances the plugins
// bring: it opens the PhoneRemoteMenu. It has no icon.
class PhoneRemoteAppliance : public shell::Appliance {
    Q_OBJECT
public:
    PhoneRemoteAppliance(
        const QString& pageUrl, std::function<void()> restartPairing, QObject* parent = nullptr);
    ~PhoneRemoteAppliance() override;

    QString moduleName() const override;
    QString moduleKey() const override;
    QString moduleIconName() const override;
    const shell::Bundle& bundle() const override;
    std::unique_ptr<shell::LayerController> applianceControllerWithScene(
        shell::Scene& scene) override;

private:
    const QString m_pageUrl;
    const std::function<void()> m_restartPairing;
    const shell::Bundle m_bundle;
};

} // namespace mediashell
