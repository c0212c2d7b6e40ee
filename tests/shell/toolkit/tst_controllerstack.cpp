#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"
#include "toolkit/stack/LayerController.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <functional>
#include <string>

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
};

// Notes the message, then hands it to the base as every override must.
#define RECORDED(message)                                                                          \
    void message() override                                                                        \
    {                                                                                              \
        note(#message);                                                                            \
        LayerController::message();                                                                \
    }
#define RECORDED_WITH(message)                                                                     \
    void message(LayerController* other) override                                                  \
    {                                                                                              \
        note(#message "(" + other->objectName() + ")");                                            \
        LayerController::message(other);                                                           \
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

    void note(const QString& message)
    {
        const LayerController* top = m_journal.stack ? m_journal.stack->topController() : nullptr;
        m_journal.lines << objectName() + "." + message + " [" + (top ? top->objectName() : "")
                + "]";
    }

    RECORDED(willBePushed)
    RECORDED(wasPushed)
    RECORDED(willBePopped)
    RECORDED(wasPopped)
    RECORDED(willBeBuried)
    RECORDED(willBeExhumed)
    RECORDED(resetLayout)
    RECORDED_WITH(wasBuriedByPushingController)
    RECORDED_WITH(wasExhumedByPoppingController)
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

class ControllerStackTest : public ::testing::Test {
protected:
    ControllerStackTest() { freshStack(); }

    void freshStack()
    {
        journal.stack = nullptr;
        stack = std::make_unique<ControllerStack>();
        journal = Journal { stack.get(), {}, {} };
    }
    void endStack()
    {
        journal.stack = nullptr;
        stack.reset();
    }
    Recorder* push(const QString& name)
    {
        auto controller = std::make_unique<Recorder>(scene, journal, name);
        Recorder* pushed = controller.get();
        stack->pushController(std::move(controller));
        return pushed;
    }
    // The lines so far, joined with ", ", and a fresh start.
    std::string takeLines() { return std::exchange(journal.lines, {}).join(", ").toStdString(); }

    shell::Scene scene;
    Journal journal;
    std::unique_ptr<ControllerStack> stack;
};

TEST_F(ControllerStackTest, pushAndPopSendTheLifecycleMessagesAroundTheChange)
{
    push("B");
    EXPECT_EQ(takeLines(),
        "B.resetLayout [], B.willBePushed [], B.wasPushed [B], B.didBecomeTop(pushed) [B]");
    push("T");
    EXPECT_EQ(takeLines(),
        "B.willBeBuried [B], T.resetLayout [B], T.willBePushed [B], "
        "B.wasBuriedByPushingController(T) [T], T.wasPushed [T], T.didBecomeTop(pushed) [T]");
    stack->popController();
    EXPECT_EQ(takeLines(),
        "T.willBePopped [T], B.willBeExhumed [T], T.wasPopped [B], "
        "B.wasExhumedByPoppingController(T) [B], B.didBecomeTop(exhumed) [B]");
    stack->popController();
    EXPECT_EQ(takeLines(), "B.willBePopped [B], B.wasPopped []");
    stack->popController();
    EXPECT_EQ(takeLines(), "");
}

TEST_F(ControllerStackTest, endOfTheStackDestroysTopToBottomWithoutMessages)
{
    push("B");
    push("T");
    takeLines();
    endStack();
    EXPECT_EQ(takeLines(), "");
    EXPECT_EQ(journal.destroyed, QStringList({ "T", "B" }));
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
        { "end of the stack", [&] { endStack(); } },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        freshStack();
        push("B");
        push("S")->onAction = [](Recorder& me, RemoteAction action) {
            if (action != RemoteAction::Select)
                return false;
            me.stack()->popController();
            // Touches the controller after its own pop: freed memory under ASan.
            me.note("handled its own pop");
            return true;
        };
        EXPECT_TRUE(stack->handleAction(RemoteAction::Select));
        EXPECT_NE(takeLines().find("S.handled its own pop [B]"), std::string::npos);
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
    EXPECT_TRUE(stack->handleAction(RemoteAction::Menu));
    EXPECT_EQ(stack->topController()->objectName(), "B");
    EXPECT_FALSE(stack->handleAction(RemoteAction::Menu));
    EXPECT_EQ(stack->count(), 1);

    Recorder* keeper = push("K");
    keeper->onAction = [](Recorder&, RemoteAction action) { return action == RemoteAction::Menu; };
    EXPECT_TRUE(stack->handleAction(RemoteAction::Menu));
    EXPECT_EQ(stack->topController(), keeper);
}

} // namespace stacktest

#include "tst_controllerstack.moc"
