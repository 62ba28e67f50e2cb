#pragma once

#include "support/desktop/Program.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QRect>
#include <QString>

#include <optional>

namespace veltrin {

/// A text field of another program, as the probe found it.
struct ProbedField {
    int element = -1;
    QString role;  ///< AT-SPI's name: "text", "password text", "entry"…
    QString name;
    bool focused = false;
    bool editable = false;
    bool multiline = false;
    bool password = false;
};

/// What stands in a field. Offsets are UTF-16 units into `text`.
struct ProbedText {
    struct Selection {
        qsizetype start = 0;
        qsizetype end = 0;
        friend bool operator==(const Selection&, const Selection&) = default;
    };
    QString text;
    qsizetype caret = 0;
    QList<Selection> selections;  ///< none that is empty
    bool focused = false;

    QString selectedText() const {
        return selections.isEmpty() ? QString()
                                    : text.mid(selections[0].start, selections[0].end - selections[0].start);
    }
};

/// Reads and drives text fields of other programs through AT-SPI, from a process of its own and by code that
/// shares nothing with the adapters under test. Offsets are UTF-16 units, whatever the toolkit counts.
/// Synchronous, without an event loop. What cannot be done, or not in time, throws std::runtime_error. A hung
/// program costs at most 2 s a call.
class AtSpiProbe {
public:
    explicit AtSpiProbe(RealDesktop& desktop);
    ~AtSpiProbe() = default;

    /// The fields of a process: whatever can be edited, and passwords. Empty when the process is not known
    /// (yet).
    QList<ProbedField> fields(pid_t process);
    /// Waits for a field: the focused one, or with a name the one with that accessible name.
    ProbedField waitForField(const Program& program, const QString& name = {}, double seconds = 10);

    /// The field behind an address on the accessibility bus.
    ProbedField fieldAt(const QString& bus, const QString& path);

    ProbedText read(const ProbedField& field);
    QString text(const ProbedField& field) { return read(field).text; }
    /// Looks every 10 ms until the whole text is this one. The text that stood there last, so that a failed
    /// EXPECT_EQ shows it.
    QString waitForText(const ProbedField& field, const QString& expected, double seconds = 5);
    /// The same until the text contains something.
    QString waitForTextContaining(const ProbedField& field, const QString& part, double seconds = 5);

    // Each returns when it was read back as done.
    void grabFocus(const ProbedField& field);
    void setText(const ProbedField& field, const QString& text);
    void setCaret(const ProbedField& field, qsizetype offset);
    void select(const ProbedField& field, qsizetype start, qsizetype end);

    /// On the screen, from its top left. GTK 4 gives window coordinates.
    QRect extents(const ProbedField& field);
    QRect rangeExtents(const ProbedField& field, qsizetype start, qsizetype end);
    /// The probe's own process.
    pid_t process() const { return process_.pid(); }

    /// Role and name of every object of a process, one a line: to print when a test finds nothing.
    QString tree(pid_t process);

private:
    Pipe input_;
    Pipe output_;
    QByteArray pending_;
    QString log_;
    ChildProcess process_;

    QJsonValue ask(const QString& action, QJsonObject arguments = {}, double seconds = 10);
    QJsonValue ask(const QString& action, const ProbedField& field, QJsonObject arguments = {},
                   double seconds = 10);
    void demand(const QString& action, const ProbedField& field, const QJsonObject& arguments = {});
    QJsonValue nextReply(double seconds);
    QString waitFor(const ProbedField& field, const QString& how, const QString& text, double seconds);
    QJsonObject range(const ProbedField& field, qsizetype start, qsizetype end);
};

}  // namespace veltrin
