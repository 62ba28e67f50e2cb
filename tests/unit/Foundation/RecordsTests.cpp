#include "Foundation/Records.h"
#include "support/RecordLaws.h"

#include <gtest/gtest.h>

namespace veltrin {

enum class Shape { circle, square };
template <>
inline constexpr std::array<const char*, 2> rawValuesOf<Shape>{"circle", "square"};

struct Point {
    int x = 0;
    double y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};
template <>
inline constexpr auto recordFields<Point> = std::tuple{required(u"x", &Point::x), defaulted(u"y", &Point::y)};

struct Drawing {
    QUuid id;
    QString title;
    Shape shape = Shape::square;
    Point origin;
    std::vector<Point> path;
    QStringList tags;
    QString category = QStringLiteral("general");
    std::optional<int> rating;
    std::optional<Point> centre;
    std::map<QString, int> counts;
    bool shown = true;
    Date createdAt;
    Date updatedAt;
    friend bool operator==(const Drawing&, const Drawing&) = default;
};
template <>
inline constexpr auto recordFields<Drawing> = std::tuple{required(u"id", &Drawing::id),
                                                         required(u"title", &Drawing::title),
                                                         tolerant(u"shape", &Drawing::shape),
                                                         required(u"origin", &Drawing::origin),
                                                         defaulted(u"path", &Drawing::path),
                                                         defaulted(u"tags", &Drawing::tags),
                                                         defaulted(u"category", &Drawing::category),
                                                         optional(u"rating", &Drawing::rating),
                                                         tolerant(u"centre", &Drawing::centre),
                                                         required(u"counts", &Drawing::counts),
                                                         defaulted(u"shown", &Drawing::shown),
                                                         required(u"createdAt", &Drawing::createdAt),
                                                         defaultedToNow(u"updatedAt", &Drawing::updatedAt)};

namespace {

using namespace Qt::StringLiterals;

TEST(Records, obeyTheirTables) {
    expectRecordLaws<Point>();
    expectRecordLaws<Drawing>();
}

TEST(Records, standInTheOrderOfTheTableWithDatesAsAsked) {
    Drawing drawing;
    drawing.id = *uuidFrom(u"6f9619ff-8b86-d011-b42d-00c04fc964ff");
    drawing.title = u"图"_s;
    drawing.rating = 5;
    drawing.createdAt = Date{1795255200.7};
    drawing.updatedAt = Date{Date::referenceOffset};
    const QByteArray head = R"({"id":"6F9619FF-8B86-D011-B42D-00C04FC964FF","title":"图","shape":"square",)"
                            R"("origin":{"x":0,"y":0.0},"path":[],"tags":[],"category":"general","rating":5,)"
                            R"("counts":{},"shown":true,)";
    EXPECT_EQ(writeRecord(drawing)->serialized(),
              head + R"("createdAt":"2026-11-21T10:00:00Z","updatedAt":"2001-01-01T00:00:00Z"})");
    EXPECT_EQ(writeRecord(drawing, DateStrategy::referenceDate)->serialized(),
              head + R"("createdAt":816948000.7,"updatedAt":0.0})");
}

TEST(Records, readMembersInAnyOrderAndPassOverUnknownOnes) {
    const Json json = Json::parse(R"({"new":[1],"y":2.5,"x":1})");
    EXPECT_EQ(readRecord<Point>(json), (Point{1, 2.5}));
}

TEST(Records, ofAMemberNamedTwiceTheLastCounts) {
    EXPECT_EQ(readRecord<Point>(Json::parse(R"({"x":"wrong","y":1,"x":2})")), (Point{2, 1}));
}

TEST(Records, datesOfTheOtherStrategyDoNotRead) {
    const Drawing drawing;
    const auto text = writeRecord(drawing, DateStrategy::iso8601);
    const auto number = writeRecord(drawing, DateStrategy::referenceDate);
    EXPECT_FALSE(readRecord<Drawing>(*text, {DateStrategy::referenceDate, {}}));
    EXPECT_FALSE(readRecord<Drawing>(*number, {DateStrategy::iso8601, {}}));
}

TEST(Records, integersMayBeWrittenAsWholeRealsThatFit) {
    EXPECT_EQ(readRecord<Point>(Json::parse(R"({"x":3.0})")), (Point{3, 0}));
    for (const QByteArray& number : {QByteArray("3.5"), QByteArray("2147483648"), QByteArray("1e300"),
                                     QByteArray("true"), QByteArray("\"3\"")})
        EXPECT_FALSE(readRecord<Point>(Json::parse("{\"x\":" + number + "}"))) << number.toStdString();
}

TEST(Records, anUnknownCaseIsOfAnotherType) {
    Json json = *writeRecord(Drawing{});
    json.set(u"shape"_s, u"circle"_s);
    EXPECT_EQ(readRecord<Drawing>(json)->shape, Shape::circle);
    json.set(u"shape"_s, u"triangle"_s);
    EXPECT_EQ(readRecord<Drawing>(json)->shape, Shape::square) << "a tolerant field takes its default";
}

TEST(Records, whatNoFileCanHoldIsNotWritten) {
    EXPECT_FALSE(writeRecord(Point{1, std::numeric_limits<double>::quiet_NaN()}));
    Drawing drawing;
    drawing.createdAt = Date{1e15};
    EXPECT_FALSE(writeRecord(drawing));
    EXPECT_TRUE(writeRecord(drawing, DateStrategy::referenceDate));
    EXPECT_FALSE(writeRecords(std::vector{Point{1, 1}, Point{1, std::numeric_limits<double>::infinity()}}));
}

TEST(Records, oneWrongRecordSpoilsTheWholeText) {
    EXPECT_EQ(readRecords<Point>(R"([{"x":1},{"x":2}])"), (std::vector<Point>{{1, 0}, {2, 0}}));
    EXPECT_FALSE(readRecords<Point>(R"([{"x":1},{"y":2}])"));
    EXPECT_FALSE(readRecords<Point>(R"({"x":1})"));
    EXPECT_FALSE(readRecords<Point>("[{\"x\":1}] \xff"));
}

}  // namespace
}  // namespace veltrin
