#include "Platform/Linux/AtSpi/TreeReading.h"

#include "Platform/Linux/AtSpi/AtSpiElement.h"
#include "Platform/Linux/AtSpi/TextState.h"

#include <algorithm>

namespace veltrin::AtSpi {
namespace {

constexpr std::size_t inFlight = 128;

struct Node {
    ObjectAddress object;
    bool hasSelection = false;
    int childCount = 0;
    std::vector<std::size_t> children;
};

/// The nodes from `first` on, a bounded number at a time: `ask` sends, `take` gets what came back.
template <typename Ask, typename Take>
void forNodes(std::vector<Node>& nodes, std::size_t first, std::size_t last, Conversation& conversation,
              Ask ask, Take take) {
    for (; first < last && !conversation.hasGivenUp(); first += inFlight) {
        const std::size_t end = std::min(last, first + inFlight);
        std::vector<decltype(ask(nodes[first]))> sent;
        for (std::size_t i = first; i < end; ++i)
            sent.push_back(ask(nodes[i]));
        for (std::size_t i = first; i < end; ++i)
            take(i, std::move(sent[i - first]));
    }
}

class TreeReader {
public:
    TreeReader(const AXTreeLimits& limits, bool isPage, Conversation& conversation)
        : limits_(limits), isPage_(isPage), conversation_(conversation) {}

    void read(const ObjectAddress& object) {
        nodes_.push_back({object, false, 0, {}});
        std::size_t first = 0;
        for (int depth = 0; depth <= limits_.depth; ++depth) {
            const std::size_t last = nodes_.size();
            if (first == last) break;
            count(first, last);
            look(first, last);
            if (depth < limits_.depth) descend(first, last);
            first = last;
        }
    }

    AXTree tree(std::size_t index, qint32 processIdentifier) const {
        const Node& node = nodes_[index];
        AXTree tree;
        tree.element = AtSpiElement::object(processIdentifier, node.object);
        tree.mayHaveSelectedText = node.hasSelection;
        for (const std::size_t child : node.children)
            tree.children.push_back(this->tree(child, processIdentifier));
        return tree;
    }

private:
    /// How many children the nodes of a level have.
    void count(std::size_t first, std::size_t last) {
        forNodes(
            nodes_, first, last, conversation_,
            [&](const Node& node) {
                return conversation_.property(node.object, Name::accessible, "ChildCount");
            },
            [&](std::size_t index, Pending pending) {
                const Reply count = conversation_.reply(std::move(pending));
                if (count.ok())
                    nodes_[index].childCount = static_cast<int>(std::max<qint64>(count.number(), 0));
            });
    }

    /// Whether something is selected in the nodes of a level.
    void look(std::size_t first, std::size_t last) {
        forNodes(
            nodes_, first, last, conversation_,
            [&](const Node& node) {
                // What has no text answers with an error, and that says enough.
                return node.childCount > mostChildrenAsked
                           ? Pending()
                           : conversation_.call(node.object, Name::text, "GetNSelections");
            },
            [&](std::size_t index, Pending pending) {
                const Reply selections = conversation_.reply(std::move(pending));
                Node& node = nodes_[index];
                node.hasSelection = selections.ok() && selections.number() > 0;
                // What is selected inside of a page's text shows in that text as well; only a field that has
                // lost the focus remembers another selection.
                if (isPage_ && selections.ok() && !node.hasSelection) node.childCount = 0;
            });
    }

    /// Adds the children of the nodes of a level.
    void descend(std::size_t first, std::size_t last) {
        std::vector<std::pair<std::size_t, std::vector<Pending>>> sent;
        std::size_t calls = 0;
        const auto take = [&] {
            for (auto& [parent, pending] : sent)
                takeChildren(parent, std::move(pending));
            sent.clear();
            calls = 0;
        };
        for (std::size_t i = first; i < last && !isFull() && !conversation_.hasGivenUp(); ++i) {
            if (nodes_[i].childCount == 0) continue;
            sent.emplace_back(i, askChildren(nodes_[i]));
            calls += sent.back().second.size();
            if (calls >= inFlight) take();
        }
        take();
    }

    /// A page may have thousands of children, and a table millions: then those that count are asked for one
    /// by one.
    std::vector<Pending> askChildren(const Node& node) {
        std::vector<Pending> sent;
        if (node.childCount <= limits_.children) {
            sent.push_back(conversation_.call(node.object, Name::accessible, "GetChildren"));
            return sent;
        }
        for (int i = 0; i < limits_.children; ++i)
            sent.push_back(conversation_.call(node.object, Name::accessible, "GetChildAtIndex", {i}));
        return sent;
    }

    void takeChildren(std::size_t parent, std::vector<Pending> sent) {
        const bool isList = nodes_[parent].childCount <= limits_.children;
        for (Pending& pending : sent) {
            const Reply reply = conversation_.reply(std::move(pending));
            if (!reply.ok()) continue;
            if (isList) {
                for (const ObjectAddress& child : reply.objects())
                    add(parent, child);
            } else {
                add(parent, reply.object());
            }
        }
    }

    void add(std::size_t parent, const ObjectAddress& child) {
        const bool isEnough = isFull() || std::ssize(nodes_[parent].children) >= limits_.children;
        // A plug or socket leads into another process.
        if (isEnough || child.isNull() || child.path == QLatin1String(Name::nullPath) ||
            child.bus != nodes_[parent].object.bus)
            return;
        nodes_[parent].children.push_back(nodes_.size());
        nodes_.push_back({child, false, 0, {}});
    }

    bool isFull() const { return std::ssize(nodes_) >= limits_.elements; }

    const AXTreeLimits& limits_;
    bool isPage_;  ///< of Chromium
    Conversation& conversation_;
    std::vector<Node> nodes_;
};

}  // namespace

AXTree readTree(const ObjectAddress& object, qint32 processIdentifier, const AXTreeLimits& limits,
                ApplicationDirectory& directory, Conversation& conversation) {
    const bool isPage = directory.toolkitOf(object.bus, conversation) == Toolkit::chromium &&
                        static_cast<Role>(conversation.ask(object, Name::accessible, "GetRole").number()) ==
                            Role::documentWeb;
    TreeReader reader(limits, isPage, conversation);
    reader.read(object);
    return reader.tree(0, processIdentifier);
}

std::optional<ObjectAddress> topLevelObject(qint32 processIdentifier, const QString& title, bool isActive,
                                            ApplicationDirectory& directory, Conversation& conversation) {
    std::vector<ObjectAddress> windows;
    for (const QString& bus : directory.busesOf(processIdentifier, conversation)) {
        const ObjectAddress root{bus, QLatin1String(Name::rootPath)};
        const auto children = conversation.ask(root, Name::accessible, "GetChildren").objects();
        windows.insert(windows.end(), children.begin(), children.end());
    }
    if (windows.size() == 1) return windows.front();
    std::vector<std::pair<Pending, Pending>> questions;
    for (const ObjectAddress& window : windows) {
        Pending name = conversation.property(window, Name::accessible, "Name");
        questions.emplace_back(std::move(name), conversation.call(window, Name::accessible, "GetState"));
    }
    std::optional<ObjectAddress> titled;
    std::optional<ObjectAddress> active;
    for (std::size_t i = 0; i < windows.size(); ++i) {
        const Reply name = conversation.reply(std::move(questions[i].first));
        const Reply states = conversation.reply(std::move(questions[i].second));
        const bool hasTitle = name.ok() && name.text() == title;
        const bool isActiveToo = states.states().has(State::active);
        // Of several with one title the active one, if that is what is wanted.
        if (hasTitle && (!titled || (isActive && isActiveToo))) titled = windows[i];
        if (isActiveToo) active = windows[i];
    }
    if (titled) return titled;
    return isActive ? active : std::nullopt;
}

}  // namespace veltrin::AtSpi
