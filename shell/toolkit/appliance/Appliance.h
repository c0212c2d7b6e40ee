#pragma once

#include "toolkit/appliance/Bundle.h"

#include <QObject>
#include <QString>

#include <memory>

namespace shell {

class LayerController;
class Scene;

// One entry of the shell's top menu, loaded from a plugin: its name, key, icon and the
// first screen shown when the user enters it.
class Appliance : public QObject {
    Q_OBJECT
public:
    ~Appliance() override;

    virtual QString moduleName() const = 0;
    virtual QString moduleKey() const = 0;
    // A resource of bundle(), e.g. "ApplianceIcon.png".
    virtual QString moduleIconName() const = 0;
    virtual const Bundle& bundle() const = 0;
    // A fresh first screen each time the user enters.
    virtual std::unique_ptr<LayerController> applianceControllerWithScene(Scene& scene) = 0;

protected:
    explicit Appliance(QObject* parent = nullptr);
};

} // namespace shell
