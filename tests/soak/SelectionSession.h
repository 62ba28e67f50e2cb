#pragma once

#include "soak/Chance.h"
#include "support/desktop/ReceivedKeys.h"
#include "support/fake/LogCapture.h"
#include "support/fields/SelectionDesktop.h"

namespace veltrin {

struct SelectionWorld {
    SelectionWorld();
    RealDesktop desktop;
    SelectionDesktop selection{desktop};
    ExternalTextDesktop& text = selection.text;
    AtSpiProbe probe{desktop};
    Typist typist{desktop};
    ClipboardProbe clipboard{desktop};
    ClipboardProbe primary{desktop, "PRIMARY"};
    ReceivedKeys keys{desktop};
};

/// How often what came of a selection.
struct SelectionTally {
    int rounds = 0;
    int looks = 0;      ///< gestures that were taken for a selection
    int shown = 0;      ///< with what the application says is selected
    int nothing = 0;    ///< and nothing was selected, or nothing may be known of it
    int clicks = 0;     ///< gestures that were not taken for one
    int copies = 0;     ///< copy keys, each of which the application received
    int late = 0;       ///< right at the second look only, for an application that was behind
    int refused = 0;    ///< copies that were not tried, for a clipboard or an application that did not answer
    int untold = 0;     ///< copies of a selection that accessibility did not tell of, where it mostly does
    int unknowing = 0;  ///< in a browser's password field, which nobody could know for one: meant so
    int missed = 0;     ///< very quick drags that a busy machine did not see
    void add(const SelectionTally& other);
    QString told() const;
    /// A program that looks at nothing would break nothing.
    bool isEnough() const {
        return shown > 0 && late + refused <= 1 + looks / 5 && missed + unknowing <= 1 + looks / 50;
    }
};

/// One application, and rounds in it: one of its fields is given a random text, the clipboard a random
/// content, and the mouse selects something. Then everything is looked at by the tests' own means: the text,
/// the clipboard, what was shown, and which keys the application was given.
class SelectionSession {
public:
    using World = SelectionWorld;
    using Tally = SelectionTally;
    static QStringList applications();
    static constexpr int warmUpSessions = 5;  ///< in which a clipboard was borrowed

    SelectionSession(SelectionWorld& world, const QString& application, quint64 seed);

    /// Throws Broken, or std::runtime_error for a desktop that does not work.
    void round();
    const SelectionTally& tally() const { return tally_; }

private:
    /// What may be done to know a selection.
    enum class Rule {
        told,    ///< accessibility knows it; a copy key may be pressed where it knows of none
        copied,  ///< only a copy key tells, and it is the terminals' own
        never,   ///< no key, and nothing is shown
    };
    struct Place {
        const char* application;
        const char* field;  ///< empty for a window without one
        Rule rule;
        bool hasLines;
    };
    static const std::vector<Place>& allPlaces();

    enum class Gesture {
        forwards,
        backwards,
        overLines,
        returning,
        nudge,
        doubleClick,
        tripleClick,
        plainClick,
        shiftClick,
        shiftDrag,
        clickAndDrag,
        number
    };
    /// What came of one gesture.
    struct Look {
        QStringList lines;  ///< of the log
        QList<ReceivedKeys::Press> presses;
        std::optional<QStringList> keysOfPage;  ///< that a browser gave its page
        QString selected;                       ///< by the application's own word
        QString shown;
        int icons = 0;
        int copies = 0;
        bool has(const char* start) const;
        bool isTrigger() const { return has("SmartSelect trigger:"); }
    };

    void prepare();
    QRect textPlace();
    QPoint anywhere();
    QPoint onLine(int line, int x);

    void gesture(Gesture gesture);
    void play(Gesture gesture);
    Look look(const std::function<void()>& doing, bool isByShortcut = false);
    Look lookAgain();

    void expectRightReason(Gesture gesture, const Look& look);
    void expectText();
    void expectKeys(const Look& look, bool withShift);
    void expectShown(const Look& look);
    void expectRightAtLast(const Look& look);
    void expectClipboard();
    void expectNothingDown();
    bool isRight(const Look& look) const;
    [[noreturn]] void fail(const QString& what) const;

    FieldDriver& field() { return application_.field(QString::fromLatin1(place_->field)); }
    bool hasField() const { return *place_->field != '\0'; }
    bool is(const char* application) const { return application_.name() == QLatin1String(application); }
    bool isTerminal() const { return application_.name().contains(QLatin1String("term")); }
    QString selected();

    SelectionWorld& world_;
    Chance chance_;
    FieldApplication application_;
    std::vector<const Place*> places_;
    const Place* place_ = nullptr;
    FieldDriver* lastField_ = nullptr;
    QPoint pageAt_;  ///< where the corner of a browser's page is
    int number_ = 0;
    QString text_;
    QRect area_;  ///< of the text on the screen
    int lineHeight_ = 20;
    int lines_ = 1;
    UsersContent content_;
    QString begin_;
    QString story_;
    double gestureTook_ = 0;  ///< seconds
    bool isOnIcon_ = false;   ///< the gesture's first press
    QString shownBefore_;
    SelectionTally tally_;
};

}  // namespace veltrin
