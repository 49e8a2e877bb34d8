#pragma once

#include "models/TriggerKey.h"
#include "platform/KeyboardHook.h"
#include "platform/linux/X11KeyboardConnection.h"
#include "platform/SpaceCaptureTracker.h"

#include <QObject>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

class X11KeyboardConnection;

// The trigger key and Space on an X11 desktop. A thread of its own watches XInput2 raw
// key events and grabs Space exactly while a press would be consumed, deciding in key
// order with a SpaceCaptureTracker; the main thread only receives the events. So a
// busy or hung main thread never holds Space or delays a key: at worst the handlers
// run late. The trigger's press waits for the Space grab (X11KeyboardConnection), so
// even a Space sent right behind it is taken.
class X11KeyboardHook : public KeyboardHook
{
public:
    explicit X11KeyboardHook(TriggerKey trigger);
    ~X11KeyboardHook() override;

    InstallOutcome install(Events events) override;
    void uninstall() override;
    [[nodiscard]] bool isInstalled() const override { return m_thread.joinable(); }
    // Nothing to do: the X thread derives the same condition from the same keys, earlier.
    void setSpaceCaptureWanted(bool) override {}
    [[nodiscard]] QString triggerDisplayName() const override { return m_trigger.displayName; }
    InstallOutcome setTriggerKey(const TriggerKey &key) override;
    // What install() would meet for this key, without grabbing anything.
    static X11KeyboardConnection::Probe probe(const TriggerKey &key);
    // Test hook: waits until the X server has carried out the key grabs asked for so far
    // (the trigger's at install), so a key sent next meets them. False when not installed
    // or at the timeout. Production never waits for the grabs.
    bool waitForGrabs(std::chrono::milliseconds timeout);

private:
    struct KeyReport;

    void watchKeys();
    void handleKeyOnXThread(const X11KeyboardConnection::KeyEvent &key);
    void deliver(const KeyReport &report);
    void reportGrabsOnXThread();

    TriggerKey m_trigger;
    Events m_events;
    std::unique_ptr<X11KeyboardConnection> m_connection;
    // Lives on the main thread; the X thread posts the key reports to it.
    std::unique_ptr<QObject> m_receiver;
    std::thread m_thread;
    int m_wakeFd = -1;
    std::atomic<bool> m_stopping{false};
    SpaceCaptureTracker m_tracker; // X thread only
    std::mutex m_grabsMutex;
    std::condition_variable m_grabsChanged;
    bool m_grabsInPlace = false;         // guarded by m_grabsMutex
    bool m_grabsInPlaceReported = false; // X thread only
};
