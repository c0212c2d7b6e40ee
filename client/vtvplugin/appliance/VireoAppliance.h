#pragma once

#include "toolkit/appliance/Appliance.h"

class QObject;

// "Vireo Movies" in the shell's top menu. Every entry builds a fresh main menu over
// the home folder's "Movies"; when the shell is about to terminate, the menus are
// asked to stop whatever they still have pending.
class VireoAppliance : public shell::Appliance {
    Q_OBJECT
public:
    explicit VireoAppliance(QObject* parent = nullptr);
    ~VireoAppliance() override;

    QString moduleName() const override;
    QString moduleKey() const override;
    QString moduleIconName() const override;
    const shell::Bundle& bundle() const override;
    std::unique_ptr<shell::LayerController> applianceControllerWithScene(
        shell::Scene& scene) override;

    // The termination notice's handler.
    void appStopping(const QString& name, QObject* sender);
};
