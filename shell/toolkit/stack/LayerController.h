#pragma once

#include "toolkit/scene/Control.h"
#include "toolkit/stack/RemoteAction.h"

#include <QJsonObject>
#include <QObject>
#include <QString>

#include <memory>
#include <vector>

namespace shell {

class ControllerStack;
class Scene;

// One screen of the shell. The controller stack owns it and sends it the lifecycle
// messages in the order ControllerStack documents; an override of a lifecycle message
// must call the base version. Every subclass declares Q_OBJECT: its class name is the
// label the stack finds it by and the "label" describe() reports.
class LayerController : public QObject {
    Q_OBJECT
public:
    explicit LayerController(Scene& scene);
    ~LayerController() override;

    Scene& scene() const { return m_scene; }
    // The stack this controller is on, null while it is on none.
    ControllerStack* stack() const { return m_stack; }

    // The class name without its namespace, e.g. "VireoApplianceController".
    QString label() const;
    // "menu", "centered", "layer" or "player".
    virtual QString kind() const;

    virtual void willBePushed();
    virtual void wasPushed();
    virtual void willBePopped();
    virtual void wasPopped();
    virtual void willBeBuried();
    virtual void wasBuriedByPushingController(LayerController* controller);
    virtual void willBeExhumed();
    virtual void wasExhumedByPoppingController(LayerController* controller);

    // Lays the controller out in its scene; the stack calls it just before
    // willBePushed. The base does nothing.
    virtual void resetLayout();

    // Controls are drawn in the order they were added.
    Control* addControl(std::unique_ptr<Control> control);
    const std::vector<std::unique_ptr<Control>>& controls() const { return m_controls; }

    // A remote action while this controller is on top. True when it was used; the
    // stack pops the top controller on an unused Menu. The base uses nothing.
    virtual bool handleAction(RemoteAction action);

    // What the controller shows, as one JSON object:
    // {"label", "kind", "title", "rows", "focus", "preview", "primaryText",
    //  "secondaryText", "controls", "player"}; absent parts are null or empty.
    // Subclasses start from the base's object and fill in what they show.
    virtual QJsonObject describe() const;

signals:
    // Something describe() reports has changed; the front end draws again.
    void changed();

protected:
    // A text for describe(): null when the text is null.
    static QJsonValue jsonText(const QString& text);

    // Called by the stack once the controller is on top: after wasPushed with
    // `pushed` true, after wasExhumedByPoppingController with `pushed` false.
    virtual void didBecomeTop(bool pushed);

private:
    friend class ControllerStack;

    Scene& m_scene;
    ControllerStack* m_stack = nullptr;
    std::vector<std::unique_ptr<Control>> m_controls;
};

} // namespace shell
