#pragma once

#include "toolkit/appliance/Bundle.h"
#include "toolkit/menus/ListDataSource.h"
#include "toolkit/menus/MediaMenuController.h"
#include "vtvplugin/trailers/TrailerLoaderDelegate.h"
#include "vtvplugin/trailers/TrailerTypes.h"

#include <QString>

#include <array>
#include <memory>

class VireoTrailerLoader;

// The top menu of "Vireo Trailers": the service's four ranked lists, one folder row
// each, in the order of the list types. It owns one loader per list. Choosing a row
// starts that list's load, and the row's preview says "Loading…" until it ends; a
// list that arrives with trailers opens as a VireoTrailerController, one that arrives
// empty or cannot be fetched says "No trailers available." and is fetched again when
// chosen again. A list that has arrived opens at once from then on.
//
// The trailers menus point into the loaders' asset arrays: this menu lies below them
// on the stack, so it outlives them, and a loaded list is never cleared or reloaded.
class VireoTrailerListsController : public shell::MediaMenuController,
                                    public shell::ListDataSource,
                                    public TrailerLoaderDelegate {
    Q_OBJECT
public:
    enum class ListState { Idle, Loading, Unavailable };

    explicit VireoTrailerListsController(shell::Scene& scene);
    ~VireoTrailerListsController() override;

    long itemCount() override;
    std::unique_ptr<shell::MenuItem> itemForRow(long row) override;
    QString titleForRow(long row) override;
    long rowForTitle(const QString& title) override;
    void itemSelected(long row) override;
    std::unique_ptr<shell::PreviewController> previewControllerForItem(long row) override;

    void _updatePreview() override;
    // Going back out of the appliance abandons the loads under way.
    void wasPopped() override;

    bool isNetworkDependent() const { return true; }
    ListState listState(int type) const;
    // Null for a type outside 0 .. 3.
    VireoTrailerLoader* loader(int type) const;

    // The appliance's resources: the icon and the strings tables under
    // ":/vireo-trailers".
    static const shell::Bundle& bundle();
    static QString loadingText() { return QStringLiteral("Loading\u2026"); }
    static QString unavailableText() { return QStringLiteral("No trailers available."); }

private:
    struct TrailerList {
        std::unique_ptr<VireoTrailerLoader> loader;
        ListState state = ListState::Idle;
    };

    static bool isListRow(long row) { return row >= 0 && row < TrailerTypes::kCount; }
    void startLoad(int type);
    // A load ended with the list in the loader (possibly empty).
    void listArrived(int type);
    void onLoadFinished(int type, bool ok, const QString& error);
    void markUnavailable(int type, const QString& why);
    // The user is still waiting on this menu, on this list's row, for this list.
    bool isAwaited(int type) const;
    void pushTrailers(int type);
    void refreshPreview();
    std::unique_ptr<shell::PreviewController> textPreview(const QString& title) const;

    std::array<TrailerList, TrailerTypes::kCount> m_lists;
    int m_nChosenList = -1;
};
