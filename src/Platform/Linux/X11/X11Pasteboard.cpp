#include "Platform/Linux/X11/X11Pasteboard.h"

#include "Platform/Linux/X11/X11SelectionOwner.h"
#include "Platform/Linux/X11/X11SelectionReader.h"

namespace veltrin {
namespace {

constexpr char selection[] = "CLIPBOARD";

}  // namespace

X11Pasteboard::X11Pasteboard(const QByteArray& display)
    : owner_(X11SelectionOwner::start(display, selection)),
      reader_(X11SelectionReader::start(display, selection)) {
}

X11Pasteboard::~X11Pasteboard() = default;

qint64 X11Pasteboard::changeCount() const {
    return owner_ ? owner_->changeCount() : 0;
}

PasteboardString X11Pasteboard::string() const {
    // Our own offer is known without asking ourselves.
    if (owner_) {
        if (const auto own = owner_->current())
            return {own->text ? PasteboardString::Status::value : PasteboardString::Status::none,
                    own->text.value_or(QString())};
    }
    return reader_ ? reader_->read() : PasteboardString{};
}

void X11Pasteboard::clearContents() {
    if (owner_) owner_->take({});
}

bool X11Pasteboard::setString(const QString& text, PasteboardContent content) {
    return owner_ && owner_->take({text, content == PasteboardContent::temporary});
}

}  // namespace veltrin
