#pragma once

#include "toolkit/appliance/Appliance.h"

#include <chrono>

class QObject;

// "Vireo Movies" in the shell's top menu. Every entry builds a fresh main menu over
// the home folder's "Movies"; when the shell is about to terminate, the menus are
// asked to stop whatever they still have pending. Resume points older than the cache's
// cleanup age are dropped a few seconds after the appliance is loaded and then once a
// day, so the cache does not grow for ever.
class VireoAppliance : public shell::Appliance {
    Q_OBJECT
public:
    static constexpr std::chrono::milliseconds kFirstCleanupDelay = std::chrono::seconds(3);
    static constexpr std::chrono::milliseconds kCleanupInterval = std::chrono::hours(24);

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
