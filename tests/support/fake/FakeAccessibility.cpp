#include "support/fake/FakeAccessibility.h"

#include <algorithm>

namespace veltrin {
namespace {

/// Names what it stands for by number, never by pointer: what it names may be gone.
class FakeElement final : public AXElement {
public:
    FakeElement(qint32 process, quint64 windowId, quint64 fieldId)
        : pid(process), window(windowId), field(fieldId) {}

    std::optional<qint32> processIdentifier() const override { return pid; }
    bool isEqual(const AXElement& other) const override {
        const auto* element = dynamic_cast<const FakeElement*>(&other);
        return element && element->pid == pid && element->window == window && element->field == field;
    }

    const qint32 pid;
    const quint64 window;  ///< 0 for an application
    const quint64 field;   ///< 0 for a window
};

AXResult<AXValue> text(const QString& value) {
    return AXValue(value);
}

}  // namespace

struct FakeAccessibility::Target {
    FakeApplication* application = nullptr;
    FakeWindow* window = nullptr;
    FakeTextField* field = nullptr;
};

bool FakeAccessibility::promptForTrust() {
    ++prompts;
    trusted = trusted || trustedOnPrompt;
    return trusted;
}

AXElementRef FakeAccessibility::applicationElement(qint32 processIdentifier) {
    return std::make_shared<FakeElement>(processIdentifier, 0, 0);
}

AXElementRef FakeAccessibility::elementOf(const FakeTextField& field) const {
    for (const auto& application : workspace_.applications) {
        if (const FakeWindow* window = application->windowOf(field))
            return std::make_shared<FakeElement>(application->pid, window->id, field.id);
    }
    return nullptr;
}

AXElementRef FakeAccessibility::elementOf(const FakeApplication& application,
                                          const FakeWindow& window) const {
    return std::make_shared<FakeElement>(application.pid, window.id, 0);
}

AXError FakeAccessibility::reach(const AXElementRef& element, Target& target) {
    ++questions;
    if (!trusted) return AXError::apiDisabled;
    const auto* fake = dynamic_cast<const FakeElement*>(element.get());
    if (!fake) return AXError::illegalArgument;
    if (callCost > 0) loop_.sleepFor(callCost);
    target.application = workspace_.application(fake->pid);
    if (!target.application || !target.application->isRunning()) return AXError::invalidUIElement;
    if (target.application->state() == FakeApplication::State::hung) {
        if (knownHung_ != fake->pid) loop_.sleepFor(hungCallCost);
        // It may have come back while it was waited for; the answer is lost all the same.
        knownHung_ = target.application->state() == FakeApplication::State::hung ? fake->pid : 0;
        return AXError::cannotComplete;
    }
    if (knownHung_ == fake->pid) knownHung_ = 0;
    if (!target.application->accessible) return target.application->accessibilityError;
    if (fake->window == 0) return AXError::success;
    const auto& windows = target.application->windows;
    const auto window = std::find_if(windows.begin(), windows.end(),
                                     [&](const auto& candidate) { return candidate->id == fake->window; });
    if (window == windows.end() || !(*window)->open) return AXError::invalidUIElement;
    target.window = window->get();
    if (fake->field == 0) return AXError::success;
    target.field = target.window->field(fake->field);
    return target.field && target.field->exists ? AXError::success : AXError::invalidUIElement;
}

std::optional<FakeAXFault> FakeAccessibility::takeFault(FakeAXFaults& faults, AXAttribute attribute) {
    const auto found = faults.find(attribute);
    if (found == faults.end() || found->second.times == 0) return std::nullopt;
    if (found->second.times > 0) --found->second.times;
    const FakeAXFault fault = found->second;
    if (fault.cost > 0) loop_.sleepFor(fault.cost);
    return fault;
}

AXResult<AXValue> FakeAccessibility::copyAttributeValue(const AXElementRef& element, AXAttribute attribute) {
    Target target;
    if (const AXError error = reach(element, target); error != AXError::success) return error;
    if (!target.window) {
        const auto fault = takeFault(target.application->readFaults, attribute);
        if (fault && fault->error != AXError::success) return fault->error;
        return readApplication(*target.application, attribute);
    }
    if (!target.field) return readWindow(*target.application, *target.window, attribute);
    const auto fault = takeFault(target.field->readFaults, attribute);
    if (fault && fault->error != AXError::success) return fault->error;
    return readField(*target.application, *target.field, attribute);
}

AXResult<AXValue> FakeAccessibility::readApplication(const FakeApplication& application,
                                                     AXAttribute attribute) const {
    switch (attribute) {
        case AXAttribute::focusedUIElement:
            if (const FakeTextField* field = application.focusedField())
                return AXValue(AXElementRef(
                    std::make_shared<FakeElement>(application.pid, application.activeWindow->id, field->id)));
            return AXError::noValue;
        case AXAttribute::focusedWindow:
            if (application.activeWindow) return AXValue(elementOf(application, *application.activeWindow));
            return AXError::noValue;
        case AXAttribute::windows: {
            std::vector<AXElementRef> windows;
            for (const auto& window : application.windows) {
                if (window->open) windows.push_back(elementOf(application, *window));
            }
            return AXValue(std::move(windows));
        }
        case AXAttribute::role:
            return text(QStringLiteral("AXApplication"));
        case AXAttribute::title:
            return text(application.name.value_or(QString()));
        default:
            return AXError::attributeUnsupported;
    }
}

AXResult<AXValue> FakeAccessibility::readWindow(const FakeApplication& application, const FakeWindow& window,
                                                AXAttribute attribute) const {
    switch (attribute) {
        case AXAttribute::role:
            return text(QStringLiteral("AXWindow"));
        case AXAttribute::title:
            return text(window.title);
        case AXAttribute::position:
            return AXValue(window.frame.topLeft());
        case AXAttribute::size:
            return AXValue(window.frame.size());
        case AXAttribute::focused:
            return AXValue(application.activeWindow == &window);
        case AXAttribute::children: {
            std::vector<AXElementRef> fields;
            for (const auto& field : window.fields) {
                if (field->exists) fields.push_back(elementOf(*field));
            }
            return AXValue(std::move(fields));
        }
        default:
            return AXError::attributeUnsupported;
    }
}

AXResult<AXValue> FakeAccessibility::readField(const FakeApplication& application, const FakeTextField& field,
                                               AXAttribute attribute) const {
    const auto known = [](const QString& value) -> AXResult<AXValue> {
        if (value.isEmpty()) return AXError::noValue;
        return AXValue(value);
    };
    switch (attribute) {
        case AXAttribute::role:
            return text(field.role);
        case AXAttribute::subrole:
            return known(field.subrole);
        case AXAttribute::title:
            return known(field.title);
        case AXAttribute::description:
            return known(field.description);
        case AXAttribute::position:
            return AXValue(field.frame.topLeft());
        case AXAttribute::size:
            return AXValue(field.frame.size());
        case AXAttribute::focused:
            return AXValue(application.focusedField() == &field);
        default:
            break;
    }
    if (field.password) return AXError::noValue;
    switch (attribute) {
        case AXAttribute::value:
            return text(field.value);
        case AXAttribute::selectedText:
            return text(field.selectedText());
        case AXAttribute::selectedTextRange:
            return AXValue(field.selection);
        default:
            return AXError::attributeUnsupported;
    }
}

AXResult<AXValue> FakeAccessibility::copyParameterizedAttributeValue(const AXElementRef& element,
                                                                     AXAttribute attribute,
                                                                     const AXValue& parameter) {
    Target target;
    if (const AXError error = reach(element, target); error != AXError::success) return error;
    if (!target.field || target.field->password || attribute != AXAttribute::boundsForRange)
        return AXError::parameterizedAttributeUnsupported;
    const auto fault = takeFault(target.field->readFaults, attribute);
    if (fault && fault->error != AXError::success) return fault->error;
    const auto* range = std::get_if<TextRange>(&parameter);
    if (!range || range->location < 0 || range->length < 0) return AXError::illegalArgument;
    return AXValue(target.field->boundsOf(*range));
}

bool FakeAccessibility::isSettable(const FakeTextField& field, AXAttribute attribute) const {
    switch (attribute) {
        case AXAttribute::focused:
            return true;
        case AXAttribute::value:
            return !field.password && field.editable && field.valueSettable;
        case AXAttribute::selectedText:
            return !field.password && field.editable && field.selectedTextSettable;
        case AXAttribute::selectedTextRange:
            return !field.password && field.selectedTextRangeSettable;
        default:
            return false;
    }
}

AXResult<bool> FakeAccessibility::isAttributeSettable(const AXElementRef& element, AXAttribute attribute) {
    Target target;
    if (const AXError error = reach(element, target); error != AXError::success) return error;
    if (!target.field) return false;
    const auto fault = takeFault(target.field->settableFaults, attribute);
    if (fault && fault->error != AXError::success) return fault->error;
    return isSettable(*target.field, attribute);
}

AXError FakeAccessibility::setAttributeValue(const AXElementRef& element, AXAttribute attribute,
                                             const AXValue& value) {
    Target target;
    if (const AXError error = reach(element, target); error != AXError::success) return error;
    if (!target.field) return AXError::attributeUnsupported;
    FakeTextField& field = *target.field;
    if (const auto fault = takeFault(field.writeFaults, attribute)) {
        if (fault->effect == FakeAXFault::Effect::performed) {
            const AXError done = write(field, attribute, value);
            return fault->error == AXError::success ? done : fault->error;
        }
        if (fault->effect == FakeAXFault::Effect::late) {
            loop_.inWorld(fault->lateness, [this, element, attribute, value] {
                const auto* fake = dynamic_cast<const FakeElement*>(element.get());
                FakeApplication* application = workspace_.application(fake->pid);
                if (!application || !application->isRunning()) return;
                for (const auto& window : application->windows) {
                    if (FakeTextField* late = window->field(fake->field); late && late->exists)
                        write(*late, attribute, value);
                }
            });
        }
        return fault->error;
    }
    return write(field, attribute, value);
}

AXError FakeAccessibility::write(FakeTextField& field, AXAttribute attribute, const AXValue& value) {
    if (!isSettable(field, attribute)) return AXError::attributeUnsupported;
    if (attribute == AXAttribute::focused) {
        const auto* wanted = std::get_if<bool>(&value);
        if (!wanted) return AXError::illegalArgument;
        for (const auto& application : workspace_.applications) {
            FakeWindow* window = application->windowOf(field);
            if (window && *wanted) window->focusedField = &field;
        }
        return AXError::success;
    }
    if (attribute == AXAttribute::selectedTextRange) {
        const auto* range = std::get_if<TextRange>(&value);
        if (!range || range->location < 0 || range->length < 0 || range->location > field.value.size() ||
            range->length > field.value.size() - range->location)
            return AXError::illegalArgument;
        field.selection = *range;
        return AXError::success;
    }
    const auto* replacement = std::get_if<QString>(&value);
    if (!replacement) return AXError::illegalArgument;
    log_.add(loop_.now(), "written by accessibility", *replacement);
    if (attribute == AXAttribute::value) {
        field.replaceByAccessibility(*replacement, {replacement->size(), 0});
        return AXError::success;
    }
    QString replaced = field.value;
    replaced.replace(field.selection.location, field.selection.length, *replacement);
    field.replaceByAccessibility(std::move(replaced), {field.selection.location + replacement->size(), 0});
    return AXError::success;
}

}  // namespace veltrin
