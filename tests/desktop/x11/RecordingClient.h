#pragma once

#include "support/desktop/RealDesktop.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace veltrin {

/// A plain X application with one window that writes down every key event it is sent, with nothing between it
/// and the server. It runs on a thread and connection of its own.
class RecordingClient {
public:
    struct Options {
        QByteArray instance = "recorder";
        QByteArray windowClass = "Recorder";
        bool answersPing = true;
        bool saysProcess = true;
        pid_t process = 0;  ///< 0 is this process
    };
    struct Key {
        bool isPress = true;
        quint8 code = 0;
        quint16 state = 0;
        quint32 time = 0;
        double arrivedAt = 0;  ///< monotonic seconds
    };

    /// Returns when its window is active.
    explicit RecordingClient(RealDesktop& desktop);
    RecordingClient(RealDesktop& desktop, const Options& options);
    ~RecordingClient();
    RecordingClient(const RecordingClient&) = delete;
    RecordingClient& operator=(const RecordingClient&) = delete;

    xcb_window_t window() const { return window_; }
    std::vector<Key> keys() const;
    /// The keys in a readable form, "+a -a +space": the plain symbols of the current keymap's first group.
    std::string text() const;
    int presses() const;
    void clear();
    /// While true nothing that is sent to it is answered or written down.
    void hang(bool hung) { hung_ = hung; }
    /// The key event of the given number (0 is the first) by a press; waits for it.
    bool waitForKeys(std::size_t count, double seconds = 3) const;

private:
    void run();

    RealDesktop& desktop_;
    Options options_;
    xcb_connection_t* connection_ = nullptr;
    xcb_window_t window_ = 0;
    xcb_atom_t protocols_ = 0;
    xcb_atom_t ping_ = 0;
    std::atomic<bool> stopping_{false};
    std::atomic<bool> hung_{false};
    mutable std::mutex mutex_;
    std::vector<Key> keys_;
    std::thread thread_;
};

}  // namespace veltrin
