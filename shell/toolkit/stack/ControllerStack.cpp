#include "toolkit/stack/ControllerStack.h"

#include "toolkit/ToolkitLog.h"
#include "toolkit/stack/LayerController.h"

#include <QJsonArray>

namespace shell {

// Counts the stack's calls that are under way, so that retired controllers are only
// destroyed outside every call: a handler of a popped controller may still be running
// further up the call chain. They go from the event loop once the outermost call has
// returned (a popped player should not keep its decoder until the next key), or at the
// start of the next outermost call, whichever comes first.
class ControllerStack::Dispatch {
public:
    explicit Dispatch(ControllerStack& stack)
        : m_stack(stack)
    {
        if (m_stack.m_depth++ == 0)
            m_stack.m_retired.clear();
    }
    ~Dispatch()
    {
        if (--m_stack.m_depth == 0 && !m_stack.m_retired.empty())
            QMetaObject::invokeMethod(
                &m_stack, &ControllerStack::destroyRetired, Qt::QueuedConnection);
    }
    Dispatch(const Dispatch&) = delete;
    Dispatch& operator=(const Dispatch&) = delete;

private:
    ControllerStack& m_stack;
};

ControllerStack::ControllerStack(QObject* parent)
    : QObject(parent)
{
}

ControllerStack::~ControllerStack()
{
    m_retired.clear();
    while (!m_controllers.empty()) {
        std::unique_ptr<LayerController> top = std::move(m_controllers.back());
        m_controllers.pop_back();
        top->m_stack = nullptr;
        top.reset();
    }
}

void ControllerStack::pushController(std::unique_ptr<LayerController> controller)
{
    if (!controller)
        return;
    const Dispatch dispatch(*this);
    LayerController* const below = topController();
    LayerController* const pushed = controller.get();
    qCDebug(lcStack).noquote() << "Push" << pushed->label();

    if (below)
        below->willBeBuried();
    pushed->resetLayout();
    pushed->willBePushed();

    connect(pushed, &LayerController::changed, this, [this, pushed] {
        if (topController() == pushed)
            emit changed();
    });
    pushed->m_stack = this;
    m_controllers.push_back(std::move(controller));

    if (below)
        below->wasBuriedByPushingController(pushed);
    pushed->wasPushed();
    // A screen may push another one from wasPushed; only the real top is told.
    if (topController() == pushed)
        pushed->didBecomeTop(true);
    emit changed();
}

void ControllerStack::destroyRetired()
{
    if (m_depth == 0)
        m_retired.clear();
}

void ControllerStack::popController()
{
    const Dispatch dispatch(*this);
    if (std::unique_ptr<LayerController> popped = takeTopController())
        m_retired.push_back(std::move(popped));
}

std::unique_ptr<LayerController> ControllerStack::takeTopController()
{
    if (m_controllers.empty())
        return nullptr;
    const Dispatch dispatch(*this);
    LayerController* const popped = topController();
    LayerController* const below = controllerAt(count() - 2);
    qCDebug(lcStack).noquote() << "Pop" << popped->label();

    popped->willBePopped();
    if (below)
        below->willBeExhumed();

    std::unique_ptr<LayerController> taken = std::move(m_controllers.back());
    m_controllers.pop_back();
    taken->m_stack = nullptr;

    taken->wasPopped();
    if (below) {
        below->wasExhumedByPoppingController(popped);
        if (topController() == below)
            below->didBecomeTop(false);
    }
    emit changed();
    return taken;
}

LayerController* ControllerStack::topController() const
{
    return m_controllers.empty() ? nullptr : m_controllers.back().get();
}

LayerController* ControllerStack::controllerAt(int index) const
{
    if (index < 0 || index >= count())
        return nullptr;
    return m_controllers[size_t(index)].get();
}

LayerController* ControllerStack::controllerLabelled(const QString& label, bool deepest) const
{
    if (deepest) {
        for (const auto& controller : m_controllers) {
            if (controller->label() == label)
                return controller.get();
        }
        return nullptr;
    }
    for (auto it = m_controllers.rbegin(); it != m_controllers.rend(); ++it) {
        if ((*it)->label() == label)
            return it->get();
    }
    return nullptr;
}

QStringList ControllerStack::labels() const
{
    QStringList labels;
    for (const auto& controller : m_controllers)
        labels.append(controller->label());
    return labels;
}

bool ControllerStack::handleAction(RemoteAction action)
{
    const Dispatch dispatch(*this);
    LayerController* const top = topController();
    if (!top)
        return false;
    qCDebug(lcStack).noquote() << "Action" << remoteActionName(action) << "to" << top->label();
    if (top->handleAction(action))
        return true;
    if (action == RemoteAction::Menu && count() > 1) {
        popController();
        return true;
    }
    return false;
}

QJsonObject ControllerStack::describeTop() const
{
    const LayerController* const top = topController();
    if (!top)
        return {};
    QJsonObject object = top->describe();
    object.insert(QStringLiteral("stack"), QJsonArray::fromStringList(labels()));
    return object;
}

} // namespace shell
