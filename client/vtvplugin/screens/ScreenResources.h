#pragma once

#include "toolkit/appliance/Bundle.h"
#include "toolkit/media/PreviewController.h"

#include <QImage>
#include <QString>

#include <memory>

namespace shell {
class Scene;
}

// What the screens take from the appliance's own resources: its bundle (strings
// table and icon, under ":/vireo-movies") and the software version it reports.
class ScreenResources {
public:
    ScreenResources() = delete;

    static const shell::Bundle& bundle();

    // The icon's resource name and type, as the screens ask for it.
    static QString iconName() { return QStringLiteral("ApplianceIcon"); }
    static QString iconType() { return QStringLiteral("png"); }
    // "qrc:/vireo-movies/ApplianceIcon.png", null when the resource is missing.
    static QString iconURL();
    // Null image when the resource is missing.
    static QImage icon();

    static QString softwareVersion() { return QStringLiteral("0.96.16.118"); }

    // The preview of rows that stand for the appliance itself (Settings and its rows):
    // the icon as a photo, with the maker's copyright line, shown at once; `note`, when
    // given, as its description.
    static std::unique_ptr<shell::PreviewController> appliancePreview(
        shell::Scene& scene, const QString& note = {});
};
