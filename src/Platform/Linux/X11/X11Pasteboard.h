#pragma once

#include "Platform/Pasteboard.h"

#include <QByteArray>

#include <memory>

namespace veltrin {

class X11SelectionOwner;
class X11SelectionReader;

/// The CLIPBOARD selection. Without a server it is always empty and nothing can be put there.
class X11Pasteboard final : public Pasteboard {
public:
    /// `display` empty means $DISPLAY.
    explicit X11Pasteboard(const QByteArray& display = {});
    ~X11Pasteboard() override;

    qint64 changeCount() const override;
    PasteboardString string() const override;
    void clearContents() override;
    bool setString(const QString& text, PasteboardContent content) override;

private:
    std::unique_ptr<X11SelectionOwner> owner_;
    std::unique_ptr<X11SelectionReader> reader_;
};

}  // namespace veltrin
