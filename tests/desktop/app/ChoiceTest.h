#pragma once

#include "desktop/app/FocusWatch.h"
#include "desktop/road/RoadTest.h"

#include <QImage>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace veltrin {

constexpr QSize choiceSize(310, 248);

/// The choice of the program itself over real applications.
class Choice : public RoadTest {
protected:
    static inline const QString better = QStringLiteral("Better words, in order.");

    void SetUp() override {
        RoadTest::SetUp();
        serve(ServiceBehaviours::success(better));
    }

    /// The choice's window, on the screen from its top left; null when there is none.
    QRect choice() {
        for (const QRect& panel : panels()) {
            if (panel.size() == choiceSize) return panel;
        }
        return {};
    }
    bool waitForChoice() {
        return waitUntil(5, [&] { return !choice().isNull(); });
    }
    bool waitForNoChoice() {
        return waitUntil(5, [&] { return choice().isNull(); });
    }
    void tapOptimize() {
        typist().pause(0.6);
        typist().tapSpace(2, 0.13);
        ASSERT_TRUE(waitForChoice()) << qPrintable(log());
        ASSERT_TRUE(waitUntil(5, [&] { return isDrawn(choice()); }));
    }
    /// Something stands where its title stands. Until then the program may be too busy for a key.
    bool isDrawn(const QRect& panel) {
        const QImage title = x().image(QRect(panel.x() + 12, panel.y() + 12, 120, 24));
        for (int at = 0; at < title.width() * title.height(); ++at) {
            if (title.pixel(at % title.width(), at / title.width()) != title.pixel(0, 0)) return true;
        }
        return false;
    }
    /// Presses a key of the choice until it closes. A key that the program on a slow machine does not answer
    /// in time is typed instead, and taken back here.
    void press(const QString& key) {
        for (int attempt = 0; attempt < 3; ++attempt) {
            typist().chord(key);
            if (waitUntil(2, [&] { return choice().isNull(); })) return;
            if (key != u"Escape") typist().chord(QStringLiteral("BackSpace"));
        }
        ADD_FAILURE() << qPrintable(key) << " does not close the choice";
    }
    /// The anchor of the latest choice as the program logs it: from the bottom left.
    QRectF loggedAnchor() const {
        static const QRegularExpression line(
            QStringLiteral("UI showOptimizeChoicePanel requested: 优化提示词 anchor: "
                           "\\(([-\\d.]+), ([-\\d.]+), ([-\\d.]+), ([-\\d.]+)\\)"));
        QRectF found;
        auto matches = line.globalMatch(log());
        while (matches.hasNext()) {
            const auto match = matches.next();
            found = QRectF(match.captured(1).toDouble(), match.captured(2).toDouble(),
                           match.captured(3).toDouble(), match.captured(4).toDouble());
        }
        return found;
    }
    /// Where the choice belongs below a rectangle of the screen, kept inside it by its margin.
    QPoint placeBelow(const QRectF& rect) {
        const QSize screen(x().screen().width_in_pixels, x().screen().height_in_pixels);
        const double left = rect.center().x() - choiceSize.width() / 2.0;
        const double top = rect.bottom() + 10;
        return {
            static_cast<int>(std::lround(std::clamp(left, 12.0, screen.width() - choiceSize.width() - 12.0))),
            static_cast<int>(
                std::lround(std::clamp(top, 12.0, screen.height() - choiceSize.height() - 12.0)))};
    }
    static bool isNear(QPoint a, QPoint b, int distance = 2) {
        return std::abs(a.x() - b.x()) <= distance && std::abs(a.y() - b.y()) <= distance;
    }
    /// The caret behind the last character that was typed.
    QRect caretOf(const ProbedField& field) {
        const qsizetype caret = atspi().read(field).caret;
        const QRect before = atspi().rangeExtents(field, caret - 1, caret);
        return QRect(before.right() + 1, before.y(), 2, before.height());
    }
    /// Waits for the read, the model and the write, with the clipboard given back.
    void expectWritten(const ProbedField& field, const QString& text) {
        EXPECT_EQ(atspi().waitForText(field, text, 10), text) << qPrintable(log());
    }
};

}  // namespace veltrin
