#pragma once

#include "Platform/Pasteboard.h"
#include "support/fake/FakeEventLog.h"
#include "support/fake/FakeRunLoop.h"

#include <QMap>
#include <QStringList>

#include <deque>
#include <functional>

namespace veltrin {

/// The pasteboard of the simulated desktop. Its owner is this program, some application, or nobody; an owner
/// that hangs, or that never answers, keeps a reader waiting for half a second and then gives nothing.
class FakePasteboard final : public Pasteboard {
public:
    FakePasteboard(FakeRunLoop& loop, FakeEventLog& log) : loop_(loop), log_(log) { history_.push_back({}); }

    enum class Owner { nobody, program, application };
    struct Offer {
        qint64 change = 1;  ///< the change count that it made
        double since = 0;   ///< when it was taken
        Owner owner = Owner::nobody;
        qint32 application = 0;       ///< process of the owning application
        std::optional<QString> text;  ///< none for an empty pasteboard, and for content without plain text
        QStringList otherTypes;
        QMap<QString, QByteArray> otherData;  ///< of other types; a type not named here has its own name
        QStringList silentTypes;              ///< offered, but no data ever comes
        PasteboardContent content = PasteboardContent::lasting;
        bool isSecret = false;  ///< marked by its owner
        bool answers = true;
    };

    qint64 changeCount() const override { return changeCount_; }
    qint64 changeCountAt(quint64 timestamp) const override;
    PasteboardString string() const override;
    void clearContents() override;
    bool setString(const QString& text, PasteboardContent content) override;
    QStringList types() const override;
    std::optional<PasteboardSnapshot> snapshot() const override;
    bool restore(const PasteboardSnapshot& snapshot) override;

    /// An application copies.
    void copyFrom(qint32 application, const QString& text);
    /// A password manager copies and marks it.
    void copySecretFrom(qint32 application, const QString& text);
    /// An application puts up content that has no plain text, such as a picture.
    void copyOtherFrom(qint32 application, const QStringList& types);
    /// Content of nobody the test cares about: what the user had copied before the story starts.
    void put(const QString& text) { copyFrom(0, text); }
    void putOther(const QStringList& types) { copyOtherFrom(0, types); }
    /// Content with text and more; see Offer.
    void copyRichFrom(qint32 application, const QString& text, const QMap<QString, QByteArray>& others,
                      const QStringList& silent = {});
    /// The application is gone, and with it what it offered.
    void ownerDied(qint32 application);
    /// The present owner stops answering, whatever its process does.
    void stopAnswering() { history_.back().answers = false; }

    /// What a paste gets whose key was pressed or posted when the change count was `changeAtKey`. A late
    /// request still gets what this program offered then, as long as nobody else has taken the pasteboard
    /// since.
    std::optional<QString> requestedBy(qint32 application, qint64 changeAtKey) const;

    /// What is on offer now.
    const Offer& current() const { return history_.back(); }
    /// The plain string on offer, without asking its owner.
    std::optional<QString> peek() const { return history_.back().text; }
    /// The latest offers, oldest first.
    const std::deque<Offer>& history() const { return history_; }

    bool refusesOwnership = false;  ///< `setString` cannot take the pasteboard
    bool refusesToBeCleared = false;
    double unansweredCost = 0.5;  ///< seconds that an owner which does not answer costs
    double unansweredSnapshotCost = 0.4;
    double silentTypeCost = 0.05;  ///< of one type for which no data comes
    /// Whether a process is there and answers; set by the desktop.
    std::function<bool(qint32)> answers;

private:
    void take(Offer offer, const char* what);
    bool ownerAnswers() const;

    FakeRunLoop& loop_;
    FakeEventLog& log_;
    qint64 changeCount_ = 1;
    std::deque<Offer> history_;
};

}  // namespace veltrin
