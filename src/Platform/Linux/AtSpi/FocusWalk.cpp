#include "Platform/Linux/AtSpi/FocusWalk.h"

namespace veltrin::AtSpi {
namespace {

constexpr std::size_t mostObjects = 4000;
constexpr std::size_t inFlight = 128;
constexpr int deepest = 60;
constexpr Milliseconds pageTreePause{15};
constexpr int pageTreeAttempts = 5;

struct Node {
    ObjectAddress object;
    StateSet states;
    bool isKnown = false;
};
using Level = std::vector<Node>;

/// Asks something of every node of a level, a bounded number at a time, and hands over the replies in order.
template <typename Ask, typename Take>
void forLevel(Level& level, Conversation& conversation, Ask ask, Take take) {
    for (std::size_t first = 0; first < level.size() && !conversation.hasGivenUp(); first += inFlight) {
        const std::size_t last = std::min(level.size(), first + inFlight);
        std::vector<Pending> pending;
        for (std::size_t i = first; i < last; ++i)
            pending.push_back(ask(level[i]));
        for (std::size_t i = first; i < last; ++i)
            take(level[i], conversation.reply(std::move(pending[i - first])));
    }
}

void askStates(Level& level, Conversation& conversation) {
    forLevel(
        level, conversation,
        [&](const Node& node) { return conversation.call(node.object, Name::accessible, "GetState"); },
        [](Node& node, const Reply& reply) {
            node.isKnown = reply.ok();
            node.states = reply.states();
        });
}

Level childrenOf(Level& level, Conversation& conversation) {
    Level children;
    forLevel(
        level, conversation,
        [&](const Node& node) { return conversation.call(node.object, Name::accessible, "GetChildren"); },
        [&](const Node& node, const Reply& reply) {
            for (ObjectAddress& child : reply.objects()) {
                // A plug or socket leads into another process; what is in there is looked for there.
                if (child.bus == node.object.bus) children.push_back({std::move(child), {}, false});
            }
        });
    return children;
}

/// Whoever makes its children on demand may have any number of them. A text document says so, too, but only
/// has the paragraphs on the screen.
bool isEndless(const Node& node, Conversation& conversation) {
    if (!node.states.has(State::managesDescendants)) return false;
    if (!node.states.has(State::editable)) return true;
    const Reply role = conversation.ask(node.object, Name::accessible, "GetRole");
    return static_cast<Role>(role.number()) != Role::documentText;
}

bool isWorthEntering(const Node& node, Toolkit toolkit, Conversation& conversation) {
    if (!node.isKnown || isEndless(node, conversation)) return false;
    // GTK 4 never says that anything is showing.
    return toolkit == Toolkit::gtk4 || node.states.has(State::showing);
}

/// Of focused objects, none of them editable, each inside the one before: the innermost that has text.
ObjectAddress bestOf(const std::vector<ObjectAddress>& chain, Conversation& conversation) {
    for (auto object = chain.rbegin(); object != chain.rend() && chain.size() > 1; ++object) {
        const Reply interfaces = conversation.ask(*object, Name::accessible, "GetInterfaces");
        if (interfaces.texts().contains(QLatin1String(Name::text))) return *object;
    }
    return chain.back();
}

struct Found {
    ObjectAddress object;
    bool isEditable = false;
};

std::optional<Found> search(Level level, Toolkit toolkit, Conversation& conversation) {
    std::vector<ObjectAddress> chain;
    std::size_t seen = 0;
    for (int depth = 0; depth < deepest && !level.empty(); ++depth) {
        seen += level.size();
        if (seen > mostObjects || conversation.hasGivenUp()) break;
        askStates(level, conversation);
        Level focused;
        for (const Node& node : level) {
            if (!node.isKnown || !node.states.has(State::focused)) continue;
            if (node.states.has(State::editable)) return Found{node.object, true};
            focused.push_back(node);
        }
        if (!focused.empty()) chain.push_back(focused.front().object);
        // Once something focused is found, only what lies inside it can be better.
        Level& branches = focused.empty() ? level : focused;
        std::erase_if(branches,
                      [&](const Node& node) { return !isWorthEntering(node, toolkit, conversation); });
        level = childrenOf(branches, conversation);
    }
    if (chain.empty()) return {};
    return Found{bestOf(chain, conversation), false};
}

}  // namespace

std::optional<ObjectAddress> focusedFieldInside(const ObjectAddress& object, Toolkit toolkit,
                                                Conversation& conversation) {
    const auto found = search({{object, {}, false}}, toolkit, conversation);
    return found && found->isEditable ? std::optional(found->object) : std::nullopt;
}

std::optional<ObjectAddress> walkToFocus(const QString& bus, Toolkit toolkit, Conversation& conversation) {
    Level root{{ObjectAddress{bus, QLatin1String(Name::rootPath)}, {}, true}};
    Level windows = childrenOf(root, conversation);
    askStates(windows, conversation);
    Level active;
    for (const Node& window : windows) {
        if (window.isKnown && window.states.has(State::active)) active.push_back(window);
    }
    if (!active.empty()) windows = active;
    if (toolkit != Toolkit::chromium) {
        const auto found = search(windows, toolkit, conversation);
        return found ? std::optional(found->object) : std::nullopt;
    }

    // Chromium builds the objects of a page only when somebody asks for attributes.
    forLevel(
        windows, conversation,
        [&](const Node& node) { return conversation.call(node.object, Name::accessible, "GetAttributes"); },
        [](Node&, const Reply&) {});
    // Until they are there the page itself says that it has the focus.
    std::optional<Found> found;
    for (int attempt = 0; attempt < pageTreeAttempts; ++attempt) {
        if (const auto now = search(windows, toolkit, conversation)) found = now;
        if ((found && found->isEditable) || !conversation.pause(pageTreePause)) break;
    }
    return found ? std::optional(found->object) : std::nullopt;
}

}  // namespace veltrin::AtSpi
