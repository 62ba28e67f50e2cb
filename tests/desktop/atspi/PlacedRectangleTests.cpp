#include "Platform/Linux/AtSpi/PlacedRectangle.h"
#include "Platform/Linux/TopLevelWindows.h"

#include <gtest/gtest.h>

namespace veltrin::AtSpi {
namespace {

TopLevelWindow windowAt(const QRectF& client) {
    return {1, {}, client.adjusted(-1, -20, 1, 1), client};
}

TEST(PixelsPerPoint, areOneWhereAWindowHasTheSizeThatIsTold) {
    for (const Toolkit toolkit : {Toolkit::gtk3, Toolkit::gtk4, Toolkit::qt, Toolkit::gecko})
        EXPECT_EQ(pixelsPerPoint({800, 600}, {800, 600}, toolkit), 1);
}

TEST(PixelsPerPoint, countNoShadowMenuBarOrBorder) {
    EXPECT_EQ(pixelsPerPoint({904, 704}, {800, 600}, Toolkit::gtk3), 1);
    EXPECT_EQ(pixelsPerPoint({904, 704}, {1600, 1200}, Toolkit::gtk3), 2) << "a shadow of 52 points";
    EXPECT_EQ(pixelsPerPoint({800, 570}, {800, 600}, Toolkit::office), 1);
    EXPECT_EQ(pixelsPerPoint({800, 575}, {800, 600}, Toolkit::qt), 1);
}

TEST(PixelsPerPoint, areAFractionInQtAlone) {
    EXPECT_NEAR(pixelsPerPoint({640, 480}, {800, 600}, Toolkit::qt), 1.25, 0.001);
    EXPECT_NEAR(pixelsPerPoint({533, 400}, {800, 600}, Toolkit::qt), 1.5, 0.002);
    EXPECT_EQ(pixelsPerPoint({640, 480}, {800, 600}, Toolkit::gtk3), 1);
}

TEST(PixelsPerPoint, areOneWhereTheSizesHaveNothingToDoWithEachOther) {
    EXPECT_EQ(pixelsPerPoint({}, {800, 600}, Toolkit::qt), 1);
    EXPECT_EQ(pixelsPerPoint({800, 600}, {}, Toolkit::gtk3), 1);
    EXPECT_EQ(pixelsPerPoint({200, 600}, {800, 600}, Toolkit::qt), 1);
    EXPECT_EQ(pixelsPerPoint({400, 600}, {800, 600}, Toolkit::gtk3), 1);
    EXPECT_EQ(pixelsPerPoint({8, 6}, {800, 600}, Toolkit::gtk3), 1);
    EXPECT_EQ(pixelsPerPoint({1600, 1200}, {800, 600}, Toolkit::qt), 1);
}

TEST(PlaceOnDesktop, isTheRectangleItselfWherePointsArePixels) {
    const PlacedRectangle placed{{10, 20, 30, 40}, Toolkit::gtk3, {}};
    EXPECT_EQ(onDesktop(placed, windowAt({5, 5, 800, 600}), 1, {}), QRectF(10, 20, 30, 40));
}

TEST(PlaceOnDesktop, isEnlargedFromTheDesktopsCorner) {
    const PlacedRectangle placed{{10, 20, 30, 40}, Toolkit::gtk3, {}};
    EXPECT_EQ(onDesktop(placed, windowAt({5, 5, 800, 600}), 2, {}), QRectF(20, 40, 60, 80));
}

TEST(PlaceOnDesktop, isEnlargedFromTheWindowsCornerInQt) {
    // The second screen begins at 1600 in points as well as in pixels.
    const PlacedRectangle placed{{1710, 110, 40, 20}, Toolkit::qt, {}};
    EXPECT_EQ(onDesktop(placed, windowAt({1800, 200, 800, 600}), 2, {1700, 100}), QRectF(1820, 220, 80, 40));
}

TEST(PlaceOnDesktop, isWithinTheWindowInGtk4) {
    const PlacedRectangle placed{{10, 20, 30, 40}, Toolkit::gtk4, {}};
    EXPECT_EQ(onDesktop(placed, windowAt({100, 200, 800, 600}), 1, {}), QRectF(110, 220, 30, 40));
    EXPECT_EQ(onDesktop(placed, windowAt({100, 200, 800, 600}), 2, {}), QRectF(120, 240, 60, 80));
}

TEST(PlaceOnDesktop, countsTheMenuBarThatAnOfficeLeavesOut) {
    const PlacedRectangle placed{{10, 20, 30, 40}, Toolkit::office, 570};
    EXPECT_EQ(onDesktop(placed, windowAt({0, 0, 800, 600}), 1, {}), QRectF(10, 50, 30, 40));
    EXPECT_EQ(onDesktop(placed, windowAt({0, 0, 800, 560}), 1, {}), QRectF(10, 20, 30, 40));
    EXPECT_EQ(onDesktop(placed, windowAt({0, 0, 1600, 1200}), 2, {}), QRectF(20, 100, 60, 80));
}

}  // namespace
}  // namespace veltrin::AtSpi
