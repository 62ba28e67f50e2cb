#include "Expression/ExpressionMemoryStore.h"

#include "Foundation/Json.h"

#include <QDateTime>

#include <cmath>

namespace veltrin {
namespace {

/// The years that four digits can write, in seconds since 1970.
constexpr double firstWritableSecond = -62167219200.0;
constexpr double lastWritableSecond = 253402300799.0;

std::optional<QString> encodedDate(double seconds) {
    const double whole = std::floor(seconds);
    if (!(whole >= firstWritableSecond && whole <= lastWritableSecond)) return std::nullopt;
    return QDateTime::fromSecsSinceEpoch(static_cast<qint64>(whole), Qt::UTC)
        .toString(QStringLiteral("yyyy-MM-dd'T'HH:mm:ss'Z'"));
}

std::optional<double> decodedDate(const QString& text) {
    const QDateTime date = QDateTime::fromString(text, Qt::ISODate);
    if (!date.isValid() || date.timeSpec() == Qt::LocalTime) return std::nullopt;
    return static_cast<double>(date.toSecsSinceEpoch());
}

template <typename T>
Json encodedOptional(const std::optional<T>& value) {
    return value ? Json(*value) : Json();
}

/// None when the event cannot be written.
std::optional<Json> encoded(const ExpressionMemoryEvent& event) {
    const auto createdAt = encodedDate(event.createdAt);
    if (!createdAt) return std::nullopt;
    Json json;
    json.set(QStringLiteral("trigger"), event.trigger);
    json.set(QStringLiteral("modeName"), encodedOptional(event.modeName));
    json.set(QStringLiteral("inputKind"), event.inputKind);
    json.set(QStringLiteral("domain"), event.domain);
    json.set(QStringLiteral("sourcePreview"), event.sourcePreview);
    json.set(QStringLiteral("outputPreview"), event.outputPreview);
    json.set(QStringLiteral("writebackSucceeded"), encodedOptional(event.writebackSucceeded));
    json.set(QStringLiteral("isHighValueCandidate"), event.isHighValueCandidate);
    json.set(QStringLiteral("createdAt"), *createdAt);
    return json;
}

/// Reads the members of one object; one wrong member spoils the whole.
class Reader {
public:
    explicit Reader(const Json& json) : json_(json) {}

    QString string(QStringView key) { return required(member(key), &Json::toString); }
    bool boolean(QStringView key) { return required(member(key), &Json::toBool); }
    double date(QStringView key) {
        const auto seconds = decodedDate(string(key));
        if (!seconds) ok_ = false;
        return seconds.value_or(0);
    }
    /// Absent and null both read as none.
    std::optional<QString> optionalString(QStringView key) { return optional(member(key), &Json::toString); }
    std::optional<bool> optionalBoolean(QStringView key) { return optional(member(key), &Json::toBool); }

    bool ok() const { return ok_; }

private:
    const Json* member(QStringView key) const { return json_.find(key); }

    template <typename T>
    T required(const Json* value, std::optional<T> (Json::*as)() const) {
        auto read = value == nullptr ? std::nullopt : (value->*as)();
        if (!read) ok_ = false;
        return read.value_or(T{});
    }
    template <typename T>
    std::optional<T> optional(const Json* value, std::optional<T> (Json::*as)() const) {
        if (value == nullptr || value->isNull()) return std::nullopt;
        return required(value, as);
    }

    const Json& json_;
    bool ok_ = true;
};

std::optional<ExpressionMemoryEvent> decoded(const Json& json) {
    Reader reader(json);
    ExpressionMemoryEvent event;
    event.trigger = reader.string(u"trigger");
    event.modeName = reader.optionalString(u"modeName");
    event.inputKind = reader.string(u"inputKind");
    event.domain = reader.string(u"domain");
    event.sourcePreview = reader.string(u"sourcePreview");
    event.outputPreview = reader.string(u"outputPreview");
    event.writebackSucceeded = reader.optionalBoolean(u"writebackSucceeded");
    event.isHighValueCandidate = reader.boolean(u"isHighValueCandidate");
    event.createdAt = reader.date(u"createdAt");
    if (!reader.ok()) return std::nullopt;
    return event;
}

}  // namespace

const QString ExpressionMemoryStore::key = QStringLiteral("expression_memory_events_v1");

std::vector<ExpressionMemoryEvent> ExpressionMemoryStore::load() const {
    const auto data = preferences_.data(key);
    const auto json = data ? Json::tryParse(*data) : std::nullopt;
    const Json::Array* array = json ? json->array() : nullptr;
    std::vector<ExpressionMemoryEvent> events;
    if (array == nullptr) return events;
    events.reserve(array->size() + 1);
    for (const Json& element : *array) {
        auto event = decoded(element);
        if (!event) return {};
        events.push_back(std::move(*event));
    }
    return events;
}

void ExpressionMemoryStore::record(const ExpressionMemoryEvent& event) {
    auto events = load();
    events.insert(events.begin(), event);
    if (events.size() > limit) events.resize(limit);
    Json::Array array;
    array.reserve(events.size());
    for (const ExpressionMemoryEvent& each : events) {
        auto json = encoded(each);
        if (!json) return;  // an event that cannot be written is lost, the stored ones are not
        array.push_back(std::move(*json));
    }
    preferences_.set(key, Json(std::move(array)).serialized());
}

}  // namespace veltrin
