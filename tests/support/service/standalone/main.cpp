#include "support/service/ModelService.h"
#include "support/service/ServiceScript.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QSaveFile>
#include <QSocketNotifier>

#include <sys/signalfd.h>

#include <csignal>
#include <cstdio>
#include <stdexcept>

namespace {

/// A descriptor that becomes readable on SIGTERM or SIGINT. Before any thread is made, so that all inherit
/// the mask.
int terminationSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

QByteArray scriptFrom(const QCommandLineParser& options) {
    const QString path = options.value(QStringLiteral("script"));
    if (path.isEmpty()) {
        veltrin::Json script;
        script.set(QStringLiteral("default"), options.value(QStringLiteral("answer")));
        return script.serialized();
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) throw std::runtime_error("the script cannot be read");
    return file.readAll();
}

/// Appears whole or not at all, so that whoever waits for the file can read it at once.
void tellPort(const QString& path, quint16 port) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(QByteArray::number(port) + '\n') < 0 || !file.commit())
        throw std::runtime_error("the port file cannot be written");
}

}  // namespace

/// A stand-in model service as a program, for demonstrations and for programs under test. Ends on SIGTERM.
int main(int argc, char** argv) {
    const int termination = terminationSignals();
    QCoreApplication application(argc, argv);
    const QSocketNotifier notifier(termination, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    QCommandLineParser options;
    options.addHelpOption();
    options.addOptions({
        {QStringLiteral("port"), QStringLiteral("Port on 127.0.0.1; any free one unless given."),
         QStringLiteral("N"), QStringLiteral("0")},
        {QStringLiteral("port-file"), QStringLiteral("File to write the port to."), QStringLiteral("F")},
        {QStringLiteral("log"),
         QStringLiteral("File for the requests, one JSON object a line; else printed."), QStringLiteral("F")},
        {QStringLiteral("answer"), QStringLiteral("Text of every answer."), QStringLiteral("TEXT"),
         QStringLiteral("ok")},
        {QStringLiteral("delay"), QStringLiteral("Seconds before each answer."), QStringLiteral("S"),
         QStringLiteral("0")},
        {QStringLiteral("script"), QStringLiteral("JSON file of answers; see ServiceScript.h."),
         QStringLiteral("F")},
    });
    options.process(application);
    try {
        QFile log(options.value(QStringLiteral("log")));
        const bool open = log.fileName().isEmpty() ? log.open(stdout, QIODevice::WriteOnly)
                                                   : log.open(QIODevice::WriteOnly | QIODevice::Append);
        if (!open) throw std::runtime_error("the log cannot be written");
        veltrin::ModelService service(options.value(QStringLiteral("port")).toUShort());
        service.setObserver([&log](const veltrin::ServiceRequest& request) {
            log.write(veltrin::ServiceScript::line(request));
            log.flush();
        });
        veltrin::ServiceScript::apply(service, scriptFrom(options),
                                      options.value(QStringLiteral("delay")).toDouble());
        if (options.isSet(QStringLiteral("port-file")))
            tellPort(options.value(QStringLiteral("port-file")), service.port());
        return QCoreApplication::exec();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "veltrin_model_service: %s\n", error.what());
        return 1;
    }
}
