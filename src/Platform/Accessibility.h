#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <memory>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

namespace veltrin {

/// Result codes of an accessibility call; the numbers appear in the log.
enum class AXError : qint32 {
    success = 0,
    failure = -25200,
    illegalArgument = -25201,
    invalidUIElement = -25202,
    cannotComplete = -25204,  ///< the application did not answer in time, or said yes and did nothing
    attributeUnsupported = -25205,
    notImplemented = -25208,
    apiDisabled = -25211,
    noValue = -25212,
    parameterizedAttributeUnsupported = -25213,
};

/// A range of a text in UTF-16 units.
struct TextRange {
    qint64 location = 0;
    qint64 length = 0;
    friend bool operator==(const TextRange&, const TextRange&) = default;
};

enum class AXAttribute {
    focusedUIElement,   ///< element; of an application
    focusedWindow,      ///< element; of an application
    windows,            ///< list of elements; of an application
    role,               ///< string, as "AXTextArea"
    subrole,            ///< string
    title,              ///< string
    description,        ///< string
    value,              ///< string; the whole text of a text element
    selectedText,       ///< string; empty when nothing is selected
    selectedTextRange,  ///< TextRange; a caret has length 0
    boundsForRange,     ///< parameterised by a TextRange; rectangle
    position,           ///< point
    size,               ///< size
    focused,            ///< bool
    children,           ///< list of elements; these three are looked through by `copyTree`
    contents,           ///< list of elements
    selectedChildren,   ///< list of elements
};

/// A user-interface element of some application, held as long as somebody wants it. It may be gone over
/// there.
class AXElement {
public:
    virtual ~AXElement() = default;
    virtual std::optional<qint32> processIdentifier() const = 0;
    /// True when both stand for the same element of the same application.
    virtual bool isEqual(const AXElement& other) const = 0;
};
using AXElementRef = std::shared_ptr<const AXElement>;

using AXValue = std::variant<std::monostate, QString, bool, TextRange, QPointF, QSizeF, QRectF, AXElementRef,
                             std::vector<AXElementRef>>;

/// Error code and, on success, the value.
template <typename T>
struct AXResult {
    AXError error = AXError::failure;
    T value{};

    AXResult() = default;
    AXResult(AXError code) : error(code) {}
    AXResult(T good) : error(AXError::success), value(std::move(good)) {}
    bool ok() const { return error == AXError::success; }
};

/// How far a look at what is below an element goes.
struct AXTreeLimits {
    int depth = 0;     ///< levels below the element
    int children = 0;  ///< the first ones that count of each list of an element
    int elements = 0;  ///< in all, since depth and children alone leave room for millions
};

/// An element with what is below it, list by list.
struct AXTree {
    AXElementRef element;
    /// False when no text is selected in the element itself for sure.
    bool mayHaveSelectedText = true;
    std::vector<AXTree> children;
    std::vector<AXTree> contents;
    std::vector<AXTree> selectedChildren;
};

/// Accessibility of all applications. Synchronous, main thread; a call into an application that hangs costs a
/// bounded wait (at most 0.6 s for a read of several attributes) and then gives `cannotComplete`. Rectangles
/// and points have the origin at the top left of the desktop. Text offsets are UTF-16 units, whatever the
/// toolkit counts.
///
/// Password fields are never read: they have no value, no selection, and nothing in them is settable. Calls
/// about this process are answered inside it.
class Accessibility {
public:
    virtual ~Accessibility() = default;

    /// Whether accessibility can be used at all.
    virtual bool isProcessTrusted() const = 0;
    /// The same, asking the user or the desktop to turn it on where that is possible.
    virtual bool promptForTrust() = 0;

    /// The element that stands for an application. Never null; calls on it fail when there is no such
    /// process.
    virtual AXElementRef applicationElement(qint32 processIdentifier) = 0;

    virtual AXResult<AXValue> copyAttributeValue(const AXElementRef& element, AXAttribute attribute) = 0;
    /// Several attributes of one element, in the order asked for. An adapter that can fetches what they have
    /// in common once: a long text, its selection and its length then are of one moment.
    virtual std::vector<AXResult<AXValue>> copyAttributeValues(const AXElementRef& element,
                                                               const std::vector<AXAttribute>& attributes) {
        std::vector<AXResult<AXValue>> values;
        values.reserve(attributes.size());
        for (const AXAttribute attribute : attributes)
            values.push_back(copyAttributeValue(element, attribute));
        return values;
    }
    /// What is below an element, in one question, so that an adapter can ask many elements at a time. What
    /// did not answer in time is missing. An adapter that knows an element's selected children and contents
    /// to be among its children leaves those lists empty.
    virtual AXTree copyTree(const AXElementRef& element, const AXTreeLimits& limits) {
        int left = limits.elements - 1;
        return copyTree(element, limits, limits.depth, left);
    }
    virtual AXResult<AXValue> copyParameterizedAttributeValue(const AXElementRef& element,
                                                              AXAttribute attribute,
                                                              const AXValue& parameter) = 0;
    /// Success only when the element was read back as set; otherwise `cannotComplete`, and the write may
    /// still land.
    virtual AXError setAttributeValue(const AXElementRef& element, AXAttribute attribute,
                                      const AXValue& value) = 0;
    virtual AXResult<bool> isAttributeSettable(const AXElementRef& element, AXAttribute attribute) = 0;

private:
    AXTree copyTree(const AXElementRef& element, const AXTreeLimits& limits, int depth, int& left) {
        AXTree tree;
        tree.element = element;
        if (depth <= 0) return tree;
        const auto fill = [&](AXAttribute attribute, std::vector<AXTree>& list) {
            const AXResult<AXValue> read = copyAttributeValue(element, attribute);
            const auto* elements = std::get_if<std::vector<AXElementRef>>(&read.value);
            if (!read.ok() || !elements) return;
            for (const AXElementRef& child : *elements) {
                if (std::ssize(list) >= limits.children || left <= 0) return;
                --left;
                if (child) list.push_back(copyTree(child, limits, depth - 1, left));
            }
        };
        fill(AXAttribute::children, tree.children);
        fill(AXAttribute::contents, tree.contents);
        fill(AXAttribute::selectedChildren, tree.selectedChildren);
        return tree;
    }
};

}  // namespace veltrin
