#include "Platform/Linux/X11/X11Windows.h"

#include <xcb/res.h>

#include <algorithm>
#include <thread>

namespace veltrin {
namespace {

std::vector<std::uint32_t> wordsOf(const std::optional<X11Connection::Property>& property) {
    return property ? property->words() : std::vector<std::uint32_t>();
}

std::uint32_t firstOf(const std::optional<X11Connection::Property>& property) {
    const auto words = wordsOf(property);
    return words.empty() ? 0 : words.front();
}

}  // namespace

X11Windows::X11Windows(const X11Connection& connection)
    : connection_(connection),
      activeWindow_(connection.atom("_NET_ACTIVE_WINDOW")),
      managerCheck_(connection.atom("_NET_SUPPORTING_WM_CHECK")),
      processId_(connection.atom("_NET_WM_PID")) {
}

std::optional<X11Windows::Active> X11Windows::active() const {
    connection_.discardEvents();
    const auto root = connection_.root();
    const auto activeCookie = connection_.requestProperty(root, activeWindow_, XCB_ATOM_WINDOW, 4);
    const auto managerCookie = connection_.requestProperty(root, managerCheck_, XCB_ATOM_WINDOW, 4);
    const xcb_window_t said = firstOf(connection_.property(activeCookie));
    const xcb_window_t manager = firstOf(connection_.property(managerCookie));

    // A window manager that died leaves its words on the root window; its own check window died with it.
    const auto checkCookie =
        connection_.requestProperty(manager != 0 ? manager : root, managerCheck_, XCB_ATOM_WINDOW, 4);
    const auto processCookie =
        connection_.requestProperty(said != 0 ? said : root, processId_, XCB_ATOM_CARDINAL, 4);
    const bool isManaged = manager != 0 && firstOf(connection_.property(checkCookie)) == manager;
    const auto process = connection_.property(processCookie);

    Active result;
    if (isManaged) {
        if (said == 0) return std::nullopt;
        result.window = said;
        if (const auto words = wordsOf(process); !words.empty()) {
            result.process = static_cast<qint32>(words.front());
        } else {
            // It does not say, or it was destroyed and the window manager has not said so yet.
            if (!exists(said)) return std::nullopt;
            result.process = processByServer(said);
        }
        return result;
    }
    result.window = focusedTopLevel();
    if (result.window == XCB_NONE) return std::nullopt;
    result.process = this->process(result.window);
    return result;
}

bool X11Windows::hasWindowManager() const {
    const auto manager = connection_.word(connection_.root(), managerCheck_, XCB_ATOM_WINDOW);
    return manager && *manager != 0 && connection_.word(*manager, managerCheck_, XCB_ATOM_WINDOW) == manager;
}

xcb_window_t X11Windows::focusedTopLevel() const {
    auto* xcb = connection_.xcb();
    const X11Reply<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr));
    if (!focus || focus->focus <= XCB_INPUT_FOCUS_POINTER_ROOT || focus->focus == connection_.root())
        return XCB_NONE;
    xcb_window_t window = focus->focus;
    for (;;) {
        const X11Reply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(xcb, xcb_query_tree(xcb, window), nullptr));
        if (!tree) return XCB_NONE;
        if (tree->parent == connection_.root() || tree->parent == XCB_NONE) return window;
        window = tree->parent;
    }
}

std::vector<xcb_window_t> X11Windows::windows() const {
    const auto root = connection_.root();
    if (hasWindowManager()) {
        auto stacked = wordsOf(connection_.property(root, connection_.atom("_NET_CLIENT_LIST_STACKING"),
                                                    XCB_ATOM_WINDOW, 65536));
        if (!stacked.empty()) return stacked;
        return wordsOf(
            connection_.property(root, connection_.atom("_NET_CLIENT_LIST"), XCB_ATOM_WINDOW, 65536));
    }
    auto* xcb = connection_.xcb();
    const X11Reply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(xcb, xcb_query_tree(xcb, root), nullptr));
    if (!tree) return {};
    std::vector<xcb_window_t> result;
    const auto* children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        const X11Reply<xcb_get_window_attributes_reply_t> attributes(
            xcb_get_window_attributes_reply(xcb, xcb_get_window_attributes(xcb, children[i]), nullptr));
        if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE ||
            attributes->override_redirect != 0) {
            continue;
        }
        result.push_back(children[i]);
    }
    return result;
}

std::vector<xcb_window_t> X11Windows::windowsOf(qint32 wanted) const {
    std::vector<xcb_window_t> result;
    for (const auto window : windows()) {
        if (process(window) == wanted) result.push_back(window);
    }
    return result;
}

std::optional<qint32> X11Windows::process(xcb_window_t window) const {
    const auto said = connection_.word(window, processId_, XCB_ATOM_CARDINAL);
    if (said && *said != 0) return static_cast<qint32>(*said);
    return processByServer(window);
}

std::optional<qint32> X11Windows::processByServer(xcb_window_t window) const {
    if (!connection_.hasResource()) return std::nullopt;
    const xcb_res_client_id_spec_t spec{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const X11Reply<xcb_res_query_client_ids_reply_t> reply(xcb_res_query_client_ids_reply(
        connection_.xcb(), xcb_res_query_client_ids(connection_.xcb(), 1, &spec), nullptr));
    if (!reply) return std::nullopt;
    for (auto ids = xcb_res_query_client_ids_ids_iterator(reply.get()); ids.rem > 0;
         xcb_res_client_id_value_next(&ids)) {
        if ((ids.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) == 0) continue;
        if (xcb_res_client_id_value_value_length(ids.data) < 1) continue;
        return static_cast<qint32>(*xcb_res_client_id_value_value(ids.data));
    }
    return std::nullopt;
}

QStringList X11Windows::windowClass(xcb_window_t window) const {
    const auto property = connection_.property(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING);
    if (!property) return {};
    const auto parts = property->bytes.split('\0');
    QStringList result;
    for (qsizetype i = 0; i < std::min<qsizetype>(2, parts.size()); ++i)
        result << QString::fromLatin1(parts[i]);
    return result;
}

QString X11Windows::gtkApplicationId(xcb_window_t window) const {
    const auto property = connection_.property(window, connection_.atom("_GTK_APPLICATION_ID"));
    return property ? QString::fromUtf8(property->bytes) : QString();
}

bool X11Windows::exists(xcb_window_t window) const {
    const X11Reply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
        connection_.xcb(), xcb_get_window_attributes(connection_.xcb(), window), nullptr));
    return attributes && attributes->map_state != XCB_MAP_STATE_UNMAPPED;
}

bool X11Windows::activate(xcb_window_t window, std::chrono::milliseconds limit) const {
    auto* xcb = connection_.xcb();
    if (hasWindowManager()) {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = activeWindow_;
        // A pager asks: what the user wants at once, and no window manager holds back.
        message.data.data32[0] = 2;
        xcb_send_event(xcb, 0, connection_.root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char*>(&message));
    } else {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(xcb, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        xcb_set_input_focus(xcb, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    }
    connection_.flush();
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        const auto now = active();
        if (now && now->window == window) return true;
        if (connection_.isLost() || std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

X11WindowPing::X11WindowPing(const QByteArray& display) : connection_(X11Connection::open(display)) {
}

/// Answers come to the root window; one listens there only while one is due.
void X11WindowPing::listen(bool on) {
    // GTK answers whoever listens for the one kind, Qt for the other.
    const std::uint32_t mask =
        on ? XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY : XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(connection_->xcb(), connection_->root(), XCB_CW_EVENT_MASK, &mask);
    connection_->flush();
}

bool X11WindowPing::takeAnswer(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7F) != XCB_CLIENT_MESSAGE) return false;
    const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
    if (message.type != connection_->atom("WM_PROTOCOLS") || message.format != 32 ||
        message.data.data32[0] != connection_->atom("_NET_WM_PING")) {
        return false;
    }
    const auto found = waiting_.find(message.data.data32[2]);
    if (found == waiting_.end() || found->second != message.data.data32[1]) return false;
    waiting_.erase(found);
    return true;
}

X11WindowPing::Answer X11WindowPing::ask(xcb_window_t window, std::chrono::milliseconds limit) {
    if (!connection_ || connection_->isLost()) return Answer::unanswered;
    const auto ping = connection_->atom("_NET_WM_PING");
    const auto protocols = connection_->property(window, connection_->atom("WM_PROTOCOLS"), XCB_ATOM_ATOM);
    const auto words = protocols ? protocols->words() : std::vector<std::uint32_t>();
    if (std::find(words.begin(), words.end(), ping) == words.end()) return Answer::notSupported;

    if (!waiting_.empty()) {
        connection_->roundTrip();
        connection_->waitForEvent(std::chrono::milliseconds(0), [this](const xcb_generic_event_t& event) {
            takeAnswer(event);
            return false;
        });
        if (waiting_.contains(window)) return Answer::unanswered;
    }
    listen(true);
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = connection_->atom("WM_PROTOCOLS");
    message.data.data32[0] = ping;
    // The stamp need not be a time; it tells our answers from those to the window manager.
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    lastStamp_ = std::max(
        lastStamp_ + 1,
        static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count()));
    message.data.data32[1] = lastStamp_;
    message.data.data32[2] = window;
    waiting_[window] = lastStamp_;
    xcb_send_event(connection_->xcb(), 0, window, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&message));
    const bool answered = connection_->waitForEvent(limit, [&](const xcb_generic_event_t& event) {
        return takeAnswer(event) && !waiting_.contains(window);
    });
    if (answered && waiting_.empty()) listen(false);
    return answered ? Answer::alive : Answer::unanswered;
}

}  // namespace veltrin
