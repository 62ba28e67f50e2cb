#include "ExternalAccess/AttributeReading.h"
#include "support/desktop/Waiting.h"
#include "support/fields/FieldApplications.h"
#include "support/fields/PassageOnScreen.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ostream>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

struct Enlarged {
    const char* application;
    const char* field;
    const char* variable;  ///< of the environment, with the factor as its value
    const char* factor;
};

void PrintTo(const Enlarged& enlarged, std::ostream* stream) {
    *stream << enlarged.application << " times " << enlarged.factor;
}

/// Anchors on the lines of a longer text, in applications of their usual size and in enlarged ones, which
/// count in points of their own. All of them are measured on the screen.
class AnchorPlaces : public testing::TestWithParam<Enlarged> {
protected:
    AnchorPlaces() { desktop.applyToThisProcess(); }
    static DesktopOptions options() {
        DesktopOptions options;
        options.screen = {1600, 1200};
        options.environment.insert(QString::fromLatin1(GetParam().variable),
                                   QString::fromLatin1(GetParam().factor));
        return options;
    }
    void SetUp() override {
        application.emplace(QString::fromLatin1(GetParam().application), text, desktop, probe);
        field = &application->field(QString::fromLatin1(GetParam().field));
    }
    void set(const QString& words) {
        sample = words;
        field->set({sample, 0, 0});
        window = desktop.x().geometry(application->window());
        const auto element = focusedElement(text.accessibility, application->process());
        const auto position = readAttribute<QPointF>(text.accessibility, element, AXAttribute::position);
        const auto size = readAttribute<QSizeF>(text.accessibility, element, AXAttribute::size);
        ASSERT_TRUE(position.value && size.value);
        area = QRectF(*position.value, *size.value);
        // Of a text that is longer than its field, what is seen counts.
        EXPECT_TRUE(visible().contains(area.topLeft())) << printed(area) << printed(visible());
        EXPECT_LE(area.right(), visible().right());
    }
    QRectF visible() const { return QRectF(window).adjusted(-2, -2, 2, 2); }
    /// Where words of the sample are on the screen.
    QRectF seen(const QString& words) {
        const auto at = sample.indexOf(words);
        // Around the field alone: status lines tell of the selection, too.
        return passageOnScreen(desktop.x(), window & area.toAlignedRect(), *field, at, at + words.size());
    }
    /// The anchor of a selection or caret; the field's origin is at the top left, the anchor's at the bottom.
    QRectF anchor(qsizetype start, qsizetype length) {
        field->select(start, start + length);
        const TextRange range{start, length};
        EXPECT_TRUE(waitUntil(10, [&] { return text.reader.readFocusedText().selectedRange == range; }));
        QRectF found = text.locator.bestAnchorRect().value_or(QRectF());
        found.moveTop(desktop.x().screen().height_in_pixels - found.y() - found.height());
        return found;
    }
    QRectF anchorOf(const QString& words) { return anchor(sample.indexOf(words), words.size()); }
    static std::string printed(const QRectF& r) {
        return u"(%1 %2 %3×%4)"_s.arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height()).toStdString();
    }
    static testing::AssertionResult standsOn(const QRectF& found, double left, double right, double middle) {
        const bool isThere = std::abs(found.left() - left) <= 8 && std::abs(found.right() - right) <= 10 &&
                             found.top() <= middle && found.bottom() >= middle && found.height() < 100;
        return isThere ? testing::AssertionSuccess()
                       : testing::AssertionFailure() << printed(found) << " and not from " << left << " to "
                                                     << right << " around " << middle;
    }
    static testing::AssertionResult standsOn(const QRectF& found, const QRectF& seen) {
        return standsOn(found, seen.left(), seen.right(), seen.center().y());
    }
    /// These have no places for their texts; there the field or its window is the anchor.
    bool hasPlaces() const {
        const QString name = application->name();
        return name != u"gnome-text-editor" && name != u"qt-quick";
    }

    RealDesktop desktop{options()};
    ExternalTextDesktop text{desktop};
    AtSpiProbe probe{desktop};
    std::optional<FieldApplication> application;
    FieldDriver* field = nullptr;
    QString sample;
    QRect window;
    QRectF area;
};

TEST_P(AnchorPlaces, areWhereTheUserSeesTheText) {
    set(u"Some words to be found\nand a second line of them\n\nthe fourth ends it"_s);
    if (!hasPlaces()) {
        EXPECT_TRUE(visible().contains(anchorOf(u"second"_s)));
        return;
    }
    const QRectF first = seen(u"found"_s);
    const QRectF second = seen(u"second"_s);
    const QRectF fourth = seen(u"the fourth"_s);
    EXPECT_TRUE(standsOn(anchorOf(u"found"_s), first)) << "the first line";
    EXPECT_TRUE(standsOn(anchorOf(u"second"_s), second)) << "the second line";
    EXPECT_TRUE(standsOn(anchorOf(u"the fourth"_s), fourth)) << "behind an empty line";
    const QRectF atBreak = anchor(sample.indexOf(u'\n'), 0);
    EXPECT_TRUE(standsOn(atBreak, first.right(), first.right(), first.center().y())) << "before a break";
    const double empty = (second.center().y() + fourth.center().y()) / 2;
    EXPECT_TRUE(standsOn(anchor(sample.indexOf(u"\n\n"_s) + 1, 0), fourth.left(), fourth.left(), empty))
        << "on an empty line";
}

class ScrolledAnchorPlaces : public AnchorPlaces {};

TEST_P(ScrolledAnchorPlaces, areWhereTheUserSeesTheText) {
    QStringList lines;
    for (int i = 0; i < 60; ++i)
        lines << u"This is line number %1 of them"_s.arg(i);
    lines[20] =
        u"a line that is so long that a field has to break it into two or more of them "_s.repeated(3);
    set(lines.join(u'\n'));
    const QString words = u"number 50"_s;
    anchorOf(words);  // scrolls there
    const QRectF found = anchorOf(words);
    EXPECT_TRUE(standsOn(found, seen(words)));
}

std::string nameOf(const testing::TestParamInfo<Enlarged>& test) {
    const QString name =
        QString::fromLatin1(test.param.application) + u'_' + QString::fromLatin1(test.param.factor);
    return QString(name).replace(u'-', u'_').replace(u'.', u'_').toStdString();
}

INSTANTIATE_TEST_SUITE_P(Applications, AnchorPlaces,
                         testing::Values(Enlarged{"mousepad", "text", "GDK_SCALE", "1"},
                                         Enlarged{"mousepad", "text", "GDK_SCALE", "2"},
                                         Enlarged{"gnome-text-editor", "text", "GDK_SCALE", "2"},
                                         Enlarged{"qt-widgets", "text", "QT_SCALE_FACTOR", "1"},
                                         Enlarged{"qt-widgets", "text", "QT_SCALE_FACTOR", "1.25"},
                                         Enlarged{"qt-quick", "text", "QT_SCALE_FACTOR", "2"},
                                         Enlarged{"chromium", "textarea", "GDK_SCALE", "1"},
                                         Enlarged{"chromium", "textarea", "GDK_SCALE", "2"},
                                         Enlarged{"firefox", "textarea", "GDK_SCALE", "1"},
                                         Enlarged{"firefox", "textarea", "GDK_SCALE", "2"},
                                         Enlarged{"libreoffice-writer", "text", "GDK_SCALE", "1"},
                                         Enlarged{"libreoffice-writer", "text", "GDK_SCALE", "2"}),
                         nameOf);

// Those that scroll to where a test selects.
INSTANTIATE_TEST_SUITE_P(Applications, ScrolledAnchorPlaces,
                         testing::Values(Enlarged{"mousepad", "text", "GDK_SCALE", "1"},
                                         Enlarged{"qt-widgets", "text", "QT_SCALE_FACTOR", "1"},
                                         Enlarged{"qt-widgets", "text", "QT_SCALE_FACTOR", "1.25"},
                                         Enlarged{"firefox", "textarea", "GDK_SCALE", "1"}),
                         nameOf);

}  // namespace
}  // namespace veltrin
