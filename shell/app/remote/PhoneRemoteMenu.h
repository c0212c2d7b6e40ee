#pragma once

#include "toolkit/menus/CenteredMenuController.h"
#include "toolkit/menus/ListDataSource.h"

#include <functional>

namespace mediashell {

// The top menu's "Phone Remote" screen: where a phone finds the remote's page, and one
// answer, "Pair a New Phone", which forgets every paired phone, so that only phones
// that enter the next code on the TV can press buttons again.
class PhoneRemoteMenu : public shell::CenteredMenuController, public shell::ListDataSource {
    Q_OBJECT
public:
    // `pageUrl` is shown; `restartPairing` runs on "Pair a New Phone".
    PhoneRemoteMenu(
        shell::Scene& scene, const QString& pageUrl, std::function<void()> restartPairing);
    ~PhoneRemoteMenu() override;

    long itemCount() override;
    std::unique_ptr<shell::MenuItem> itemForRow(long row) override;
    QString titleForRow(long row) override;
    long rowForTitle(const QString& title) override;
    void itemSelected(long row) override;
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long row) override;

private:
    std::function<void()> m_restartPairing;
};

} // namespace mediashell
