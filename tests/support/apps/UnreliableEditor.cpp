// A text editor whose accessibility cannot be relied on, for tests. A person can type and paste into it as
// into any other.
//
//   veltrin_unreliable_editor --text TEXT --mischief lie|late|lateWrite|restless|vanish
//
//   lie        says that every write was done, and does none
//   late       takes longer to tell its text than anybody waits
//   lateWrite  does what it is told to write long after it said so
//   restless   changes its text whenever it is asked for it
//   vanish     ends when it is asked for its text
#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QCommandLineParser>
#include <QPlainTextEdit>
#include <QThread>
#include <QTimer>

#include <unistd.h>

#include <functional>

namespace {

using namespace Qt::StringLiterals;

constexpr unsigned long lateMilliseconds = 900;

QString mischief;

class UnreliableText final : public QAccessibleWidget,
                             public QAccessibleTextInterface,
                             public QAccessibleEditableTextInterface {
public:
    explicit UnreliableText(QPlainTextEdit* edit)
        : QAccessibleWidget(edit, QAccessible::EditableText, u"Text"_s), edit_(edit) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface*>(this);
        if (type == QAccessible::EditableTextInterface)
            return static_cast<QAccessibleEditableTextInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.editable = true;
        state.multiLine = true;
        state.selectableText = true;
        return state;
    }

    QString text(int start, int end) const override {
        if (mischief == u"late") QThread::msleep(lateMilliseconds);
        if (mischief == u"vanish") _exit(0);
        if (mischief == u"restless") edit_->appendPlainText(u"more"_s);
        return content().mid(start, end - start);
    }
    int characterCount() const override { return static_cast<int>(content().size()); }
    int cursorPosition() const override { return edit_->textCursor().position(); }
    void setCursorPosition(int position) override { moveCursor(position, position); }
    int selectionCount() const override { return edit_->textCursor().hasSelection() ? 1 : 0; }
    void selection(int, int* start, int* end) const override {
        *start = edit_->textCursor().selectionStart();
        *end = edit_->textCursor().selectionEnd();
    }
    void addSelection(int start, int end) override { moveCursor(start, end); }
    void setSelection(int, int start, int end) override { moveCursor(start, end); }
    void removeSelection(int) override { setCursorPosition(cursorPosition()); }
    QRect characterRect(int) const override { return rect(); }
    int offsetAtPoint(const QPoint&) const override { return 0; }
    void scrollToSubstring(int, int) override {}
    QString attributes(int offset, int* start, int* end) const override {
        *start = *end = offset;
        return {};
    }

    void deleteText(int start, int end) override { replaceText(start, end, {}); }
    void insertText(int offset, const QString& text) override { replaceText(offset, offset, text); }
    void replaceText(int start, int end, const QString& text) override {
        write([=, edit = edit_] {
            QTextCursor cursor(edit->document());
            cursor.setPosition(start);
            cursor.setPosition(end, QTextCursor::KeepAnchor);
            cursor.insertText(text);
        });
    }

private:
    QString content() const { return edit_->toPlainText(); }
    void moveCursor(int anchor, int position) {
        QTextCursor cursor = edit_->textCursor();
        cursor.setPosition(anchor);
        cursor.setPosition(position, QTextCursor::KeepAnchor);
        edit_->setTextCursor(cursor);
    }
    static void write(const std::function<void()>& change) {
        if (mischief == u"lie") return;
        if (mischief == u"lateWrite") {
            QTimer::singleShot(static_cast<int>(lateMilliseconds), change);
        } else {
            change();
        }
    }

    QPlainTextEdit* edit_;
};

QAccessibleInterface* make(const QString&, QObject* object) {
    auto* edit = qobject_cast<QPlainTextEdit*>(object);
    return edit ? new UnreliableText(edit) : nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QApplication::setCursorFlashTime(0);
    QCommandLineParser parser;
    const QCommandLineOption text(u"text"_s, {}, u"TEXT"_s);
    const QCommandLineOption kind(u"mischief"_s, {}, u"KIND"_s);
    parser.addOptions({text, kind});
    parser.process(application);
    mischief = parser.value(kind);
    QAccessible::installFactory(make);
    QPlainTextEdit edit;
    edit.setPlainText(parser.value(text));
    edit.resize(400, 200);
    edit.show();
    edit.setFocus();
    return QApplication::exec();
}
