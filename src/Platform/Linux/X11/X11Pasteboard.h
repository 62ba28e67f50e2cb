#pragma once

#include "Platform/Linux/X11/X11SelectionReader.h"
#include "Platform/Linux/X11/X11SelectionServer.h"
#include "Platform/Pasteboard.h"

#include <QByteArray>

#include <memory>

namespace veltrin {

/// The CLIPBOARD selection as the general pasteboard. Main thread; what is offered is served from its own
/// thread. Destroying it gives lasting text to the clipboard manager, if there is one.
class X11Pasteboard final : public Pasteboard {
public:
    /// `display` empty means $DISPLAY.
    explicit X11Pasteboard(const QByteArray& display = {});
    ~X11Pasteboard() override;

    qint64 changeCount() const override;
    qint64 changeCountAt(quint64 timestamp) const override;
    PasteboardString string() const override;
    void clearContents() override;
    bool setString(const QString& text, PasteboardContent content) override;
    QStringList types() const override;
    std::optional<PasteboardSnapshot> snapshot() const override;
    bool restore(const PasteboardSnapshot& snapshot) override;

    /// A paste key was posted to this window just now; see X11SelectionServer::pastePosted.
    void pastePosted(quint64 window) {
        if (server_) server_->pastePosted(static_cast<xcb_window_t>(window));
    }

private:
    /// What we offer, while we are the owner.
    std::optional<X11SelectionServer::Offer> own() const;

    std::unique_ptr<X11SelectionServer> server_;
    std::unique_ptr<X11SelectionReader> reader_;
};

}  // namespace veltrin
