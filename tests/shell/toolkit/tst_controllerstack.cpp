#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"
#include "toolkit/stack/LayerController.h"
#include "toolkit/stack/Sentinel.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QJsonArray>

#include <functional>
#include <ostream>

// Readable failures for QString and QStringList comparisons.
void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

// A named namespace, so that the labels prove the namespace is cut off.
namespace stacktest {

using shell::ControllerStack;
using shell::LayerController;
using shell::RemoteAction;

// What the recorders saw, in order. Each line ends with the stack's top at that moment,
// which tells whether the message came before or after the stack changed.
struct Journal {
    ControllerStack* stack = nullptr;
    QStringList lines;
    QStringList destroyed;

    void note(const QString& line)
    {
        const LayerController* top = stack ? stack->topController() : nullptr;
        lines << line + " [" + (top ? top->objectName() : QString()) + "]";
    }
};

// Notes the message, then hands it to the base as every override must.
#define RECORDED(message)                                                                          \
    void message() override                                                                        \
    {                                                                                              \
        note(#message);                                                                            \
        LayerController::message();                                                                \
    }

class Recorder : public LayerController {
    Q_OBJECT
public:
    Recorder(shell::Scene& scene, Journal& journal, const QString& name)
        : LayerController(scene)
        , m_journal(journal)
    {
        setObjectName(name);
    }
    ~Recorder() override { m_journal.destroyed << objectName(); }

    // Lets a test decide what the controller does with an action; unset, the base decides.
    std::function<bool(Recorder&, RemoteAction)> onAction;

    void note(const QString& message) { m_journal.note(objectName() + "." + message); }

    RECORDED(willBePushed)
    RECORDED(wasPushed)
    RECORDED(willBePopped)
    RECORDED(wasPopped)
    RECORDED(willBeBuried)
    RECORDED(willBeExhumed)
    RECORDED(resetLayout)
    void wasBuriedByPushingController(LayerController* controller) override
    {
        note("wasBuriedByPushingController(" + controller->objectName() + ")");
        LayerController::wasBuriedByPushingController(controller);
    }
    void wasExhumedByPoppingController(LayerController* controller) override
    {
        note("wasExhumedByPoppingController(" + controller->objectName() + ")");
        LayerController::wasExhumedByPoppingController(controller);
    }
    bool handleAction(RemoteAction action) override
    {
        return onAction ? onAction(*this, action) : LayerController::handleAction(action);
    }

protected:
    void didBecomeTop(bool pushed) override
    {
        note(pushed ? "didBecomeTop(pushed)" : "didBecomeTop(exhumed)");
        LayerController::didBecomeTop(pushed);
    }

private:
    Journal& m_journal;
};

// A subclass, so that its label differs from the class it derives from.
class Other : public Recorder {
    Q_OBJECT
public:
    using Recorder::Recorder;
};

class ControllerStackTest : public ::testing::Test {
protected:
    ControllerStackTest() { freshStack(); }

    void freshStack()
    {
        journal.stack = nullptr;
        stack = std::make_unique<ControllerStack>();
        journal = Journal { stack.get(), {}, {} };
    }
    template <typename T = Recorder> T* push(const QString& name)
    {
        auto controller = std::make_unique<T>(scene, journal, name);
        T* pushed = controller.get();
        stack->pushController(std::move(controller));
        return pushed;
    }
    QStringList takeLines() { return std::exchange(journal.lines, {}); }

    shell::Scene scene;
    Journal journal;
    std::unique_ptr<ControllerStack> stack;
};

TEST_F(ControllerStackTest, pushAndPopSendTheLifecycleMessagesAroundTheChange)
{
    int changed = 0;
    QObject::connect(stack.get(), &ControllerStack::changed, [&] { ++changed; });

    push("B");
    EXPECT_EQ(takeLines(),
        QStringList({ "B.resetLayout []", "B.willBePushed []", "B.wasPushed [B]",
            "B.didBecomeTop(pushed) [B]" }));
    EXPECT_GT(std::exchange(changed, 0), 0);

    Recorder* top = push("T");
    EXPECT_EQ(takeLines(),
        QStringList({ "B.willBeBuried [B]", "T.resetLayout [B]", "T.willBePushed [B]",
            "B.wasBuriedByPushingController(T) [T]", "T.wasPushed [T]",
            "T.didBecomeTop(pushed) [T]" }));
    EXPECT_EQ(top->stack(), stack.get());
    EXPECT_GT(std::exchange(changed, 0), 0);

    stack->popController();
    EXPECT_EQ(takeLines(),
        QStringList({ "T.willBePopped [T]", "B.willBeExhumed [T]", "T.wasPopped [B]",
            "B.wasExhumedByPoppingController(T) [B]", "B.didBecomeTop(exhumed) [B]" }));
    EXPECT_GT(std::exchange(changed, 0), 0);

    stack->popController();
    EXPECT_EQ(takeLines(), QStringList({ "B.willBePopped [B]", "B.wasPopped []" }));
    EXPECT_EQ(stack->count(), 0);
    EXPECT_EQ(stack->topController(), nullptr);
    EXPECT_GT(changed, 0);

    stack->popController();
    EXPECT_TRUE(takeLines().isEmpty());
}

TEST_F(ControllerStackTest, takenControllerIsOffTheStackButAliveAndCanBePushedAgain)
{
    push("B");
    push("T");
    std::unique_ptr<LayerController> taken = stack->takeTopController();
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->objectName(), "T");
    EXPECT_EQ(taken->stack(), nullptr);
    EXPECT_EQ(takeLines().last(), "B.didBecomeTop(exhumed) [B]");

    // The stack handed the controller out: moving on must not destroy it.
    stack->handleAction(RemoteAction::Down);
    EXPECT_TRUE(journal.destroyed.isEmpty());
    stack->pushController(std::move(taken));
    EXPECT_EQ(stack->topController()->stack(), stack.get());
    EXPECT_EQ(takeLines().last(), "T.didBecomeTop(pushed) [T]");
}

TEST_F(ControllerStackTest, controllerPoppingItselfLivesUntilTheEventLoopOrTheStackMovesOn)
{
    struct Row {
        const char* name;
        std::function<void()> next;
    };
    const Row rows[] = {
        { "event loop", [] { QCoreApplication::sendPostedEvents(); } },
        { "next action", [&] { stack->handleAction(RemoteAction::Up); } },
        { "next push", [&] { push("N"); } },
        { "next pop", [&] { stack->popController(); } },
        { "end of the stack",
            [&] {
                journal.stack = nullptr;
                stack.reset();
            } },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        freshStack();
        push("B");
        Recorder* self = push("S");
        self->onAction = [](Recorder& me, RemoteAction action) {
            if (action != RemoteAction::Select)
                return false;
            me.stack()->popController();
            // Touches the controller after its own pop: freed memory under ASan.
            me.note("handled its own pop");
            return true;
        };
        EXPECT_TRUE(stack->handleAction(RemoteAction::Select));
        EXPECT_TRUE(takeLines().contains("S.handled its own pop [B]"));
        EXPECT_TRUE(journal.destroyed.isEmpty());
        EXPECT_EQ(stack->count(), 1);

        row.next();
        EXPECT_TRUE(journal.destroyed.contains("S"));
    }
}

TEST_F(ControllerStackTest, unusedMenuPopsUnlessOnlyOneControllerIsLeft)
{
    push("B");
    push("T");
    EXPECT_FALSE(stack->handleAction(RemoteAction::Left));
    EXPECT_EQ(stack->count(), 2);

    EXPECT_TRUE(stack->handleAction(RemoteAction::Menu));
    EXPECT_EQ(stack->count(), 1);
    EXPECT_EQ(stack->topController()->objectName(), "B");

    EXPECT_FALSE(stack->handleAction(RemoteAction::Menu));
    EXPECT_EQ(stack->count(), 1);

    Recorder* keeper = push("K");
    keeper->onAction = [](Recorder&, RemoteAction action) { return action == RemoteAction::Menu; };
    EXPECT_TRUE(stack->handleAction(RemoteAction::Menu));
    EXPECT_EQ(stack->topController(), keeper);
}

TEST_F(ControllerStackTest, controllersAreFoundByLabelFromTheTopOrTheBottom)
{
    Recorder* deepest = push("a");
    stack->pushController(std::make_unique<LayerController>(scene));
    Recorder* topmost = push("c");
    Other* other = push<Other>("b");

    EXPECT_EQ(stack->labels(), QStringList({ "Recorder", "LayerController", "Recorder", "Other" }));
    // "Other" derives from Recorder but does not carry its label.
    EXPECT_EQ(stack->controllerLabelled("Recorder", false), topmost);
    EXPECT_EQ(stack->controllerLabelled("Recorder", true), deepest);
    EXPECT_EQ(stack->controllerLabelled("Other", false), other);
    EXPECT_EQ(stack->controllerLabelled("Other", true), other);
    EXPECT_EQ(stack->controllerLabelled("LayerController", true), stack->controllerAt(1));
    EXPECT_EQ(stack->controllerLabelled("Missing", false), nullptr);

    const QJsonObject described = stack->describeTop();
    EXPECT_EQ(described["label"], "Other");
    EXPECT_EQ(
        described["stack"], QJsonArray({ "Recorder", "LayerController", "Recorder", "Other" }));

    freshStack();
    EXPECT_TRUE(stack->describeTop().isEmpty());
    EXPECT_TRUE(stack->labels().isEmpty());
    EXPECT_EQ(stack->controllerLabelled("Recorder", true), nullptr);
}

TEST_F(ControllerStackTest, endOfTheStackDestroysTopToBottomWithoutMessages)
{
    push("B");
    push("T");
    takeLines();
    journal.stack = nullptr;
    stack.reset();
    EXPECT_TRUE(journal.lines.isEmpty()) << journal.lines.join(", ").toStdString();
    EXPECT_EQ(journal.destroyed, QStringList({ "T", "B" }));
}

TEST(ControllerStackSentinel, entryIsWeak)
{
    shell::Sentinel& sentinel = shell::Sentinel::shared();
    auto stack = std::make_unique<ControllerStack>();
    sentinel.setObjectForKey(stack.get(), shell::Sentinel::controllerStackKey());
    EXPECT_EQ(sentinel.objectForKey("controllerStack"), stack.get());
    EXPECT_EQ(sentinel.objectForKey("somethingElse"), nullptr);

    stack.reset();
    EXPECT_EQ(sentinel.objectForKey("controllerStack"), nullptr);

    ControllerStack again;
    sentinel.setObjectForKey(&again, "controllerStack");
    sentinel.removeObjectForKey("controllerStack");
    EXPECT_EQ(sentinel.objectForKey("controllerStack"), nullptr);
}

} // namespace stacktest

#include "tst_controllerstack.moc"
