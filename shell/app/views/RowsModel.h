#pragma once

#include <QAbstractListModel>
#include <QHash>
#include <QImage>
#include <QPointer>
#include <QtQmlIntegration/qqmlintegration.h>

#include <memory>

namespace shell {
class MenuController;
}

namespace mediashell {

class ImageStore;

// The rows of a menu controller's list for a QML ListView, read from its data source
// only for the rows the view asks about: a folder of 10,000 rows costs the rows on
// screen, never all of them. A row is asked once per reload of the list (and kept
// while the view may ask again); the model resets when the menu, its data source,
// its row count or its reload count changes.
class RowsModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The menu view makes its rows model.")
    Q_PROPERTY(int count READ count NOTIFY countChanged)
public:
    enum Role {
        TitleRole = Qt::UserRole + 1,
        KindRole, // "folder", "plain", "adorned"
        ArrowRole, // a folder row's arrow
        DividerAboveRole,
        IconRole, // an image URL, empty without an icon
        PartlyWatchedRole, // a movie with a resume point
        WatchedFractionRole, // how much of it lies before that point; 0 when unknown
    };

    // Without `images`, rows have no icons.
    explicit RowsModel(std::shared_ptr<ImageStore> images = {}, QObject* parent = nullptr);
    ~RowsModel() override;

    // The menu shown (null: none). Resets the model when anything but the focus
    // differs from what it shows; true when it did.
    bool setMenu(shell::MenuController* menu);
    shell::MenuController* menu() const;
    // Checks the shown menu's list again (after the menu changed); true on a reset.
    bool sync();
    // Reads row `index` again when the view already asked about it: a row may show
    // more once the focus landed on it (a partly watched movie's length).
    void refreshRow(int index);

    int count() const { return m_count; }
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    // How many rows are cached: at most the rows the view asked about.
    int cachedRows() const { return int(m_cache.size()); }

    // The largest number of rows kept; older ones are read again when asked.
    static constexpr int kCacheLimit = 1024;

signals:
    void countChanged();

private:
    struct Row {
        QString title;
        QString kind;
        bool arrow = false;
        QString icon;
        bool partlyWatched = false;
        double watchedFraction = 0.0;
    };

    const Row& row(int index) const;
    void reset(shell::MenuController* menu);
    // What the model was built from, to tell when it must reset.
    struct Basis {
        const void* source = nullptr;
        long count = 0;
        int reloads = -1;
        bool operator==(const Basis&) const = default;
    };
    Basis basisOf(shell::MenuController* menu) const;

    std::shared_ptr<ImageStore> m_images;
    QPointer<shell::MenuController> m_menu;
    Basis m_basis;
    int m_count = 0;
    mutable QHash<int, Row> m_cache;
};

} // namespace mediashell
