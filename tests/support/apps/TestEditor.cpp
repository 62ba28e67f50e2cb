// A Qt text editor for tests: a multi-line field, a one-line field, and a password field in each window.
//
//   veltrin_test_editor [--title TITLE] [--windows N] [--text TEXT] [--line TEXT] [--password TEXT]
//                       [--focus text|line|password] [--read-only]
//
// The windows are titled TITLE, "TITLE 2" and so on; the first one ends up active. The accessible names of
// the fields are "Text", "Line" and "Password". On SIGTERM it ends with code 0.
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
    });
    arguments.process(given);

    std::vector<std::unique_ptr<QWidget>> windows;
    // The first window is shown last, which makes it the active one.
    for (int number = arguments.value(QStringLiteral("windows")).toInt(); number >= 1; --number) {
        windows.push_back(makeWindow(arguments, number));
    }
    return QApplication::exec();
}
