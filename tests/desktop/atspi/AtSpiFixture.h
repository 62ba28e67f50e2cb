#pragma once

#include "Platform/Linux/AtSpi/AtSpiAccessibility.h"
#include "Platform/Linux/X11TopLevelWindows.h"
#include "support/desktop/Program.h"
#include "support/desktop/RealDesktop.h"
#include "support/desktop/Typist.h"
#include "support/desktop/Waiting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace veltrin {

/// Accessibility of real applications on the shared test desktop.
class AtSpiTest : public testing::Test {
protected:
    AtSpiTest() { RealDesktop::shared().applyToThisProcess(); }
    ~AtSpiTest() override { RealDesktop::shared().endPrograms(); }

    static RealDesktop& desktop() { return RealDesktop::shared(); }
    AtSpiAccessibility& accessibility() {
        if (!accessibility_) {
            windows_ = std::make_unique<X11TopLevelWindows>(desktop().display().toLatin1());
            accessibility_ = std::make_unique<AtSpiAccessibility>(windows_.get());
            EXPECT_TRUE(accessibility_->isProcessTrusted());
        }
        return *accessibility_;
    }

    AXResult<AXValue> read(const AXElementRef& element, AXAttribute attribute) {
        return accessibility().copyAttributeValue(element, attribute);
    }
    /// The attribute, which must be there.
    template <typename T>
    T get(const AXElementRef& element, AXAttribute attribute) {
        const auto result = read(element, attribute);
        EXPECT_EQ(result.error, AXError::success) << "attribute " << static_cast<int>(attribute);
        const T* value = std::get_if<T>(&result.value);
        EXPECT_TRUE(value || !result.ok())
            << "attribute " << static_cast<int>(attribute) << " of another type";
        return value ? *value : T{};
    }
    QString value(const AXElementRef& element) { return get<QString>(element, AXAttribute::value); }
    QString selectedText(const AXElementRef& element) {
        return get<QString>(element, AXAttribute::selectedText);
    }
    TextRange selectedRange(const AXElementRef& element) {
        return get<TextRange>(element, AXAttribute::selectedTextRange);
    }
    AXError set(const AXElementRef& element, AXAttribute attribute, const AXValue& to) {
        return accessibility().setAttributeValue(element, attribute, to);
    }
    AXError select(const AXElementRef& element, qint64 location, qint64 length) {
        return set(element, AXAttribute::selectedTextRange, TextRange{location, length});
    }

    AXElementRef focused(const Program& program) {
        const auto application = accessibility().applicationElement(program.pid());
        const auto result = read(application, AXAttribute::focusedUIElement);
        const auto* element = std::get_if<AXElementRef>(&result.value);
        return result.ok() && element ? *element : nullptr;
    }
    /// Makes the application active, as often as a window that opens late takes that away, and waits until it
    /// has a focused element. Never null unless the test has failed.
    AXElementRef waitForFocus(const Program& program) {
        AXElementRef element;
        EXPECT_TRUE(waitUntil(10, [&] {
            XDesktop& x = desktop().x();
            if (x.activeWindow() != program.window()) x.activate(program.window(), 1);
            return (element = focused(program)) != nullptr;
        })) << "no focused element";
        return element;
    }

    std::unique_ptr<X11TopLevelWindows> windows_;
    std::unique_ptr<AtSpiAccessibility> accessibility_;
};

/// Milliseconds that `work` takes.
template <typename Work>
double milliseconds(Work work) {
    const double begin = monotonicSeconds();
    work();
    return (monotonicSeconds() - begin) * 1000;
}

/// What `work` takes, over many times: as a rule, and when nothing else wants the machine.
struct Taken {
    double median = 0;
    double undisturbed = 0;
};

template <typename Work>
Taken timed(int times, Work work) {
    std::vector<double> taken;
    for (int i = 0; i < times; ++i)
        taken.push_back(milliseconds(work));
    std::sort(taken.begin(), taken.end());
    return {taken[taken.size() / 2], taken[taken.size() / 10]};
}

}  // namespace veltrin
