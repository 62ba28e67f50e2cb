#pragma once

#include "support/desktop/AtSpiProbe.h"
#include "support/desktop/RealDesktop.h"
#include "support/fields/PageServer.h"

#include <QLocalSocket>
#include <QRect>
#include <QString>

#include <functional>

namespace veltrin {

struct FieldState {
    QString text;
    qsizetype start = 0;  ///< of the selection, UTF-16; a caret has both the same
    qsizetype end = 0;
    friend bool operator==(const FieldState&, const FieldState&) = default;
};

/// A test's own way to a text field of a foreign application, by code that shares nothing with what is under
/// test. Throws std::runtime_error for what cannot be done.
class FieldDriver {
public:
    virtual ~FieldDriver() = default;
    /// Gives the field this text, this selection and the focus in its window.
    virtual void set(const FieldState& state) = 0;
    virtual void select(qsizetype start, qsizetype end) = 0;
    virtual FieldState state() = 0;
    /// What the application says is selected.
    virtual QString selected();
};

/// A field of one of our own test applications.
class ControlledField final : public FieldDriver {
public:
    ControlledField(const QString& socket, QString name);
    void set(const FieldState& state) override;
    void select(qsizetype start, qsizetype end) override;
    FieldState state() override;

private:
    FieldState ask(QJsonObject request);
    QLocalSocket socket_;
    QString name_;
};

/// A field of the page that PageServer serves.
class PageField final : public FieldDriver {
public:
    PageField(PageServer& server, QString name) : server_(server), name_(std::move(name)) {}
    void set(const FieldState& state) override;
    void select(qsizetype start, qsizetype end) override;
    FieldState state() override;
    QString selected() override;
    /// Where it stands in the page, from the corner of what is seen of that.
    QRect box();
    /// Every key that the page was given so far, as scripts name them: "Shift", "c".
    QStringList keys();

private:
    QJsonObject ask(const QString& action, const FieldState& state = {});
    PageServer& server_;
    QString name_;
};

/// The focused field of a foreign application, by the accessibility probe.
class ProbedFieldDriver final : public FieldDriver {
public:
    using Find = std::function<ProbedField()>;
    /// `find` is asked again after each change of the text: some applications make new objects then.
    ProbedFieldDriver(AtSpiProbe& probe, Find find) : probe_(probe), find_(std::move(find)) {}
    void set(const FieldState& state) override;
    void select(qsizetype start, qsizetype end) override;
    FieldState state() override;

private:
    AtSpiProbe& probe_;
    Find find_;
};

/// What stands in a terminal and what was typed or pasted into it. `set` clears the screen and shows the text
/// with the cursor behind it; the program in the terminal writes every byte that it gets into a file.
class TerminalField final : public FieldDriver {
public:
    /// The files are made by the program that `command` gives.
    explicit TerminalField(RealDesktop& desktop);
    QStringList command() const;
    void set(const FieldState& state) override;
    void select(qsizetype, qsizetype) override {}
    /// The text shown, and behind it what came in since.
    FieldState state() override;

private:
    QByteArray received() const;
    QString screen_;
    QString input_;
    QString shown_;
    qsizetype seen_ = 0;
};

}  // namespace veltrin
