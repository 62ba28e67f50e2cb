// A Qt Quick text editor for tests: a TextArea "text" and a TextField "line".
//
//   veltrin_quick_editor [--control SOCKET]
//
// With --control the fields can be set and looked at, as FieldControl.h says. On SIGTERM it ends with code 0.
#include "support/apps/FieldControl.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QStyleHints>

#include <csignal>
#include <cstdlib>

namespace {

veltrin::FieldControl::Field controlOf(QObject* field) {
    return {[field](const QString& text) { field->setProperty("text", text); },
            [field](int start, int end) {
                QMetaObject::invokeMethod(field, "forceActiveFocus");
                field->setProperty("cursorPosition", start);
                if (end > start)
                    QMetaObject::invokeMethod(field, "select", Q_ARG(int, start), Q_ARG(int, end));
            },
            [field] {
                return QJsonObject{
                    {QStringLiteral("text"), field->property("text").toString()},
                    {QStringLiteral("start"), field->property("selectionStart").toInt()},
                    {QStringLiteral("end"), field->property("selectionEnd").toInt()},
                    {QStringLiteral("focused"), field->property("activeFocus").toBool()},
                };
            }};
}

}  // namespace

int main(int argc, char** argv) {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    const QGuiApplication application(argc, argv);
    std::signal(SIGTERM, [](int) { std::_Exit(0); });
    // Blinking would wake the program all the time, and make pictures depend on the moment.
    QGuiApplication::styleHints()->setCursorFlashTime(0);

    QCommandLineParser arguments;
    arguments.addOption({QStringLiteral("control"), {}, QStringLiteral("socket")});
    arguments.process(application);

    const QQmlApplicationEngine engine(QUrl(QStringLiteral("qrc:/QuickEditor.qml")));
    if (engine.rootObjects().isEmpty()) return 1;
    const QObject* window = engine.rootObjects().constFirst();
    const veltrin::FieldControl control(
        arguments.value(QStringLiteral("control")),
        {{QStringLiteral("text"), controlOf(window->findChild<QObject*>(QStringLiteral("text")))},
         {QStringLiteral("line"), controlOf(window->findChild<QObject*>(QStringLiteral("line")))}});
    return QGuiApplication::exec();
}
