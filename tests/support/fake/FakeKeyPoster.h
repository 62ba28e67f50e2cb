#pragma once

#include "Platform/KeyPoster.h"
#include "support/fake/FakeAccessibility.h"
#include "support/fake/FakeKeyboard.h"

#include <deque>
#include <functional>

namespace veltrin {

/// Posts chords into the application in front, or refuses them as the port says. A posted chord goes past the
/// taps, which never report the program's own keys.
class FakeKeyPoster final : public KeyPoster {
public:
    FakeKeyPoster(FakeRunLoop& loop, FakeWorkspace& workspace, FakeKeyboard& keyboard,
                  const FakeAccessibility& accessibility, FakeEventLog& log)
        : loop_(loop), workspace_(workspace), keyboard_(keyboard), accessibility_(accessibility), log_(log) {}

    PostResult post(const KeyPost& chord) override;

    struct Record {
        double time = 0;
        KeyPost chord;
        PostResult result;
        qint32 receiver = 0;          ///< the process that got it; 0 when refused
        qint64 pasteboardChange = 0;  ///< the pasteboard's change count when it got it
        bool inHaste = false;         ///< keys were still to be worked off when it was asked for or sent
    };
    /// The latest chords asked for, refused ones included, oldest first.
    std::deque<Record> records;
    std::size_t capacity = 500;
    int postedCount = 0;
    int refusedCount = 0;

    /// Told of every chord that goes out, just before the application gets it; may be empty.
    std::function<void(const Record&)> onPosted;

    /// When set, every chord is refused with these words.
    std::optional<QString> refusal;
    double modifierWait = 0.3;  ///< seconds for which held modifiers are waited for
    double pingWait = 0.25;     ///< seconds that a hung target costs

private:
    /// The words of the refusal; empty when the chord may go out.
    QString refusalOf(const KeyPost& chord) const;
    void waitForModifiers(quint64 ownFlags);

    FakeRunLoop& loop_;
    FakeWorkspace& workspace_;
    FakeKeyboard& keyboard_;
    const FakeAccessibility& accessibility_;
    FakeEventLog& log_;
};

}  // namespace veltrin
