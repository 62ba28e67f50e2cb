#pragma once

#include "support/desktop/XDesktop.h"

#include <QList>
#include <QString>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace veltrin {

class RealDesktop;

/// The keys that go down on a desktop, whoever presses them and by whatever road, each with the window that
/// the server gives it to: the one that had the input focus. For all toolkits alike, whichever kind of key
/// event they listen to (the server records deliveries of one kind only). It needs nothing of the programs,
/// sends them nothing, and takes nothing from them.
///
/// A key that somebody has grabbed goes to him instead; a test for which that matters has nobody who does.
class ReceivedKeys {
public:
    /// Throws std::runtime_error when the server does not tell.
    explicit ReceivedKeys(RealDesktop& desktop);
    ~ReceivedKeys();
    ReceivedKeys(const ReceivedKeys&) = delete;
    ReceivedKeys& operator=(const ReceivedKeys&) = delete;

    struct Press {
        xcb_window_t window = 0;  ///< that had the focus, or 0
        QString key;              ///< as X names it in the keyboard's first layout: "Control_L", "c"
    };
    /// What was pressed since the last call, in the server's order. Everything that the server did before
    /// this call is in it.
    QList<Press> take();

    /// The same for all windows of one connection to the server.
    quint32 clientOf(xcb_window_t window) const;

private:
    struct Seen {
        xcb_window_t window;
        xcb_keycode_t key;
    };

    void run();
    bool handle(const xcb_generic_event_t& event);
    void mark();
    QString nameOf(xcb_keycode_t key);

    XDesktop control_;
    XDesktop listening_;  ///< the thread's own
    quint8 xinput_ = 0;
    xcb_window_t marked_ = 0;  ///< a message to it marks a moment among the keys
    quint32 marks_ = 0;

    std::mutex mutex_;
    std::condition_variable changed_;
    QList<Seen> presses_;
    quint32 lastMark_ = 0;
    bool ends_ = false;
    std::thread thread_;
};

}  // namespace veltrin
