#pragma once

#include "support/desktop/RealDesktop.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

#include <memory>
#include <optional>

namespace veltrin {

/// Everything a clipboard gives, by target name ("UTF8_STRING", "text/html", "image/png"…), byte for byte.
/// Targets that only speak about the others (TARGETS, TIMESTAMP…) are not part of it.
struct ClipboardSnapshot {
    QMap<QString, QByteArray> contents;
    QStringList unanswered;  ///< targets that were on offer and did not come; offered so when owned

    static ClipboardSnapshot ofText(const QString& text);
    friend bool operator==(const ClipboardSnapshot&, const ClipboardSnapshot&) = default;
};

/// Another program that owns, reads and watches a selection, on connections and a thread of its own. Content
/// is served whatever the test's thread does, in pieces (INCR) when it is long.
class ClipboardProbe {
public:
    explicit ClipboardProbe(RealDesktop& desktop, const char* selection = "CLIPBOARD");
    ~ClipboardProbe();
    ClipboardProbe(const ClipboardProbe&) = delete;
    ClipboardProbe& operator=(const ClipboardProbe&) = delete;

    // Owning. Each takes the selection and returns when the server says so.
    void own(const ClipboardSnapshot& content);
    void ownText(const QString& text) { own(ClipboardSnapshot::ofText(text)); }
    /// Is owner and never answers anybody.
    void ownSilently();
    /// Gives the selection up, if it is still ours; then nobody owns it.
    void disown();
    bool isOwner();
    bool hasOwner();
    /// From now on every answer comes this much later.
    void setAnswerDelay(double seconds);

    struct Request {
        QString target;
        xcb_window_t requestor = 0;
        double moment = 0;  ///< on monotonicSeconds' clock
    };
    /// What others asked for since the selection was taken last, in order.
    QList<Request> requests() const;

    /// How often the owner was set, by anybody, since this probe began. Follows the server within
    /// milliseconds.
    int ownerChanges() const;

    // Reading.
    struct Answer {
        enum class Status { value, refused, unanswered };
        Status status = Status::unanswered;
        QByteArray bytes;
    };
    Answer read(const QString& target, double seconds = 2);
    /// The UTF8_STRING; nothing when there is none or no answer.
    std::optional<QString> text(double seconds = 2);
    QStringList targets(double seconds = 2);
    ClipboardSnapshot snapshot(double secondsEach = 2);

private:
    class Owner;

    XDesktop x_;
    QByteArray selection_;
    xcb_window_t window_ = 0;
    std::unique_ptr<Owner> owner_;
    int reads_ = 0;

    xcb_timestamp_t serverTime();
    xcb_window_t currentOwner();
    void take(const ClipboardSnapshot& content, bool answers);
    XReply<xcb_generic_event_t> nextEvent(double deadline);
    std::optional<QByteArray> takeProperty(xcb_atom_t property, xcb_atom_t* type);
    Answer receive(xcb_atom_t property, double deadline);
};

}  // namespace veltrin
