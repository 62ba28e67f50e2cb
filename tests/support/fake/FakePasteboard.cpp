#include "support/fake/FakePasteboard.h"

#include <algorithm>
#include <utility>

namespace veltrin {
namespace {
constexpr std::size_t historyLimit = 200;
/// Keys are stamped to the nanosecond: one made right after a change may bear a hair less.
constexpr double keyTimeStep = 1e-9;
const QString textType = QStringLiteral("UTF8_STRING");
const QString secretType = QStringLiteral("x-kde-passwordManagerHint");
}  // namespace

void FakePasteboard::take(Offer offer, const char* what) {
    offer.since = loop_.now();
    offer.change = ++changeCount_;
    log_.add(loop_.now(), what, offer.text.value_or(offer.otherTypes.join(u' ')));
    history_.push_back(std::move(offer));
    if (history_.size() > historyLimit) history_.pop_front();
}

qint64 FakePasteboard::changeCountAt(quint64 timestamp) const {
    const double keyTime = static_cast<double>(timestamp) * 1e-9 - keyTimeStep;
    qint64 count = changeCount_;
    for (auto past = history_.rbegin(); past != history_.rend() && past->since >= keyTime; ++past)
        --count;
    return count;
}

bool FakePasteboard::ownerAnswers() const {
    const Offer& offer = history_.back();
    if (offer.owner != Owner::application) return true;
    return offer.answers && (offer.application == 0 || !answers || answers(offer.application));
}

PasteboardString FakePasteboard::string() const {
    if (!ownerAnswers()) {
        loop_.sleepFor(unansweredCost);
        return {PasteboardString::Status::unanswered, {}};
    }
    const auto& text = history_.back().text;
    if (!text) return {PasteboardString::Status::none, {}};
    return {PasteboardString::Status::value, *text, history_.back().isSecret};
}

void FakePasteboard::clearContents() {
    if (refusesToBeCleared) return;
    Offer offer;
    offer.owner = Owner::program;
    take(std::move(offer), "pasteboard cleared");
}

bool FakePasteboard::setString(const QString& text, PasteboardContent content) {
    if (refusesOwnership) {
        log_.add(loop_.now(), "pasteboard refused");
        return false;
    }
    Offer offer;
    offer.owner = Owner::program;
    offer.text = text;
    offer.content = content;
    offer.isSecret = content != PasteboardContent::lasting;
    take(std::move(offer),
         content == PasteboardContent::temporary ? "pasteboard set temporarily" : "pasteboard set");
    return true;
}

QStringList FakePasteboard::types() const {
    const Offer& offer = history_.back();
    if (!ownerAnswers()) {
        loop_.sleepFor(unansweredCost);
        return {};
    }
    QStringList types;
    if (offer.text) types << textType;
    if (offer.isSecret) types << secretType;
    return types + offer.otherTypes + offer.silentTypes;
}

std::optional<PasteboardSnapshot> FakePasteboard::snapshot() const {
    if (!ownerAnswers()) {
        loop_.sleepFor(unansweredSnapshotCost);
        return std::nullopt;
    }
    const Offer& offer = history_.back();
    PasteboardItem item;
    if (offer.text) item.data.push_back({textType, offer.text->toUtf8(), {}});
    if (offer.isSecret) item.data.push_back({secretType, "secret", {}});
    for (const QString& type : offer.otherTypes)
        item.data.push_back({type, offer.otherData.value(type, type.toUtf8()), {}});
    loop_.sleepFor(silentTypeCost * static_cast<double>(offer.silentTypes.size()));
    const bool isEmpty = item.data.empty() && offer.silentTypes.isEmpty();
    return isEmpty ? PasteboardSnapshot() : PasteboardSnapshot{{std::move(item)}};
}

bool FakePasteboard::restore(const PasteboardSnapshot& snapshot) {
    if (refusesOwnership) {
        log_.add(loop_.now(), "pasteboard refused");
        return false;
    }
    Offer offer;
    offer.owner = Owner::program;
    for (const PasteboardItem& item : snapshot.items) {
        for (const PasteboardData& data : item.data) {
            if (data.type == textType) {
                offer.text = QString::fromUtf8(data.bytes);
            } else if (data.type == secretType) {
                offer.isSecret = true;
                offer.content = PasteboardContent::secret;
            } else {
                offer.otherTypes << data.type;
                offer.otherData.insert(data.type, data.bytes);
            }
        }
    }
    take(std::move(offer), "pasteboard restored");
    return true;
}

void FakePasteboard::copyRichFrom(qint32 application, const QString& text,
                                  const QMap<QString, QByteArray>& others, const QStringList& silent) {
    Offer offer;
    offer.owner = Owner::application;
    offer.application = application;
    offer.text = text;
    offer.otherTypes = others.keys();
    offer.otherData = others;
    offer.silentTypes = silent;
    take(std::move(offer), "copied");
}

void FakePasteboard::copyFrom(qint32 application, const QString& text) {
    Offer offer;
    offer.owner = Owner::application;
    offer.application = application;
    offer.text = text;
    take(std::move(offer), "copied");
}

void FakePasteboard::copySecretFrom(qint32 application, const QString& text) {
    Offer offer;
    offer.owner = Owner::application;
    offer.application = application;
    offer.text = text;
    offer.isSecret = true;
    take(std::move(offer), "copied a secret");
}

void FakePasteboard::copyOtherFrom(qint32 application, const QStringList& types) {
    Offer offer;
    offer.owner = Owner::application;
    offer.application = application;
    offer.otherTypes = types;
    take(std::move(offer), "copied");
}

void FakePasteboard::ownerDied(qint32 application) {
    const Offer& offer = history_.back();
    if (offer.owner == Owner::application && offer.application == application && application != 0)
        take({}, "pasteboard owner gone");
}

std::optional<QString> FakePasteboard::requestedBy(qint32 application, qint64 changeAtKey) const {
    const Offer& offer = history_.back();
    if (offer.owner == Owner::application && offer.application == application) return offer.text;
    if (!ownerAnswers()) return std::nullopt;
    if (offer.owner != Owner::program) return offer.text;
    // Back to the offer that stood at the key, through our own offers only.
    for (auto past = history_.rbegin(); past != history_.rend() && past->owner == Owner::program; ++past) {
        if (past->change <= changeAtKey) return past->text;
    }
    return offer.text;
}

}  // namespace veltrin
