#pragma once

#include "desktop/matrix/MatrixTable.h"
#include "soak/Chance.h"
#include "support/fields/FieldApplications.h"

namespace veltrin {

struct SoakWorld {
    SoakWorld();
    RealDesktop desktop;
    ExternalTextDesktop text{desktop};
    AtSpiProbe probe{desktop};
    ClipboardProbe clipboard{desktop};
};

/// How often what was done.
struct SoakTally {
    int rounds = 0;
    int readRight = 0;
    int readNothing = 0;  ///< honest: no text where accessibility gives none
    int written = 0;
    int refused = 0;     ///< the text stayed as it was, and the caller knows
    int unexpected = 0;  ///< of these, in fields that can be written so
    int givenUp = 0;     ///< pastes that the application made nothing of, the text as it was
    int hung = 0;
    int snapshots = 0;
    void add(const SoakTally& other);
    QString told() const;
    /// A program that refuses everything would break nothing.
    bool isEnough() const { return written > 0 && (unexpected + givenUp) * 20 <= written; }
};

/// One application, and rounds in it: a field is given a random text and selection, the clipboard a random
/// content; something is read or written; then everything is looked at by the tests' own means.
class SoakSession {
public:
    using World = SoakWorld;
    using Tally = SoakTally;
    static QStringList applications();
    static constexpr int warmUpSessions = 2;  ///< everything has been used once by then
    SoakSession(SoakWorld& world, const QString& application, quint64 seed);

    /// Throws Broken, or std::runtime_error for a desktop that does not work.
    void round();
    const SoakTally& tally() const { return tally_; }
    /// What the latest round was, for whoever looks into a failure.
    QString story() const { return story_; }

private:
    enum class Place { selection, caret, all };

    QString words(int count);
    FieldState state(Place place);

    void prepare(Place place);
    void settle();
    void readOnly();
    void write(bool directly, Place place);
    void byClipboard(Place place);
    void whileHung(Place place);
    void snapshotAndBack();

    void note(bool success, bool directly, Place place);
    QString expectedAfter(const QString& replacement, Place place) const;
    void expectText(const QString& text, const char* when);
    void expectClipboardUntouched(const char* when);
    void expectStringBack(const std::optional<QString>& orElse, const char* when);
    void giveBack();
    void finish(bool success, bool isDirect, const QString& expected, const QString& replacement,
                const char* when);
    void expectNoKeyDown();
    [[noreturn]] void fail(const QString& what) const;

    FieldDriver& field() { return application_.field(row_->field); }
    bool isTerminal() const { return row_->application.contains(QLatin1String("term")); }
    bool isOneLine() const;

    SoakWorld& world_;
    Chance chance_;
    FieldApplication application_;
    std::vector<const MatrixRow*> rows_;
    const MatrixRow* row_ = nullptr;
    FieldState state_;
    UsersContent content_;
    ExternalTextReadResult read_;
    std::optional<QString> left_;  ///< what the field held at the end of the round before
    QString story_;
    SoakTally tally_;
};

}  // namespace veltrin
