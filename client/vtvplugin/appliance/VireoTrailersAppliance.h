#pragma once

#include "toolkit/appliance/Appliance.h"

class QObject;

// "Vireo Trailers" in the shell's top menu: the service's four ranked trailer lists.
// Every entry builds a fresh menu of the lists, so each visit fetches them anew.
class VireoTrailersAppliance : public shell::Appliance {
    Q_OBJECT
public:
    explicit VireoTrailersAppliance(QObject* parent = nullptr);
    ~VireoTrailersAppliance() override;

    QString moduleName() const override;
    QString moduleKey() const override;
    QString moduleIconName() const override;
    const shell::Bundle& bundle() const override;
    std::unique_ptr<shell::LayerController> applianceControllerWithScene(
        shell::Scene& scene) override;
};
