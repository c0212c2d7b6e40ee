#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <memory>
#include <vector>

class QNetworkAccessManager;
class QNetworkReply;
class TrailerLoaderDelegate;
class VTVMediaAsset;

// Fetches one ranked trailer list from the service with a signed XML-RPC call and turns
// each listed video into a trailer asset. Everything happens on the thread that owns
// the loader (the shell's main thread), driven by its event loop.
//
// Idle -> Loading (fetchStats) -> Loaded (at least one asset) or back to not loading
// (connection failure, time-out, oversized or malformed reply, fault). A completed load
// tells the delegate (_updatePreview), even when the list is empty; every load that
// ends, however it ends, also emits loadFinished, so an owner notices failures too.
class VireoTrailerLoader : public QObject {
    Q_OBJECT
public:
    // Replies larger than this are abandoned as malformed.
    static constexpr qint64 kMaxReplyBytes = 8 * 1024 * 1024;
    static constexpr std::chrono::milliseconds kDefaultTimeout { 60000 };
    static constexpr int kInitialAssetSlots = 32;

    explicit VireoTrailerLoader(QObject* parent = nullptr);
    // Cancels a running load and releases every asset.
    ~VireoTrailerLoader() override;

    VireoTrailerLoader(const VireoTrailerLoader&) = delete;
    VireoTrailerLoader& operator=(const VireoTrailerLoader&) = delete;

    // Starts loading list `type` (0 .. 3) for `controller` (not owned; may be null).
    // False for a type past 3 or while a load runs; true when a load started or the
    // list is already loaded (then nothing is sent).
    bool fetchStats(int type, TrailerLoaderDelegate* controller);
    // Stops a running load; the delegate hears nothing of it and no signal is emitted.
    void cancelDownloads();
    // Releases every asset and forgets that the list was loaded.
    void clearAllAssets();

    bool isLoading() const { return m_bLoading; }
    bool isLoaded() const { return m_bLoaded; }
    // The assets in list order: assetListSize() entries. The loader keeps them; the
    // pointer stays good until the next load, clearAllAssets or the loader's end.
    const std::shared_ptr<VTVMediaAsset>* assetList() const;
    long assetListSize() const;
    void appendAsset(std::shared_ptr<VTVMediaAsset> asset);

    // Where to post; an empty URL (the default) means TrailerEndpoint::xmlrpcUrl(),
    // read when each load starts.
    void setEndpoint(const QUrl& url);
    QUrl endpoint() const;
    void setTimeout(std::chrono::milliseconds timeout);

signals:
    // Once per load that ends, after the delegate was told. `ok` is false when the
    // connection failed or timed out, the reply was too large or malformed (outer or
    // inner document), or it was a fault; `error` then says what happened.
    void loadFinished(bool ok, const QString& error);

private:
    void connectionDidReceiveResponse();
    void connectionDidReceiveData();
    void connectionDidEnd();
    void connectionDidFinishLoading();
    void connectionDidFailWithError(const QString& description, const QString& error);
    void abandonLoad(const QString& error);
    void releaseConnection();
    void endLoad(bool ok, const QString& error, bool tellDelegate);

    std::unique_ptr<QNetworkAccessManager> m_network;
    QNetworkReply* m_pConnection = nullptr;
    QByteArray m_pReceivedData;
    // Bounds the whole load: the transfer time-out only catches a silent server, not
    // one that sends a byte now and then for ever.
    QTimer m_deadline;
    bool m_bLoading = false;
    bool m_bLoaded = false;
    std::vector<std::shared_ptr<VTVMediaAsset>> m_assets;
    TrailerLoaderDelegate* _delegate = nullptr;
    QUrl m_endpoint;
    std::chrono::milliseconds m_timeout = kDefaultTimeout;
};
