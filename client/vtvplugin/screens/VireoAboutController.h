#pragma once

#include "toolkit/stack/LayerController.h"

#include <vector>

namespace shell {
class HeaderControl;
class ImageControl;
class TextControl;
} // namespace shell

// "About VireoTV": the appliance's icon and six facts about the box (paired players,
// disk capacity, free space, space the library takes, serial number, software
// version). The facts are gathered once, when the screen is made; nothing refreshes
// while it is shown.
class VireoAboutController : public shell::LayerController {
    Q_OBJECT
public:
    explicit VireoAboutController(shell::Scene& scene);
    ~VireoAboutController() override;

private:
    struct Row {
        QString label;
        QString value;
    };

    void addHeader();
    void addIcon();
    void addRows();
    void addRow(const Row& row, float y, float height);

    // The screen's controls own all of these.
    shell::HeaderControl* _header = nullptr;
    shell::ImageControl* _image = nullptr;
    // Label 0, value 0, label 1, value 1, ...
    std::vector<shell::TextControl*> m_pControls;
};
