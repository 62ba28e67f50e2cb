#pragma once

#include "support/desktop/Program.h"
#include "support/fields/ExternalTextDesktop.h"
#include "support/fields/FieldDriver.h"

#include <map>
#include <memory>

namespace veltrin {

/// One foreign application on a test desktop, started once, with the fields of it that tests work on.
class FieldApplication {
public:
    /// By its name: "mousepad", "gedit", "gnome-text-editor", "qt-widgets", "qt-quick", "chromium",
    /// "firefox", "libreoffice-writer", "xterm", "lxterminal", and "zenity", which has no field. Returns when
    /// its window is active and its fields can be set. Throws std::runtime_error when it does not come up.
    FieldApplication(const QString& name, ExternalTextDesktop& text, RealDesktop& desktop, AtSpiProbe& probe);
    FieldApplication(const FieldApplication&) = delete;
    FieldApplication& operator=(const FieldApplication&) = delete;

    const QString& name() const { return name_; }
    Program& program() { return *program_; }
    xcb_window_t window() const { return program_->window(); }
    /// The process that owns the window; a starter script may stand before it.
    qint32 process() const;
    FieldDriver& field(const QString& name) { return *fields_.at(name); }

private:
    void begin(const QStringList& command, const QString& windowClass = {}, const Environment& extra = {});
    void addProbed();
    void addPage();
    void startControlled(const QString& program);
    void startChromium();
    void startFirefox();
    void startWriter();
    void startTerminal();

    QString name_;
    ExternalTextDesktop& text_;
    RealDesktop& desktop_;
    AtSpiProbe& probe_;
    std::unique_ptr<PageServer> page_;
    std::unique_ptr<Program> program_;
    std::map<QString, std::unique_ptr<FieldDriver>> fields_;
};

/// Starts Chromium with a window of a fixed place and size on one page. Nothing goes to the network.
QStringList chromiumCommand(RealDesktop& desktop, const QString& url);

/// The element that has the focus in a process, by the adapter; null when there is none.
AXElementRef focusedElement(Accessibility& accessibility, qint32 process);

}  // namespace veltrin
