#include "PairingView.h"

namespace mediashell {

PairingView::PairingView(QObject* parent)
    : QObject(parent)
{
}

PairingView::~PairingView() = default;

void PairingView::update(const QString& code, const QString& pageUrl)
{
    if (code == m_code && pageUrl == m_pageUrl)
        return;
    m_code = code;
    m_pageUrl = pageUrl;
    emit changed();
}

} // namespace mediashell
