#include "Platform/Linux/AtSpi/AtSpiAccessibility.h"

#include "Platform/Linux/AtSpi/AtSpiElement.h"
#include "Platform/Linux/AtSpi/AtSpiWorker.h"
#include "Platform/Linux/AtSpi/ObjectReading.h"
#include "Platform/Linux/AtSpi/PlacedRectangle.h"
#include "Platform/Linux/AtSpi/TextAccess.h"
#include "Platform/Linux/AtSpi/TreeReading.h"
#include "Platform/Linux/TopLevelWindows.h"

#include <QCoreApplication>

#include <algorithm>
#include <cerrno>
#include <csignal>

namespace veltrin {

using AtSpi::AtSpiElement;
using AtSpi::Conversation;
using AtSpi::ElementFacts;
using AtSpi::ObjectAddress;
using AtSpi::PlacedRectangle;
using AtSpi::Room;
using AtSpi::State;
using AtSpi::TextAccess;
namespace Name = AtSpi::Name;

namespace {

constexpr int layoutAttempts = 4;
constexpr AtSpi::Milliseconds layoutPause{10};

const AtSpiElement* own(const AXElementRef& element) {
    return dynamic_cast<const AtSpiElement*>(element.get());
}

bool isThisProcess(qint32 processIdentifier) {
    return processIdentifier == QCoreApplication::applicationPid();
}

bool isRunning(qint32 processIdentifier) {
    return processIdentifier > 0 && (kill(processIdentifier, 0) == 0 || errno == EPERM);
}

AXResult<AXValue> asValue(const AXResult<QRectF>& result) {
    return result.ok() ? AXResult<AXValue>(AXValue(result.value)) : AXResult<AXValue>(result.error);
}

AXResult<bool> hasFocus(const ObjectAddress& object, Conversation& conversation) {
    const AtSpi::Reply reply = conversation.ask(object, Name::accessible, "GetState");
    if (!reply.ok()) return reply.error;
    if (reply.states().has(State::defunct)) return AXError::invalidUIElement;
    return reply.states().has(State::focused);
}

AXError takeFocus(const ObjectAddress& object, Conversation& conversation) {
    constexpr AtSpi::Milliseconds pause{5};
    constexpr int attempts = 20;
    const auto before = hasFocus(object, conversation);
    if (!before.ok()) return before.error;
    if (before.value) return AXError::success;
    const AtSpi::Reply reply = conversation.ask(object, Name::component, "GrabFocus");
    if (!reply.ok()) return reply.error;
    for (int i = 0; i < attempts; ++i) {
        const auto after = hasFocus(object, conversation);
        if (!after.ok()) return after.error;
        if (after.value) return AXError::success;
        if (!conversation.pause(pause)) break;
    }
    return AXError::cannotComplete;
}

ElementState stateOf(const ElementFacts& facts) {
    return {true, facts.states.has(State::focused), facts.isEditable(), facts.isPassword(),
            facts.isTerminal()};
}

}  // namespace

struct AtSpiAccessibility::ToldWindow {
    QRectF rectangle;
    AtSpi::Toolkit toolkit = AtSpi::Toolkit::other;
};

AtSpiAccessibility::AtSpiAccessibility(TopLevelWindows* windows)
    : windows_(windows), worker_(std::make_unique<AtSpi::AtSpiWorker>()) {
}

AtSpiAccessibility::~AtSpiAccessibility() = default;

bool AtSpiAccessibility::isProcessTrusted() const {
    return worker_->isReady() || worker_->waitUntilReady();
}

bool AtSpiAccessibility::promptForTrust() {
    return worker_->tryToConnect();
}

AXElementRef AtSpiAccessibility::applicationElement(qint32 processIdentifier) {
    return AtSpiElement::application(processIdentifier);
}

AXResult<AXValue> AtSpiAccessibility::copyAttributeValue(const AXElementRef& element, AXAttribute attribute) {
    const AtSpiElement* target = own(element);
    if (!target) return AXError::illegalArgument;
    switch (target->kind()) {
        case AtSpiElement::Kind::application:
            return ofApplication(*target, attribute);
        case AtSpiElement::Kind::window:
            return ofWindow(*target, attribute);
        case AtSpiElement::Kind::object:
            break;
    }
    return ofObject(*target, attribute);
}

AXResult<AXValue> AtSpiAccessibility::ofApplication(const AtSpiElement& application, AXAttribute attribute) {
    const qint32 process = application.process();
    if (!isRunning(process)) return AXError::invalidUIElement;
    switch (attribute) {
        case AXAttribute::focusedUIElement:
            return focusedElement(process);
        case AXAttribute::focusedWindow: {
            const auto window = windows_ ? windows_->activeWindow(process) : std::nullopt;
            if (!window) return AXError::noValue;
            return AXValue(AtSpiElement::window(process, window->id));
        }
        case AXAttribute::windows: {
            std::vector<AXElementRef> elements;
            if (!windows_) return AXError::noValue;
            for (const TopLevelWindow& window : windows_->windows(process)) {
                elements.push_back(AtSpiElement::window(process, window.id));
            }
            return AXValue(std::move(elements));
        }
        case AXAttribute::role:
            return AXValue(QStringLiteral("AXApplication"));
        default:
            return AXError::attributeUnsupported;
    }
}

AXResult<AXValue> AtSpiAccessibility::focusedElement(qint32 processIdentifier) {
    // Asked over the bus, this process would wait for itself; what it shows is no foreign text.
    if (isThisProcess(processIdentifier)) return AXError::noValue;
    const bool isActive = !windows_ || windows_->activeWindow(processIdentifier).has_value();
    const auto found = worker_->ask<ObjectAddress>([=](Room& room, Conversation& conversation) {
        return room.tracker.focusedObject(processIdentifier, isActive, conversation);
    });
    if (!found.ok()) return found.error;
    return AXValue(AtSpiElement::object(processIdentifier, found.value));
}

AXResult<AXValue> AtSpiAccessibility::ofWindow(const AtSpiElement& window, AXAttribute attribute) {
    const auto found = windows_ ? windows_->window(window.windowId()) : std::nullopt;
    if (!found) return AXError::invalidUIElement;
    switch (attribute) {
        case AXAttribute::role:
            return AXValue(QStringLiteral("AXWindow"));
        case AXAttribute::title:
            return AXValue(found->title);
        case AXAttribute::position:
            return AXValue(found->frame.topLeft());
        case AXAttribute::size:
            return AXValue(found->frame.size());
        default:
            return AXError::attributeUnsupported;
    }
}

AXResult<AXValue> AtSpiAccessibility::ofObject(const AtSpiElement& object, AXAttribute attribute) {
    if (attribute == AXAttribute::position || attribute == AXAttribute::size) {
        const auto rectangle = frame(object);
        if (!rectangle.ok()) return rectangle.error;
        return attribute == AXAttribute::position ? AXValue(rectangle.value.topLeft())
                                                  : AXValue(rectangle.value.size());
    }
    return ofObject(object, std::vector{attribute}).front();
}

std::vector<AXResult<AXValue>> AtSpiAccessibility::ofObject(const AtSpiElement& object,
                                                            const std::vector<AXAttribute>& attributes) {
    using Values = std::vector<AXResult<AXValue>>;
    auto found = worker_->ask<Values>(
        [address = object.address(), attributes](Room& room, Conversation& conversation) -> AXResult<Values> {
            return AtSpi::ObjectReading(address, room.directory, conversation).values(attributes);
        });
    return found.ok() ? std::move(found.value) : Values(attributes.size(), found.error);
}

std::vector<AXResult<AXValue>> AtSpiAccessibility::copyAttributeValues(
    const AXElementRef& element, const std::vector<AXAttribute>& attributes) {
    const AtSpiElement* target = own(element);
    const bool asksForPlace = std::any_of(attributes.begin(), attributes.end(), [](AXAttribute attribute) {
        return attribute == AXAttribute::position || attribute == AXAttribute::size;
    });
    if (!target || target->kind() != AtSpiElement::Kind::object || asksForPlace)
        return Accessibility::copyAttributeValues(element, attributes);
    return ofObject(*target, attributes);
}

AXTree AtSpiAccessibility::copyTree(const AXElementRef& element, const AXTreeLimits& limits) {
    AXTree nothing;
    nothing.element = element;
    nothing.mayHaveSelectedText = false;
    const AtSpiElement* target = own(element);
    // Our own windows are never asked over the bus.
    if (!target || target->kind() == AtSpiElement::Kind::application || isThisProcess(target->process()))
        return nothing;
    const qint32 process = target->process();
    QString title;
    bool isActive = false;
    if (target->kind() == AtSpiElement::Kind::window) {
        const auto window = windows_ ? windows_->window(target->windowId()) : std::nullopt;
        if (!window) return nothing;
        title = window->title;
        const auto active = windows_->activeWindow(process);
        isActive = active && active->id == window->id;
    }
    const auto found = worker_->ask<AXTree>(
        [=, object = target->address()](Room& room, Conversation& conversation) -> AXResult<AXTree> {
            if (!object.isNull())
                return AtSpi::readTree(object, process, limits, room.directory, conversation);
            const auto top = AtSpi::topLevelObject(process, title, isActive, room.directory, conversation);
            if (!top) return AXError::noValue;
            return AtSpi::readTree(*top, process, limits, room.directory, conversation);
        });
    return found.ok() ? found.value : nothing;
}

AXResult<QRectF> AtSpiAccessibility::frame(const AtSpiElement& object) {
    const auto found = worker_->ask<PlacedRectangle>(
        [address = object.address()](Room& room, Conversation& conversation) -> AXResult<PlacedRectangle> {
            const AtSpi::Toolkit toolkit = room.directory.toolkitOf(address.bus, conversation);
            std::optional<QRectF> rectangle;
            for (int i = 0; i < layoutAttempts; ++i) {
                const AtSpi::Reply reply =
                    conversation.ask(address, Name::component, "GetExtents", {AtSpi::screenCoordinates});
                if (!reply.ok()) return reply.error;
                rectangle = reply.rectangle();
                if (!rectangle) return AXError::failure;
                if (!AtSpi::isNotLaidOut(*rectangle, toolkit) || !conversation.pause(layoutPause)) break;
            }
            if (AtSpi::isNotLaidOut(*rectangle, toolkit)) return AXError::failure;
            return AtSpi::placed(*rectangle, address, room.directory, conversation);
        });
    return found.ok() ? onDesktop(found.value, object.process(), frontWindow(object.process()))
                      : AXResult<QRectF>(found.error);
}

/// The window that the process shows in front.
std::optional<TopLevelWindow> AtSpiAccessibility::frontWindow(qint32 processIdentifier) const {
    if (!windows_) return {};
    if (auto active = windows_->activeWindow(processIdentifier)) return active;
    const auto all = windows_->windows(processIdentifier);
    return all.empty() ? std::nullopt : std::optional(all.front());
}

/// The window as the application tells of it; nothing where it does not.
AXResult<AtSpiAccessibility::ToldWindow> AtSpiAccessibility::windowAsTold(const TopLevelWindow& window,
                                                                          qint32 processIdentifier) {
    return worker_->ask<ToldWindow>([=, title = window.title](
                                        Room& room, Conversation& conversation) -> AXResult<ToldWindow> {
        const auto top = AtSpi::topLevelObject(processIdentifier, title, true, room.directory, conversation);
        if (conversation.hasGivenUp()) return AXError::cannotComplete;
        if (!top) return ToldWindow();
        const AtSpi::Toolkit toolkit = room.directory.toolkitOf(top->bus, conversation);
        const AtSpi::Reply reply =
            conversation.ask(*top, Name::component, "GetExtents", {AtSpi::screenCoordinates});
        if (reply.error == AXError::cannotComplete) return reply.error;
        return ToldWindow{reply.rectangle().value_or(QRectF()), toolkit};
    });
}

double AtSpiAccessibility::pixelsPerPoint(const TopLevelWindow& window, qint32 processIdentifier) {
    const QSizeF size = window.client.size();
    if (scale_.window == window.id && scale_.size == size) return scale_.pixelsPerPoint;
    const auto told = windowAsTold(window, processIdentifier);
    // Asked again the next time: it may have been busy.
    if (!told.ok()) return 1;
    scale_ = {window.id, size, AtSpi::pixelsPerPoint(told.value.rectangle.size(), size, told.value.toolkit)};
    return scale_.pixelsPerPoint;
}

AXResult<QRectF> AtSpiAccessibility::onDesktop(const PlacedRectangle& placed, qint32 processIdentifier,
                                               const std::optional<TopLevelWindow>& window) {
    if (!window) {
        const bool needsWindow = placed.toolkit == AtSpi::Toolkit::gtk4 || placed.lowerEdge;
        return needsWindow ? AXResult<QRectF>(AXError::failure) : placed.rectangle;
    }
    const double scale = pixelsPerPoint(*window, processIdentifier);
    if (scale == 1 || placed.toolkit != AtSpi::Toolkit::qt)
        return AtSpi::onDesktop(placed, *window, scale, {});
    const auto told = windowAsTold(*window, processIdentifier);
    if (!told.ok()) return told.error;
    return AtSpi::onDesktop(placed, *window, scale, told.value.rectangle.topLeft());
}

AXResult<AXValue> AtSpiAccessibility::copyParameterizedAttributeValue(const AXElementRef& element,
                                                                      AXAttribute attribute,
                                                                      const AXValue& parameter) {
    const AtSpiElement* target = own(element);
    const auto* range = std::get_if<TextRange>(&parameter);
    if (!target || !range) return AXError::illegalArgument;
    if (attribute != AXAttribute::boundsForRange || target->kind() != AtSpiElement::Kind::object) {
        return AXError::parameterizedAttributeUnsupported;
    }
    const auto window = frontWindow(target->process());
    const double scale = window ? pixelsPerPoint(*window, target->process()) : 1;
    const auto found = worker_->ask<PlacedRectangle>(
        [address = target->address(), asked = *range, scale](
            Room& room, Conversation& conversation) -> AXResult<PlacedRectangle> {
            const auto bounds = TextAccess(address, room.directory, conversation, scale).bounds(asked);
            if (!bounds.ok()) return bounds.error;
            return AtSpi::placed(bounds.value, address, room.directory, conversation);
        });
    return found.ok() ? asValue(onDesktop(found.value, target->process(), window))
                      : AXResult<AXValue>(found.error);
}

AXError AtSpiAccessibility::setAttributeValue(const AXElementRef& element, AXAttribute attribute,
                                              const AXValue& value) {
    const AtSpiElement* target = own(element);
    if (!target) return AXError::illegalArgument;
    if (target->kind() != AtSpiElement::Kind::object) return AXError::attributeUnsupported;
    const auto result =
        worker_->ask<bool>([=, address = target->address()](Room& room, Conversation& conversation) {
            TextAccess text(address, room.directory, conversation);
            const auto* words = std::get_if<QString>(&value);
            const auto* range = std::get_if<TextRange>(&value);
            const auto* flag = std::get_if<bool>(&value);
            AXError error = AXError::illegalArgument;
            switch (attribute) {
                case AXAttribute::value:
                    if (words) error = text.setValue(*words);
                    break;
                case AXAttribute::selectedText:
                    if (words) error = text.setSelectedText(*words);
                    break;
                case AXAttribute::selectedTextRange:
                    if (range) error = text.setSelectedRange(*range);
                    break;
                case AXAttribute::focused:
                    // The focus can be given, not taken away.
                    if (flag)
                        error = *flag ? takeFocus(address, conversation) : AXError::attributeUnsupported;
                    break;
                default:
                    error = AXError::attributeUnsupported;
            }
            return error == AXError::success ? AXResult<bool>(true) : AXResult<bool>(error);
        });
    return result.error;
}

AXResult<bool> AtSpiAccessibility::isAttributeSettable(const AXElementRef& element, AXAttribute attribute) {
    const AtSpiElement* target = own(element);
    if (!target) return AXError::illegalArgument;
    if (target->kind() != AtSpiElement::Kind::object) return false;
    const bool isText = attribute == AXAttribute::value || attribute == AXAttribute::selectedText;
    if (!isText && attribute != AXAttribute::selectedTextRange) return attribute == AXAttribute::focused;
    return worker_->ask<bool>(
        [=, address = target->address()](Room& room, Conversation& conversation) -> AXResult<bool> {
            const auto facts = AtSpi::factsOf(address, room.directory, conversation);
            if (!facts.ok()) return facts.error;
            return isText ? facts.value.canWriteText() : facts.value.canSetSelection();
        });
}

ElementState AtSpiAccessibility::inspect(const AXElementRef& element) {
    const AtSpiElement* target = own(element);
    if (!target || target->kind() != AtSpiElement::Kind::object) return {};
    const auto facts =
        worker_->ask<ElementFacts>([address = target->address()](Room& room, Conversation& conversation) {
            return AtSpi::factsOf(address, room.directory, conversation);
        });
    return facts.ok() ? stateOf(facts.value) : ElementState{};
}

ElementState AtSpiAccessibility::inspectFocused(qint32 processIdentifier) {
    const auto focused = focusedElement(processIdentifier);
    const auto* element = std::get_if<AXElementRef>(&focused.value);
    return focused.ok() && element ? inspect(*element) : ElementState{};
}

}  // namespace veltrin
