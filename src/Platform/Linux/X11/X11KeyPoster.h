#pragma once

#include "Platform/KeyPoster.h"
#include "Platform/Linux/X11/PostTargetInspector.h"
#include "Platform/Linux/X11/X11KeyboardHolder.h"
#include "Platform/Linux/X11/X11Keymap.h"
#include "Platform/Linux/X11/X11Windows.h"

#include <array>
#include <functional>
#include <memory>
#include <optional>

namespace veltrin {

/// Synthetic keys by XTEST. Nothing is posted unless the window that was meant is still in front and its
/// application is alive; see KeyPoster for the rest. Main thread; a post takes at most the 300 ms for the
/// user's modifiers or a menu, 250 ms for an application that does not answer, and what the inspector takes.
///
/// Under a keymap without Latin letters no application takes Ctrl and a letter for a copy or a paste. There
/// they are posted as Ctrl+Insert and Shift+Insert, and other letters are refused.
class X11KeyPoster final : public KeyPoster {
public:
    struct Parts {
        /// Frees the keyboard from a grab of ours (X11KeyEventTaps::letGo); may be empty.
        std::function<void()> letGoOfKeyboard = {};
        /// Looks at the target's element; may be null: then fields are not looked at.
        PostTargetInspector* inspector = nullptr;
        /// Told the window just before a paste goes out (X11Pasteboard::pastePosted); may be empty.
        std::function<void(quint64)> pastePosted = {};
    };
    X11KeyPoster(const X11Windows& windows, Parts parts);
    ~X11KeyPoster() override;

    PostResult post(const KeyPost& chord) override;

private:
    struct Chord {
        X11Keymap::Keycode key = 0;
        unsigned modifiers = 0;
    };
    QString refusalOfWindow(const PostTarget& target, xcb_window_t* window = nullptr) const;
    QString refusalOfApplication();
    QString refusalOfField(const KeyPost& chord) const;
    QString refusalOfTerminal(const KeyPost& chord, quint64& flags, bool& isTerminal) const;
    void refreshKeymap();
    struct Keyboard {
        bool isHeld = false;     ///< another client has it whole
        unsigned modifiers = 0;  ///< held down, locks not counted
        unsigned group = 0;
        std::array<std::uint8_t, 32> down{};

        bool isDown(X11Keymap::Keycode key) const { return (down[key / 8] & (1U << (key % 8))) != 0; }
    };
    Keyboard keyboard() const;
    Keyboard waitForQuietKeyboard(const KeyPost& post, quint64 flags) const;
    std::optional<Chord> chordFor(const KeyPost& post, quint64 flags, unsigned group) const;
    void send(const Chord& chord, const Keyboard& keyboard) const;
    void liftModifiers(unsigned modifiers, const Keyboard& keyboard) const;
    void fake(bool press, X11Keymap::Keycode key) const;

    const X11Windows& windows_;
    Parts parts_;
    X11WindowPing ping_;
    std::unique_ptr<X11Connection> connection_;
    std::unique_ptr<X11KeyboardHolder> holder_;
    std::shared_ptr<const X11Keymap> keymap_;
};

}  // namespace veltrin
