// A Qt text editor for tests: a multi-line field, a one-line field, and a password field in each window.
//
//   veltrin_test_editor [--title TITLE] [--windows N] [--text TEXT] [--line TEXT] [--password TEXT]
//                       [--focus text|line|password] [--read-only] [--control SOCKET]
//
// The windows are titled TITLE, "TITLE 2" and so on; the first one ends up active. The accessible names of
// the fields are "Text", "Line" and "Password". With --control the fields "text" and "line" of the first
// window can be set and looked at, as FieldControl.h says. On SIGTERM it ends with code 0.
#include "support/apps/FieldControl.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include <csignal>
#include <cstdlib>
#include <memory>
#include <vector>

namespace {

void nameField(QWidget& field, const char* name) {
    field.setObjectName(QString::fromLatin1(name).toLower());
    field.setAccessibleName(QString::fromLatin1(name));
}

/// Blinking would wake the program all the time, and make pictures depend on the moment.
void holdStill() {
    QApplication::setCursorFlashTime(0);
}

QJsonObject stateOf(const QString& text, int start, int end, bool isFocused) {
    return {{QStringLiteral("text"), text},
            {QStringLiteral("start"), start},
            {QStringLiteral("end"), end},
            {QStringLiteral("focused"), isFocused}};
}

veltrin::FieldControl::Field controlOf(QPlainTextEdit* field) {
    return {[field](const QString& text) { field->setPlainText(text); },
            [field](int start, int end) {
                QTextCursor cursor = field->textCursor();
                cursor.setPosition(start);
                cursor.setPosition(end, QTextCursor::KeepAnchor);
                field->setTextCursor(cursor);
                field->setFocus();
            },
            [field] {
                const QTextCursor cursor = field->textCursor();
                return stateOf(field->toPlainText(), cursor.selectionStart(), cursor.selectionEnd(),
                               field->hasFocus());
            }};
}

veltrin::FieldControl::Field controlOf(QLineEdit* field) {
    return {[field](const QString& text) { field->setText(text); },
            [field](int start, int end) {
                field->setCursorPosition(start);
                if (end > start) field->setSelection(start, end - start);
                field->setFocus();
            },
            [field] {
                const bool isSelected = field->hasSelectedText();
                return stateOf(field->text(), isSelected ? field->selectionStart() : field->cursorPosition(),
                               isSelected ? field->selectionEnd() : field->cursorPosition(),
                               field->hasFocus());
            }};
}

std::unique_ptr<QWidget> makeWindow(const QCommandLineParser& arguments, int number) {
    auto window = std::make_unique<QWidget>();
    const QString title = arguments.value(QStringLiteral("title"));
    window->setWindowTitle(number == 1 ? title : QStringLiteral("%1 %2").arg(title).arg(number));
    window->resize(480, 320);

    auto* text = new QPlainTextEdit(arguments.value(QStringLiteral("text")));
    auto* line = new QLineEdit(arguments.value(QStringLiteral("line")));
    auto* password = new QLineEdit(arguments.value(QStringLiteral("password")));
    password->setEchoMode(QLineEdit::Password);
    text->setReadOnly(arguments.isSet(QStringLiteral("read-only")));
    nameField(*text, "Text");
    nameField(*line, "Line");
    nameField(*password, "Password");
    auto layout = std::make_unique<QVBoxLayout>();
    for (QWidget* field : std::initializer_list<QWidget*>{text, line, password})
        layout->addWidget(field);

    window->setLayout(layout.release());

    const QString focus = arguments.value(QStringLiteral("focus"));
    for (QWidget* field : std::initializer_list<QWidget*>{text, line, password}) {
        if (field->objectName() == focus) field->setFocus();
    }
    window->show();
    return window;
}

}  // namespace

int main(int argc, char** argv) {
    QStringList given;
    for (int index = 0; index < argc; ++index)
        given.append(QString::fromLocal8Bit(argv[index]));
    // Qt would take --title for itself.
    int onlyName = 1;
    QApplication application(onlyName, argv);
    QApplication::setApplicationName(QStringLiteral("veltrin_test_editor"));
    std::signal(SIGTERM, [](int) { std::_Exit(0); });
    holdStill();

    QCommandLineParser arguments;
    arguments.addOptions({
        {QStringLiteral("title"), {}, QStringLiteral("title"), QStringLiteral("Test Editor")},
        {QStringLiteral("windows"), {}, QStringLiteral("count"), QStringLiteral("1")},
        {QStringLiteral("text"), {}, QStringLiteral("text")},
        {QStringLiteral("line"), {}, QStringLiteral("text")},
        {QStringLiteral("password"), {}, QStringLiteral("text")},
        {QStringLiteral("focus"), {}, QStringLiteral("field"), QStringLiteral("text")},
        {QStringLiteral("read-only"), {}},
        {QStringLiteral("control"), {}, QStringLiteral("socket")},
    });
    arguments.process(given);

    std::vector<std::unique_ptr<QWidget>> windows;
    // The first window is shown last, which makes it the active one.
    for (int number = arguments.value(QStringLiteral("windows")).toInt(); number >= 1; --number) {
        windows.push_back(makeWindow(arguments, number));
    }
    const QWidget& first = *windows.back();
    const veltrin::FieldControl control(
        arguments.value(QStringLiteral("control")),
        {{QStringLiteral("text"), controlOf(first.findChild<QPlainTextEdit*>(QStringLiteral("text")))},
         {QStringLiteral("line"), controlOf(first.findChild<QLineEdit*>(QStringLiteral("line")))},
         {QStringLiteral("password"), controlOf(first.findChild<QLineEdit*>(QStringLiteral("password")))}});
    return QApplication::exec();
}
