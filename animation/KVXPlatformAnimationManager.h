#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

#include <map>

class KVXTowerCraneObject;

// One crane's live reading from the site monitoring platform.
struct KVXPlatformTowerAnimationData {
    // The monitoring device; empty until the first reading.
    QString deviceId;
    // Millimetres.
    float height = 0.0f;
    // Slewing angle, degrees, and the one of the reading before.
    float rotation = 0.0f;
    float previousRotation = 0.0f;
    // The animation time the reading was taken in at.
    float stamp = 0.0f;
};

// Drives the model's tower cranes from live readings instead of schedule
// dates: while playing it asks the host for the latest reading every five
// seconds (requestData), takes the platform's JSON reply in
// (setPlatformTowerData), and a frame callback per crane raises its upper
// works to the reported height, cuts the mast there and turns the jib to
// the reported angle over the next five seconds. All cranes follow the one
// device.
class KVXPlatformAnimationManager : public QObject {
    Q_OBJECT
public:
    enum PlayingState { Playing = 0, Paused = 1, Stopped = 2 };
    // Between two requests, milliseconds.
    static constexpr int kRequestInterval = 5000;

    static KVXPlatformAnimationManager* getInstance();
    ~KVXPlatformAnimationManager() override;

    void play();
    void pause();
    void stop();
    PlayingState getPlayingState() const { return m_state; }
    void setAnimateTime(float time) { m_time = time; }
    float getAnimateTime() const { return m_time; }
    // Takes one reply in; a reply that is not a good reading is ignored.
    void setPlatformTowerData(const QByteArray& reply);
    // The last reading taken in (empty before the first).
    const KVXPlatformTowerAnimationData& getCurrentData() const { return m_current; }
    // How many cranes follow the readings.
    std::size_t getTowerCount() const { return m_towers.size(); }
    // The crane's reading; an empty one (no device) for an unknown crane.
    KVXPlatformTowerAnimationData getAnimationDataFromTower(KVXTowerCraneObject* crane) const;
    // Every crane of the active document gets a live animation and its
    // callback; the current reading is asked for.
    void initAnimationData();
    void unInitAnimationData();

signals:
    // Asks the host for the device's latest reading, to be answered with
    // setPlatformTowerData.
    void requestData();
    void isPalyingSignal(bool playing);

private slots:
    void onTimer();

private:
    KVXPlatformAnimationManager();
    static std::string nameOf(const KVXTowerCraneObject* crane);

    static KVXPlatformAnimationManager* m_instance;

    KVXPlatformTowerAnimationData m_current;
    PlayingState m_state = Stopped;
    std::map<KVXTowerCraneObject*, KVXPlatformTowerAnimationData> m_towers;
    QTimer m_timer;
    float m_time = 0.0f;
};
