#include "AI/AIJSONExtractor.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

QByteArray found(const QString& text) {
    const auto object = AIJSONExtractor::object(text);
    return object ? object->serialized() : QByteArray("nothing");
}

TEST(AIJSONExtractor, findsTheObjectInFencesAndAmongWords) {
    EXPECT_EQ(found(u"前言 ```json\n{\"a\":1}\n``` 后记"_s), QByteArray("{\"a\":1}"));
    EXPECT_EQ(found(u"```\n{\"b\": [true, null]}```"_s), QByteArray("{\"b\":[true,null]}"));
    EXPECT_EQ(found(u"{\"标题\":{\"x\":\"y\"}}"_s), QByteArray("{\"标题\":{\"x\":\"y\"}}"));
}

TEST(AIJSONExtractor, removesFencesInsideTheObjectToo) {
    EXPECT_EQ(found(u"{\"code\":\"```json x```\"}"_s), QByteArray("{\"code\":\" x\"}"));
}

TEST(AIJSONExtractor, findsNothingWhereNoObjectStands) {
    EXPECT_EQ(found(u"no braces"_s), QByteArray("nothing"));
    EXPECT_EQ(found(u"} before {"_s), QByteArray("nothing"));
    EXPECT_EQ(found(u"{only an opening"_s), QByteArray("nothing"));
    EXPECT_EQ(found(u"[1, 2]"_s), QByteArray("nothing"));
    EXPECT_EQ(found(u"{\"a\":1} and {\"b\":2}"_s), QByteArray("nothing")) << "first brace to last brace";
    EXPECT_EQ(found(u"{a:1}"_s), QByteArray("nothing"));
    EXPECT_EQ(found(QString()), QByteArray("nothing"));
}

TEST(AIJSONExtractor, staysQuickOnAFloodOfFences) {
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(found(u"```json x "_s.repeated(100000) + u"{}"_s), QByteArray("{}"));
    EXPECT_LT(timer.elapsed(), 3000);
}

}  // namespace
}  // namespace veltrin
