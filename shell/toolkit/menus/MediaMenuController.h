#pragma once

#include "toolkit/media/PreviewController.h"
#include "toolkit/menus/MenuController.h"

#include <memory>

namespace shell {

// A menu with its list on the right and, on the left, the preview of the focused row
// (asked of the data source each time the focus lands on a row; while the list is
// empty, the source's preview of an empty list).
class MediaMenuController : public MenuController {
    Q_OBJECT
public:
    explicit MediaMenuController(Scene& scene);
    ~MediaMenuController() override;

    QString kind() const override; // "menu"
    // The focused row's preview, null when it has none.
    PreviewController* preview() const { return m_preview.get(); }
    // Adds "preview" to MenuController's object.
    QJsonObject describe() const override;

protected:
    void focusLanded(long row) override;

private:
    std::unique_ptr<PreviewController> m_preview;
};

} // namespace shell
