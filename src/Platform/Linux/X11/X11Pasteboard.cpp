#include "Platform/Linux/X11/X11Pasteboard.h"

#include "Platform/Linux/X11/X11SelectionTypes.h"

namespace veltrin {
namespace {

constexpr std::chrono::milliseconds readLimit{500};
constexpr std::chrono::milliseconds handOverLimit{500};
constexpr std::chrono::milliseconds typeLimit{50};
constexpr std::chrono::milliseconds snapshotLimit{400};

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

/// Our own offer is known without asking anybody. Whether it still stands only the server can say: the thread
/// that serves it may not have read yet that another program took over.
std::optional<X11SelectionServer::Offer> X11Pasteboard::own() const {
    return server_ && reader_->owner() == server_->window() ? server_->current() : std::nullopt;
}

PasteboardString X11Pasteboard::string() const {
    const auto offer = own();
    if (!offer) return reader_->string(readLimit);
    if (!offer->utf8) return {};
    return {PasteboardString::Status::value, QString::fromUtf8(*offer->utf8),
            offer->content != PasteboardContent::lasting};
}

QStringList X11Pasteboard::types() const {
    return reader_->types(readLimit).value_or(QStringList());
}

std::optional<PasteboardSnapshot> X11Pasteboard::snapshot() const {
    const auto offer = own();
    return offer ? SelectionTypes::snapshotOf(*offer, *reader_) : reader_->snapshot(typeLimit, snapshotLimit);
}

bool X11Pasteboard::restore(const PasteboardSnapshot& snapshot) {
    return server_ && server_->offer(SelectionTypes::offerOf(snapshot, *reader_));
}

void X11Pasteboard::clearContents() {
    if (server_) server_->offer({});
}

bool X11Pasteboard::setString(const QString& text, PasteboardContent content) {
    return server_ && server_->offer({text.toUtf8(), content});
}

}  // namespace veltrin
