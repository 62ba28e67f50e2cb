#pragma once

#include <QRectF>
#include <QString>

#include <optional>
#include <type_traits>

namespace veltrin {

/// The one log. A line goes to standard output and, with the date in front, to the end of the log file. The
/// file is opened without following links, mode 0600; a failure to write is ignored. Callable from any
/// thread.
///
/// The log never holds typed text beyond the previews its callers state, never a key, never a header.
class MVPLog {
public:
    /// Joins the texts of the items by one blank and writes them as one line.
    template <typename... Items>
    static void write(const Items&... items) {
        QString line;
        ((line.isEmpty() ? void() : void(line += u' '), line += text(items)), ...);
        writeLine(line);
    }

    /// Where lines are appended; "/tmp/veltrin-main-mvp.log" unless changed. Changing closes the former file.
    static QString logURL();
    static void setLogURL(const QString& path);
    /// Whether lines are also printed; true at start.
    static void setPrinting(bool printing);

    static QString text(const QString& item) { return item; }
    static QString text(QStringView item) { return item.toString(); }
    static QString text(const char* item) { return QString::fromUtf8(item); }
    static QString text(bool item) { return item ? QStringLiteral("true") : QStringLiteral("false"); }
    static QString text(double item) { return QString::number(item, 'g', 12); }
    /// The rectangle as "(x, y, width, height)".
    static QString text(const QRectF& item);
    template <typename T>
    static QString text(const std::optional<T>& item) {
        return item ? text(*item) : QStringLiteral("nil");
    }
    template <typename T>
        requires(std::is_integral_v<T> && !std::is_same_v<T, bool>)
    static QString text(T item) {
        return QString::number(item);
    }

private:
    static void writeLine(const QString& line);
};

}  // namespace veltrin
