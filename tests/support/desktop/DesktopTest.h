#pragma once

#include "support/desktop/AtSpiProbe.h"
#include "support/desktop/ClipboardProbe.h"
#include "support/desktop/Program.h"
#include "support/desktop/RealDesktop.h"
#include "support/desktop/Typist.h"
#include "support/desktop/Waiting.h"

#include <gtest/gtest.h>

#include <memory>

namespace veltrin {

/// A test on the shared desktop. Before each test the desktop is as new: no programs, no clipboard owner left
/// by one, the pointer in a far corner. After each test no key, button or modifier may be down, whoever
/// pressed it.
///
/// A test that needs a desktop of another kind, or that spoils one, makes a RealDesktop of its own instead.
class DesktopTest : public testing::Test {
protected:
    RealDesktop& desktop() { return RealDesktop::shared(); }
    XDesktop& x() { return desktop().x(); }
    Typist& typist() { return made(typist_); }
    AtSpiProbe& atspi() { return made(atspi_); }
    ClipboardProbe& clipboard() { return made(clipboard_); }

    void SetUp() override;
    void TearDown() override;

private:
    std::unique_ptr<Typist> typist_;
    std::unique_ptr<AtSpiProbe> atspi_;
    std::unique_ptr<ClipboardProbe> clipboard_;

    /// Made at its first use: not every test needs everything.
    template <typename T>
    T& made(std::unique_ptr<T>& tool) {
        if (!tool) tool = std::make_unique<T>(desktop());
        return *tool;
    }
};

/// Fails the running test unless all keys, buttons and modifiers are up, within a moment for releases under
/// way.
void expectNothingHeld(RealDesktop& desktop);

}  // namespace veltrin
