#pragma once

#include "Platform/Accessibility.h"
#include "Platform/Screens.h"
#include "Platform/Workspace.h"

#include <map>
#include <utility>

namespace veltrin::test {

/// An element whose every answer is written down by the test; what is not written down is not supported.
class ScriptedElement final : public AXElement {
public:
    explicit ScriptedElement(qint32 pid) : pid_(pid) {}
    std::optional<qint32> processIdentifier() const override { return pid_; }
    bool isEqual(const AXElement& other) const override { return this == &other; }

    void answer(AXAttribute attribute, AXValue value) const {
        attributes.insert_or_assign(attribute, AXResult<AXValue>(std::move(value)));
    }
    void fail(AXAttribute attribute, AXError error) const {
        attributes.insert_or_assign(attribute, AXResult<AXValue>(error));
    }

    mutable std::map<AXAttribute, AXResult<AXValue>> attributes;
    mutable std::map<AXAttribute, AXResult<bool>> settable;

private:
    qint32 pid_;
};

/// Accessibility of applications that answer word for word as told: also what no real one should.
class ScriptedAccessibility final : public Accessibility {
public:
    bool isProcessTrusted() const override { return trusted; }
    bool promptForTrust() override {
        ++prompts;
        return trusted;
    }
    AXElementRef applicationElement(qint32) override { return application; }
    AXResult<AXValue> copyAttributeValue(const AXElementRef& element, AXAttribute attribute) override {
        return find(scripted(element).attributes, attribute);
    }
    AXResult<AXValue> copyParameterizedAttributeValue(const AXElementRef& element, AXAttribute attribute,
                                                      const AXValue& parameter) override {
        parameters.push_back(parameter);
        return find(scripted(element).attributes, attribute);
    }
    AXError setAttributeValue(const AXElementRef&, AXAttribute, const AXValue&) override {
        return AXError::attributeUnsupported;
    }
    AXResult<bool> isAttributeSettable(const AXElementRef& element, AXAttribute attribute) override {
        return find(scripted(element).settable, attribute);
    }

    bool trusted = true;
    int prompts = 0;
    std::shared_ptr<const ScriptedElement> application = std::make_shared<ScriptedElement>(42);
    std::vector<AXValue> parameters;

private:
    static const ScriptedElement& scripted(const AXElementRef& element) {
        return dynamic_cast<const ScriptedElement&>(*element);
    }
    template <typename Answers>
    static typename Answers::mapped_type find(const Answers& answers, AXAttribute attribute) {
        const auto found = answers.find(attribute);
        if (found == answers.end()) return AXError::attributeUnsupported;
        return found->second;
    }
};

class ScriptedWorkspace final : public Workspace {
public:
    std::optional<RunningApplication> frontmostApplication() const override { return frontmost; }
    std::optional<RunningApplication> runningApplication(qint32) const override { return frontmost; }
    bool activate(qint32, ActivateOptions) override { return false; }
    QString mainBundleIdentifier() const override { return QStringLiteral("com.veltrin.app"); }
    std::optional<QString> executablePath() const override { return path; }

    std::optional<RunningApplication> frontmost =
        RunningApplication{42, QStringLiteral("Editor"), QStringLiteral("org.editor"), 7};
    std::optional<QString> path = QStringLiteral("/usr/bin/veltrin");
};

class ScriptedScreens final : public Screens {
public:
    std::vector<Screen> screens() const override { return all; }
    std::optional<Screen> mainScreen() const override {
        return all.empty() ? std::nullopt : std::optional<Screen>(all.front());
    }
    QPointF mouseLocation() const override { return {}; }

    std::vector<Screen> all{{QRectF(0, 0, 1920, 1080), QRectF(0, 0, 1920, 1050)}};
};

}  // namespace veltrin::test
