#pragma once

#include "ExpectedText.h"
#include "support/fake/FakeKeyCodes.h"
#include "support/fake/SimulatedVeltrin.h"

#include <QTemporaryDir>

#include <deque>
#include <list>
#include <random>
#include <set>

namespace veltrin {

/// A user who does anything at any time, on a desktop where anything may go wrong, with the whole program
/// running. Every step is drawn from the seed alone, so that a seed always tells the same story.
///
/// After each step it is checked that
/// - every field holds what its user made of it, and else nothing but results of the program, each at most
///   once, in a field it was meant for, in the manner that the settings ask for;
/// - a result is either in its field, or was handed over by a paste key, or was copied for the user;
/// - the tap is on exactly when the settings want it, with no suspension left, and no key is down;
/// - the choice waits exactly while its panel shows, and exactly then its keys are claimed, and taken;
/// - the program was never blocked for longer than a hung neighbour may cost.
/// Now and then everything comes to rest, and then no timer, request or panel is left and the pasteboard's
/// plain string is the user's again.
///
/// The losses that are accepted, and no others: a field read whole is overwritten with what came in
/// meanwhile; a caret whose field takes no selected text has its whole field replaced when the paste was
/// refused; two writes within the restore's delay may lose the user's string; content without a plain string
/// is not kept; keys that the application had yet to work off move the caret under a paste; a field that only
/// the clipboard can read stays wholly selected, so that the user's next key replaces it, and cannot
/// be told from the others of its window.
class RandomUse {
public:
    explicit RandomUse(quint64 seed);
    ~RandomUse();
    RandomUse(const RandomUse&) = delete;
    RandomUse& operator=(const RandomUse&) = delete;

    /// One step with its checks; false once something is wrong.
    bool step();
    /// Everything comes to rest; false once something is wrong.
    bool settle();

    /// What is wrong, with the latest steps; empty while nothing is.
    QString failure() const;
    /// A number that any difference in the story changes.
    quint64 digest() const { return digest_; }
    int written() const { return written_; }
    int copied() const { return copiedResults_; }
    int runs() const { return lastRun_; }

private:
    struct Field {
        FakeApplication* application;
        FakeWindow* window;
        FakeTextField* field;
        ExpectedText expected;
    };
    /// One prompt that came to the model, and the field it was read from.
    struct Attempt {
        QString prompt;
        const FakeTextField* field;
        TextRange readRange;
        bool byClipboard;
    };
    /// One prompt that is answered with a result.
    struct Run {
        ExpectedText::Result result;
        std::vector<const FakeTextField*> targets;
        double answeredAt;
        bool byClipboard = false;  ///< a field of it was read by select-all and copy
        bool arrived = false;
    };

    // The world.
    void build();
    void buildApplication(const QString& name, int kind);
    Field* fieldOf(const FakeTextField* field);
    Field* focused();
    bool isQuiet(const FakeApplication& application) const;
    /// A running application in front that has worked off its keys; none else.
    Field* quietFocused();

    // Steps, each with what it is called.
    using Step = QString (RandomUse::*)();
    struct Choice {
        int weight;
        Step step;
    };
    static const std::vector<Choice>& choices();
    QString typeCharacter();
    QString typeWhileBlocked();
    QString pressBackspace();
    QString pressArrow();
    QString selectAll();
    QString selectSome();
    QString placeCaret();
    QString copySelection();
    QString pasteSomething();
    bool pasteIsUnderWay() const;
    QString otherCopies();
    QString otherCopiesPicture();
    QString ownerFallsSilent();
    QString tapThreeTimes();
    QString pressShortcut();
    QString tapTwice();
    QString pressChoiceKey();
    QString clickRow();
    QString moveField();
    QString focusField();
    QString leaveEverything();
    QString retitleWindow();
    QString hangApplication();
    QString resumeApplications();
    QString quitApplication();
    QString changeReplaceMode();
    QString flipGestures();
    QString changeBlacklist();
    QString changeFaults();
    QString changeDesktop();
    QString tapIsSwitchedOff();
    QString holdModifier();
    QString wait();

    void keyPosted(const FakeKeyPoster::Record& record);
    bool isGivenBackByARead(const FakePasteboard::Offer& offer) const;
    bool isCopyOfTheProgram(const FakePasteboard::Offer& offer) const;
    void pressKey(qint64 keyCode, quint64 flags = 0);
    void typeText(const QString& text);
    bool isTaken(qint64 keyCode);
    void pressTyping(qint64 keyCode, const QString& text, double hold);
    void tapSpace(double hold);
    bool isChoiceWaiting();
    void edit(ExpectedText::Edit edit);
    TextRange randomRange(const QString& text);
    SimulatedModel::Reply answer(const QString& prompt);

    // Checks.
    void check();
    void checkFields();
    void checkField(Field& field);
    void checkPasteboardOffers();
    void checkRuns();
    bool wasWritten(const Run& run) const;
    bool wasPastedInHaste(const Run& run) const;
    /// The result that a posted paste hands over; empty when it is none.
    QString pastedBy(const FakeKeyPoster::Record& record) const;
    void checkProgram();
    void allowMannersOf(Run& run, const Field& field);
    void fail(const QString& what);
    void digest(const QString& text);

    int below(int limit) { return static_cast<int>(random_() % static_cast<quint64>(limit)); }
    bool oneIn(int chances) { return below(chances) == 0; }
    double seconds(double low, double high) {
        return low + (high - low) * static_cast<double>(below(1000)) / 1000;
    }

    const quint64 seed_;
    std::mt19937_64 random_;
    QTemporaryDir folder_;
    QString formerLog_;
    SimulatedVeltrin veltrin_;
    FakeDesktop& desktop_ = veltrin_.desktop;
    std::list<Field> fields_;
    std::list<Attempt> attempts_;  ///< since the last rest
    std::list<Run> runs_;          ///< since the last rest
    int lastRun_ = 0;
    int lastApplication_ = 0;

    std::optional<QString> users_;  ///< the plain string the user should find on the pasteboard
    bool clipboardMayBeLost_ = false;
    qint64 seenChanges_ = 0;
    double lastTemporaryOffer_ = -1000;
    QString lastTemporaryText_;
    double emptiedAt_ = -1000;  ///< when the program emptied the pasteboard for a copy
    bool isEmptied_ = false;    ///< and put nothing there since
    double copyPostedAt_ = -1000;
    qint32 copyPostedTo_ = 0;
    const FakeTextField* readByClipboard_ = nullptr;
    QStringList pasted_;  ///< results whose paste key was posted, until the next rest
    QStringList handed_;  ///< results that were copied for the user, until the next rest
    int seenPosts_ = 0;

    std::set<const FakeApplication*> hungLately_;  ///< since the last check
    double blockedBefore_ = 0;
    double checkedAt_ = 0;
    int written_ = 0;
    int copiedResults_ = 0;
    int steps_ = 0;
    quint64 digest_ = 1469598103934665603ULL;
    std::deque<QString> story_;
    QString failure_;
};

}  // namespace veltrin
