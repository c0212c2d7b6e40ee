#pragma once

#include "toolkit/stack/RemoteAction.h"

#include <QJsonObject>
#include <QObject>
#include <QStringList>

#include <memory>
#include <vector>

namespace shell {

class LayerController;

// The screens on the way from the shell's top menu to what the user sees, bottom to
// top. The stack owns them.
//
// Lifecycle messages, always in this order (screens rely on it):
//   push of C over T:  T.willBeBuried, C.resetLayout, C.willBePushed,
//                      (the stack changes),
//                      T.wasBuriedByPushingController(C), C.wasPushed
//   pop of T over B:   T.willBePopped, B.willBeExhumed,
//                      (the stack changes),
//                      T.wasPopped, B.wasExhumedByPoppingController(T)
// On an empty stack, or when the last controller is popped, the messages of the
// missing neighbour are left out. After wasPushed or wasExhumedByPoppingController the
// new top controller is told it is on top (LayerController::didBecomeTop).
//
// A popped controller is not destroyed at once: a screen may pop itself from inside
// its own handler. It is destroyed when the next action, push or pop starts from
// outside any handler, or with the stack.
class ControllerStack : public QObject {
    Q_OBJECT
public:
    explicit ControllerStack(QObject* parent = nullptr);
    // Destroys the controllers top to bottom without lifecycle messages.
    ~ControllerStack() override;

    void pushController(std::unique_ptr<LayerController> controller);
    // Pops the top controller (nothing on an empty stack).
    void popController();
    // Pops the top controller and hands it back, so that it can be pushed again.
    std::unique_ptr<LayerController> takeTopController();

    LayerController* topController() const;
    int count() const { return int(m_controllers.size()); }
    // Index 0 is the bottom.
    LayerController* controllerAt(int index) const;
    // The topmost (or, with `deepest`, the bottommost) controller whose label is
    // `label`; null when none is.
    LayerController* controllerLabelled(const QString& label, bool deepest) const;
    // The labels, bottom to top.
    QStringList labels() const;

    // Gives the action to the top controller. An unused Menu pops the top controller
    // unless it is the only one. False when nothing used the action.
    bool handleAction(RemoteAction action);

    // The top controller's describe() plus "stack" (the labels, bottom to top); an
    // empty object on an empty stack.
    QJsonObject describeTop() const;

signals:
    // The stack changed or the top controller's state did.
    void changed();

private:
    class Dispatch;

    void destroyRetired();

    std::vector<std::unique_ptr<LayerController>> m_controllers;
    std::vector<std::unique_ptr<LayerController>> m_retired;
    int m_depth = 0;
};

} // namespace shell
