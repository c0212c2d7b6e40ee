#include "CenteredView.h"

#include "toolkit/menus/CenteredMenuController.h"

namespace mediashell {

CenteredView::CenteredView(QObject* parent)
    : QObject(parent)
{
}

CenteredView::~CenteredView() = default;

void CenteredView::update(shell::LayerController* top)
{
    State state;
    if (const auto* question = qobject_cast<shell::CenteredMenuController*>(top)) {
        state.title = question->title();
        state.primaryText = question->primaryInfoText();
        state.primaryStyle = TextStyleView(question->primaryInfoStyle());
        state.secondaryText = question->secondaryInfoText();
        state.secondaryStyle = TextStyleView(question->secondaryInfoStyle());
    }
    if (state == m_state)
        return;
    m_state = state;
    emit changed();
}

} // namespace mediashell
