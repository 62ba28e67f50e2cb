#include "Platform/Linux/X11/X11Pasteboard.h"

namespace veltrin {
namespace {

constexpr std::chrono::milliseconds readLimit{500};
constexpr std::chrono::milliseconds handOverLimit{500};

}  // namespace

X11Pasteboard::X11Pasteboard(const QByteArray& display)
    : server_(X11SelectionServer::start(display)), reader_(std::make_unique<X11SelectionReader>(display)) {
}

X11Pasteboard::~X11Pasteboard() {
    if (server_) server_->handOver(handOverLimit);
}

qint64 X11Pasteboard::changeCount() const {
    return reader_->changeCount();
}

qint64 X11Pasteboard::changeCountAt(quint64 timestamp) const {
    return reader_->changeCountAt(timestamp);
}

PasteboardString X11Pasteboard::string() const {
    // Our own offer is known without asking anybody. Whether it still stands only the server can say: the
    // thread that serves it may not have read yet that another program took over.
    if (server_ && reader_->owner() == server_->window()) {
        if (const auto own = server_->current()) {
            if (!own->utf8) return {};
            return {PasteboardString::Status::value, QString::fromUtf8(*own->utf8),
                    own->content != PasteboardContent::lasting};
        }
    }
    return reader_->string(readLimit);
}

void X11Pasteboard::clearContents() {
    if (server_) server_->offer({std::nullopt, PasteboardContent::lasting});
}

bool X11Pasteboard::setString(const QString& text, PasteboardContent content) {
    return server_ && server_->offer({text.toUtf8(), content});
}

}  // namespace veltrin
