#include "vtvplugin/screens/ScreenResources.h"

#include "toolkit/media/MetadataPreviewController.h"
#include "toolkit/media/XmlMediaAsset.h"
#include "vtvplugin/media/VTVMediaAsset.h"

const shell::Bundle& ScreenResources::bundle()
{
    static const shell::Bundle resources(QStringLiteral(":/vireo-movies"));
    return resources;
}

QString ScreenResources::iconURL()
{
    return bundle().urlForResource(iconName(), iconType());
}

QImage ScreenResources::icon()
{
    return bundle().imageForResource(iconName(), iconType());
}

std::unique_ptr<shell::PreviewController> ScreenResources::appliancePreview(
    shell::Scene& scene, const QString& note)
{
    auto asset = std::make_shared<shell::XmlMediaAsset>();
    const QString icon = iconURL();
    asset->setValue(QStringLiteral("mediaURL"), icon);
    asset->setValue(QStringLiteral("previewURL"), icon);
    asset->setValue(QStringLiteral("mediaType"), static_cast<int>(shell::MediaType::photo));
    asset->setValue(QStringLiteral("copyright"), VTVMediaAsset::copyrightLine());
    if (!note.isEmpty())
        asset->setValue(QStringLiteral("mediaDescription"), note);
    auto preview = std::make_unique<shell::MetadataPreviewController>(scene);
    preview->setAsset(std::move(asset));
    preview->setShowsMetadataImmediately(true);
    return preview;
}
