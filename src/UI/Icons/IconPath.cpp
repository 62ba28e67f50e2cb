#include "UI/Icons/IconPath.h"

#include <QPointF>
#include <QtMath>

#include <algorithm>
#include <cmath>

namespace veltrin {
namespace {

constexpr double degrees = 180.0 / M_PI;

/// Where a drawing stands while it is read.
class Reader {
public:
    explicit Reader(QStringView text) : text_(text) {}

    std::optional<QPainterPath> read() {
        skipBlanks();
        if (atEnd() || text_[at_].toUpper() != u'M') return std::nullopt;
        while (!atEnd()) {
            if (text_[at_].isLetter())
                command_ = text_[at_++];
            else if (command_.toUpper() == u'Z')
                return std::nullopt;
            if (!step()) return std::nullopt;
            skipBlanks();
        }
        return path_;
    }

private:
    bool atEnd() const { return at_ >= text_.size(); }
    void skipBlanks() {
        while (!atEnd() && (text_[at_].isSpace() || text_[at_] == u','))
            ++at_;
    }

    /// The next number; NaN when there is none.
    double number() {
        skipBlanks();
        const qsizetype start = at_;
        if (!atEnd() && (text_[at_] == u'-' || text_[at_] == u'+')) ++at_;
        bool fraction = false;
        while (!atEnd() && (text_[at_].isDigit() || (text_[at_] == u'.' && !fraction))) {
            fraction = fraction || text_[at_] == u'.';
            ++at_;
        }
        bool good = false;
        const double value = text_.sliced(start, at_ - start).toDouble(&good);
        return good ? value : qQNaN();
    }
    /// A flag of an arc is one digit, which may touch what follows.
    double flag() {
        skipBlanks();
        if (atEnd() || (text_[at_] != u'0' && text_[at_] != u'1')) return qQNaN();
        return text_[at_++] == u'1' ? 1 : 0;
    }
    QPointF point() {
        const double x = number();
        const double y = number();
        return isRelative() ? here() + QPointF(x, y) : QPointF(x, y);
    }
    QPointF here() const { return path_.currentPosition(); }
    bool isRelative() const { return command_.isLower(); }
    static bool isGood(QPointF point) { return !std::isnan(point.x()) && !std::isnan(point.y()); }

    bool step() {
        switch (command_.toUpper().unicode()) {
            case u'M':
                return move();
            case u'L':
                return line(point());
            case u'H':
                return line({number() + (isRelative() ? here().x() : 0), here().y()});
            case u'V':
                return line({here().x(), number() + (isRelative() ? here().y() : 0)});
            case u'C':
                return curve(point());
            case u'S':
                return curve(2 * here() - lastControl_.value_or(here()));
            case u'Q':
                return quadratic();
            case u'A':
                return arc();
            case u'Z':
                path_.closeSubpath();
                lastControl_.reset();
                return true;
            default:
                return false;
        }
    }
    bool move() {
        const QPointF to = point();
        if (!isGood(to)) return false;
        path_.moveTo(to);
        lastControl_.reset();
        // What follows a move without a letter of its own is a line.
        command_ = isRelative() ? u'l' : u'L';
        return true;
    }
    bool line(QPointF to) {
        lastControl_.reset();
        if (!isGood(to)) return false;
        path_.lineTo(to);
        return true;
    }
    bool curve(QPointF first) {
        const QPointF second = point();
        const QPointF to = point();
        if (!isGood(first) || !isGood(second) || !isGood(to)) return false;
        path_.cubicTo(first, second, to);
        lastControl_ = second;
        return true;
    }
    bool quadratic() {
        const QPointF control = point();
        const QPointF to = point();
        lastControl_.reset();
        if (!isGood(control) || !isGood(to)) return false;
        path_.quadTo(control, to);
        return true;
    }
    bool arc() {
        const QPointF given(number(), number());
        const double turn = number() / degrees;
        const double large = flag();
        const double sweep = flag();
        const QPointF to = point();
        lastControl_.reset();
        if (!isGood(given) || std::isnan(turn) || std::isnan(large) || std::isnan(sweep) || !isGood(to))
            return false;
        addArc({std::abs(given.x()), std::abs(given.y())}, turn, large > 0, sweep > 0, to);
        return true;
    }

    /// From the two ends of an arc to its middle and angles, as SVG's appendix tells.
    void addArc(QPointF radii, double turn, bool large, bool sweep, QPointF to) {
        const QPointF from = here();
        if (radii.x() <= 0 || radii.y() <= 0 || from == to) return path_.lineTo(to);
        const double cosine = std::cos(turn);
        const double sine = std::sin(turn);
        const QPointF half = (from - to) / 2;
        const QPointF p(cosine * half.x() + sine * half.y(), -sine * half.x() + cosine * half.y());
        const double tooFar = std::pow(p.x() / radii.x(), 2) + std::pow(p.y() / radii.y(), 2);
        if (tooFar > 1) radii *= std::sqrt(tooFar);
        const double a = std::pow(radii.x() * p.y(), 2) + std::pow(radii.y() * p.x(), 2);
        const double b = std::pow(radii.x() * radii.y(), 2);
        const double factor = (large == sweep ? -1 : 1) * std::sqrt(std::max(0.0, (b - a) / a));
        const QPointF c(factor * radii.x() * p.y() / radii.y(), -factor * radii.y() * p.x() / radii.x());
        const double start = std::atan2((p.y() - c.y()) / radii.y(), (p.x() - c.x()) / radii.x());
        double span = std::atan2((-p.y() - c.y()) / radii.y(), (-p.x() - c.x()) / radii.x()) - start;
        if (sweep && span < 0) span += 2 * M_PI;
        if (!sweep && span > 0) span -= 2 * M_PI;
        const QPointF middle = (from + to) / 2;
        const QPointF centre(cosine * c.x() - sine * c.y() + middle.x(),
                             sine * c.x() + cosine * c.y() + middle.y());
        addSegments(centre, radii, turn, start, span);
    }
    /// At most a quarter of an ellipse a curve.
    void addSegments(QPointF centre, QPointF radii, double turn, double start, double span) {
        const int count = std::max(1, static_cast<int>(std::ceil(std::abs(span) / (M_PI / 2) - 1e-9)));
        const double delta = span / count;
        const double reach = 4.0 / 3.0 * std::tan(delta / 4);
        const auto place = [&](double x, double y) {
            return QPointF(centre.x() + radii.x() * x * std::cos(turn) - radii.y() * y * std::sin(turn),
                           centre.y() + radii.x() * x * std::sin(turn) + radii.y() * y * std::cos(turn));
        };
        for (int index = 0; index < count; ++index) {
            const double from = start + index * delta;
            const double to = from + delta;
            path_.cubicTo(
                place(std::cos(from) - reach * std::sin(from), std::sin(from) + reach * std::cos(from)),
                place(std::cos(to) + reach * std::sin(to), std::sin(to) - reach * std::cos(to)),
                place(std::cos(to), std::sin(to)));
        }
    }

    QStringView text_;
    qsizetype at_ = 0;
    QChar command_;
    QPainterPath path_;
    std::optional<QPointF> lastControl_;
};

}  // namespace

std::optional<QPainterPath> IconPath::parse(QStringView text) {
    return Reader(text).read();
}

}  // namespace veltrin
