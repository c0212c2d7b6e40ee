#pragma once

#include "toolkit/menus/CenteredMenuController.h"
#include "toolkit/menus/ListDataSource.h"

#include <functional>

namespace mediashell {

// "Power Off?" in the middle of the screen, with "Cancel" first, so that a second
// press of select does not end the evening: the answer must be chosen. Either answer
// closes the question; only the second runs `confirmed`.
class PowerQuestion : public shell::CenteredMenuController, public shell::ListDataSource {
    Q_OBJECT
public:
    // `answer`: the action's name, e.g. "Power Off"; the question is "Power Off?".
    PowerQuestion(shell::Scene& scene, const QString& answer, std::function<void()> confirmed);
    ~PowerQuestion() override;

    long itemCount() override;
    std::unique_ptr<shell::MenuItem> itemForRow(long row) override;
    QString titleForRow(long row) override;
    long rowForTitle(const QString& title) override;
    void itemSelected(long row) override;
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long row) override;

private:
    QString m_answer;
    std::function<void()> m_confirmed;
};

} // namespace mediashell
