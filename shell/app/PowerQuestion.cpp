#include "PowerQuestion.h"

#include "toolkit/media/PreviewController.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/stack/ControllerStack.h"

namespace mediashell {

namespace {

    constexpr long kCancelRow = 0;
    constexpr long kAnswerRow = 1;

} // namespace

PowerQuestion::PowerQuestion(
    shell::Scene& scene, const QString& answer, std::function<void()> confirmed)
    : shell::CenteredMenuController(scene)
    , m_answer(answer)
    , m_confirmed(std::move(confirmed))
{
    setTitle(answer + QLatin1Char('?'));
    setDisplaysGoBack(false);
    list().setDatasource(this);
    list().reload();
}

PowerQuestion::~PowerQuestion() = default;

long PowerQuestion::itemCount()
{
    return 2;
}

QString PowerQuestion::titleForRow(long row)
{
    if (row == kCancelRow)
        return tr("Cancel");
    return row == kAnswerRow ? m_answer : QString();
}

std::unique_ptr<shell::MenuItem> PowerQuestion::itemForRow(long row)
{
    return shell::MenuItem::plainMenuItem(titleForRow(row));
}

long PowerQuestion::rowForTitle(const QString& title)
{
    return firstRowTitled(title);
}

void PowerQuestion::itemSelected(long row)
{
    if (row == kAnswerRow && m_confirmed)
        m_confirmed();
    if (stack())
        stack()->popController();
}

std::unique_ptr<shell::PreviewController> PowerQuestion::previewControllerForItem(long)
{
    return nullptr;
}

} // namespace mediashell
