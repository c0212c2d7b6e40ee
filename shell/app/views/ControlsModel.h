#pragma once

#include "TextStyleView.h"

#include <QAbstractListModel>
#include <QHash>
#include <QImage>
#include <QPair>
#include <QRectF>
#include <QString>
#include <QtQmlIntegration/qqmlintegration.h>

#include <memory>
#include <vector>

namespace shell {
class Control;
class LayerController;
}

namespace mediashell {

class ImageStore;

// The top controller's controls, in the order they are drawn, each at its frame (view
// units): headers and texts with their style and line limit, images (from the image
// store, one URL per control and picture) with their reflection. A row changes in
// place when its control does; the model resets when the controls come and go.
class ControlsModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The shell view makes its controls model.")
public:
    enum class Kind { Header, Image, Text };
    Q_ENUM(Kind)

    enum Role {
        KindRole = Qt::UserRole + 1, // a Kind
        FrameRole,
        TextRole,
        StyleRole, // a TextStyleView
        MaximumLinesRole, // 0: as many as the text needs
        ImageRole, // an image URL
        ReflectionRole,
        ReflectionOffsetRole,
    };

    // Without `images`, image controls show nothing.
    explicit ControlsModel(std::shared_ptr<ImageStore> images, QObject* parent = nullptr);
    ~ControlsModel() override;

    // Reads the controls of `top` (null: none); `newScreen` when it was not on top
    // before, which lets the last screen's images go.
    void update(shell::LayerController* top, bool newScreen);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    struct Entry {
        Kind kind = Kind::Text;
        QRectF frame;
        QString text;
        TextStyleView style;
        int maximumLines = 0;
        QString image;
        float reflection = 0;
        float reflectionOffset = 0;
        bool operator==(const Entry&) const = default;
    };

    Entry read(const shell::Control& control);
    QString imageUrl(const shell::Control& control, const QImage& picture);
    QString imageGroup() const;

    std::shared_ptr<ImageStore> m_images;
    std::vector<Entry> m_entries;
    // Image controls' URLs, kept while the picture is the same.
    QHash<const shell::Control*, QPair<qint64, QString>> m_imageUrls;
};

} // namespace mediashell
