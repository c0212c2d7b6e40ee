#pragma once

#include "toolkit/media/MediaType.h"

#include <QHash>
#include <QObject>
#include <QString>
#include <QtQmlIntegration/qqmlintegration.h>

#include <memory>

namespace shell {
class LayerController;
class PreviewController;
}

namespace mediashell {

class ImageStore;

// The focused row's preview in a media menu: the cover (or the asset's own picture, an
// icon) and the facts beside it. Read again only when the menu made a new preview.
class PreviewView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The shell view makes its preview view.")
    // Whether there is a preview at all.
    Q_PROPERTY(bool shown READ shown NOTIFY changed)
    // Whether the facts show below the cover (never without a preview).
    Q_PROPERTY(bool showsMetadata READ showsMetadata NOTIFY changed)
    Q_PROPERTY(QString imageUrl READ imageUrl NOTIFY changed)
    // What to draw when imageUrl cannot be: no cover file, or a thumbnail that cannot
    // be fetched. The default picture of the asset's media type; empty without one.
    Q_PROPERTY(QString fallbackImageUrl READ fallbackImageUrl NOTIFY changed)
    // The picture is the asset's own (an icon), not a cover file or address.
    Q_PROPERTY(bool isIcon READ isIcon NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    // Line breaks as "\n" (the editorial note ends with a carriage return).
    Q_PROPERTY(QString description READ description NOTIFY changed)
    Q_PROPERTY(QString cast READ cast NOTIFY changed)
    Q_PROPERTY(QString directors READ directors NOTIFY changed)
    Q_PROPERTY(QString producers READ producers NOTIFY changed)
    Q_PROPERTY(QString durationText READ durationText NOTIFY changed)
    Q_PROPERTY(QString copyright READ copyright NOTIFY changed)
    // "Resume from 0:18 of 1:42" for a partly watched movie, empty otherwise.
    Q_PROPERTY(QString resumeText READ resumeText NOTIFY changed)
public:
    // Without `images`, a preview without a cover file has no picture.
    explicit PreviewView(std::shared_ptr<ImageStore> images, QObject* parent = nullptr);
    ~PreviewView() override;

    // Reads the preview of `top`, if it is a media menu, when it is another than the
    // one shown or `newScreen` says `top` was not on top before.
    void update(shell::LayerController* top, bool newScreen);

    bool shown() const { return m_state.shown; }
    bool showsMetadata() const { return m_state.showsMetadata; }
    QString imageUrl() const { return m_state.imageUrl; }
    QString fallbackImageUrl() const { return m_state.fallbackImageUrl; }
    bool isIcon() const { return m_state.isIcon; }
    QString title() const { return m_state.title; }
    QString description() const { return m_state.description; }
    QString cast() const { return m_state.cast; }
    QString directors() const { return m_state.directors; }
    QString producers() const { return m_state.producers; }
    QString durationText() const { return m_state.durationText; }
    QString copyright() const { return m_state.copyright; }
    QString resumeText() const { return m_state.resumeText; }

    // "1 h 42 min", "42 min", "38 s", empty for 0.
    static QString formatDuration(int seconds);
    // A preview's image for QML: a file path through ImageFileProvider (never QML's
    // own file loading), ":/..." as "qrc:/...", any other address through
    // ImageUrlProvider (never QML's own network access), which fetches only http and
    // https.
    static QString imageUrl(const QString& describedImage);

signals:
    void changed();

private:
    struct State {
        bool shown = false;
        bool showsMetadata = false;
        QString imageUrl;
        QString fallbackImageUrl;
        bool isIcon = false;
        QString title;
        QString description;
        QString cast;
        QString directors;
        QString producers;
        QString durationText;
        QString copyright;
        QString resumeText;
        bool operator==(const State&) const = default;
    };

    State read(const shell::PreviewController* preview);
    QString imageGroup() const;
    // The default picture of `type` in the store, added once per view.
    QString defaultImageUrl(shell::MediaType type);

    std::shared_ptr<ImageStore> m_images;
    State m_state;
    const void* m_source = nullptr;
    QString m_storedImage; // the store's URL of the asset's own picture, if it made one
    QHash<int, QString> m_defaultImages; // media type -> the store's URL of its default
};

} // namespace mediashell
