#include "Expression/ExpressionMemoryStore.h"
#include "Foundation/Json.h"
#include "support/fake/FakePreferences.h"

#include <gtest/gtest.h>

#include <limits>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

ExpressionMemoryEvent event(int number) {
    ExpressionMemoryEvent event;
    event.trigger = u"optimize"_s;
    event.inputKind = u"writingDraft"_s;
    event.domain = u"writing"_s;
    event.sourcePreview = u"源"_s + QString::number(number);
    event.outputPreview = u"结果"_s;
    event.createdAt = 1795200715;
    return event;
}

const QByteArray stored =
    R"([{"trigger":"optimize","modeName":null,"inputKind":"writingDraft","domain":"writing",)"
    R"("sourcePreview":"源1","outputPreview":"结果","writebackSucceeded":null,)"
    R"("isHighValueCandidate":false,"createdAt":"2026-11-20T18:51:55Z"}])";

TEST(ExpressionMemoryStore, writesTheRecordInTheOrderOfItsKeys) {
    FakePreferences preferences;
    ExpressionMemoryStore store(preferences);
    auto first = event(1);
    first.createdAt += 0.9;  // whole seconds
    store.record(first);
    EXPECT_EQ(preferences.data(u"expression_memory_events_v1"_s), stored);
    first.createdAt -= 0.9;
    EXPECT_EQ(store.load(), std::vector{event(1)});
}

TEST(ExpressionMemoryStore, keepsTheOptionalValues) {
    FakePreferences preferences;
    ExpressionMemoryStore store(preferences);
    auto full = event(1);
    full.modeName = u"助手"_s;
    full.writebackSucceeded = false;
    full.isHighValueCandidate = true;
    store.record(full);
    EXPECT_EQ(store.load(), std::vector{full});
}

TEST(ExpressionMemoryStore, readsAnAbsentOptionalAsNone) {
    FakePreferences preferences;
    QByteArray sparse = stored;
    sparse.replace(R"("modeName":null,)", "").replace(R"("writebackSucceeded":null,)", "");
    preferences.values[ExpressionMemoryStore::key] = sparse;
    EXPECT_EQ(ExpressionMemoryStore(preferences).load(), std::vector{event(1)});
}

TEST(ExpressionMemoryStore, keepsTheNewestThreeHundred) {
    FakePreferences preferences;
    ExpressionMemoryStore store(preferences);
    const Json first = Json::parse(stored);
    Json::Array full;
    for (int i = 299; i >= 1; --i) {
        Json each = first.array()->front();
        each.set(u"sourcePreview"_s, event(i).sourcePreview);
        full.push_back(each);
    }
    preferences.values[ExpressionMemoryStore::key] = Json(full).serialized();
    store.record(event(300));
    EXPECT_EQ(store.load().back(), event(1)) << "300 are kept";
    store.record(event(301));
    const auto events = store.load();
    ASSERT_EQ(events.size(), 300U);
    EXPECT_EQ(events.front(), event(301));
    EXPECT_EQ(events.back(), event(2));
}

TEST(ExpressionMemoryStore, readsWhatDoesNotDecodeAsEmptyAndReplacesIt) {
    QByteArray badDate = stored;
    badDate.replace("2026-11-20T18:51:55Z", "yesterday");
    QByteArray badType = stored;
    badType.replace(R"("isHighValueCandidate":false)", R"("isHighValueCandidate":0)");
    QByteArray missing = stored;
    missing.replace(R"("domain":"writing",)", "");
    QByteArray badOptional = stored;
    badOptional.replace(R"("modeName":null)", R"("modeName":1)");
    for (const QByteArray& bad : {QByteArray("{"), QByteArray("{}"), QByteArray("[1]"), QByteArray(), badDate,
                                  badType, missing, badOptional}) {
        FakePreferences preferences;
        preferences.values[ExpressionMemoryStore::key] = bad;
        ExpressionMemoryStore store(preferences);
        EXPECT_TRUE(store.load().empty()) << bad.constData();
        store.record(event(1));
        EXPECT_EQ(store.load(), std::vector{event(1)});
    }
    FakePreferences preferences;
    preferences.values[ExpressionMemoryStore::key] = u"a string"_s;
    EXPECT_TRUE(ExpressionMemoryStore(preferences).load().empty());
}

TEST(ExpressionMemoryStore, writesNothingWhenAnEventCannotBeWritten) {
    FakePreferences preferences;
    ExpressionMemoryStore store(preferences);
    store.record(event(1));
    auto impossible = event(2);
    impossible.createdAt = std::numeric_limits<double>::quiet_NaN();
    store.record(impossible);
    EXPECT_EQ(preferences.writes.size(), 1U);
    EXPECT_EQ(store.load(), std::vector{event(1)});
}

}  // namespace
}  // namespace veltrin
