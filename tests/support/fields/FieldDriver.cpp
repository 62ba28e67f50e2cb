#include "support/fields/FieldDriver.h"

#include "support/desktop/Waiting.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr int answerMilliseconds = 20000;

QJsonObject question(const QString& field, const QString& action, qsizetype start = 0, qsizetype end = 0,
                     const QString& text = {}) {
    return {{u"field"_s, field}, {u"do"_s, action}, {u"text"_s, text}, {u"start"_s, start}, {u"end"_s, end}};
}

FieldState stateIn(const QJsonObject& answer) {
    if (!answer.contains(u"text"_s)) throw std::runtime_error("no such field");
    return {answer.value(u"text"_s).toString(), answer.value(u"start"_s).toInteger(),
            answer.value(u"end"_s).toInteger()};
}

}  // namespace

QString FieldDriver::selected() {
    const FieldState now = state();
    return now.text.mid(now.start, now.end - now.start);
}

ControlledField::ControlledField(const QString& socket, QString name) : name_(std::move(name)) {
    const bool connected = waitUntil(20, [&] {
        socket_.connectToServer(socket);
        return socket_.waitForConnected(100);
    });
    if (!connected) throw std::runtime_error("the test application does not listen");
}

FieldState ControlledField::ask(QJsonObject request) {
    socket_.write(QJsonDocument(request).toJson(QJsonDocument::Compact) + '\n');
    while (!socket_.canReadLine()) {
        if (!socket_.waitForReadyRead(answerMilliseconds))
            throw std::runtime_error("the test application does not answer");
    }
    return stateIn(QJsonDocument::fromJson(socket_.readLine()).object());
}

void ControlledField::set(const FieldState& state) {
    ask(question(name_, u"set"_s, state.start, state.end, state.text));
}

void ControlledField::select(qsizetype start, qsizetype end) {
    ask(question(name_, u"select"_s, start, end));
}

FieldState ControlledField::state() {
    return ask(question(name_, u"state"_s));
}

QJsonObject PageField::ask(const QString& action, const FieldState& state) {
    return server_.ask(question(name_, action, state.start, state.end, state.text));
}

void PageField::set(const FieldState& state) {
    ask(u"set"_s, state);
}

void PageField::select(qsizetype start, qsizetype end) {
    ask(u"select"_s, {{}, start, end});
}

FieldState PageField::state() {
    return stateIn(ask(u"state"_s));
}

QString PageField::selected() {
    return ask(u"state"_s).value(u"selected"_s).toString();
}

QStringList PageField::keys() {
    QStringList keys;
    for (const QJsonValue& key : ask(u"state"_s).value(u"keys"_s).toArray())
        keys << key.toString();
    return keys;
}

QRect PageField::box() {
    const QJsonArray box = ask(u"state"_s).value(u"box"_s).toArray();
    if (box.size() != 4) throw std::runtime_error("the page does not say where the field is");
    return {box[0].toInt(), box[1].toInt(), box[2].toInt(), box[3].toInt()};
}

void ProbedFieldDriver::set(const FieldState& state) {
    probe_.setText(find_(), state.text);
    select(state.start, state.end);
}

void ProbedFieldDriver::select(qsizetype start, qsizetype end) {
    const ProbedField field = find_();
    // A caret drops what is selected.
    probe_.setCaret(field, start);
    if (end > start) probe_.select(field, start, end);
}

FieldState ProbedFieldDriver::state() {
    const ProbedText read = probe_.read(find_());
    if (read.selections.isEmpty()) return {read.text, read.caret, read.caret};
    return {read.text, read.selections[0].start, read.selections[0].end};
}

TerminalField::TerminalField(RealDesktop& desktop)
    : screen_(desktop.file(u"terminal-screen"_s)), input_(desktop.file(u"terminal-input"_s)) {
    QFile::remove(screen_);
    QFile::remove(input_);
    if (mkfifo(screen_.toLocal8Bit().constData(), 0600) != 0) throw std::runtime_error("no pipe");
}

QStringList TerminalField::command() const {
    // Raw: no key means anything to the terminal's driver, and no byte waits for the end of its line. The
    // pipe is opened for writing too, so that it never ends.
    return {u"sh"_s, u"-c"_s, u"stty raw -echo; cat <>'%1' & exec cat >'%2'"_s.arg(screen_, input_)};
}

QByteArray TerminalField::received() const {
    QFile file(input_);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TerminalField::set(const FieldState& state) {
    const int pipe = open(screen_.toLocal8Bit().constData(), O_RDWR | O_CLOEXEC);
    const QByteArray bytes =
        "\x1b[2J\x1b[3J\x1b[H" + QString(state.text).replace(u"\n"_s, u"\r\n"_s).toUtf8();
    const bool written =
        pipe >= 0 && write(pipe, bytes.constData(), static_cast<std::size_t>(bytes.size())) ==
                         static_cast<ssize_t>(bytes.size());
    if (pipe >= 0) close(pipe);
    if (!written) throw std::runtime_error("the terminal takes nothing");
    shown_ = state.text;
    seen_ = received().size();
}

FieldState TerminalField::state() {
    const QString text = shown_ + QString::fromUtf8(received().mid(seen_));
    return {text, text.size(), text.size()};
}

}  // namespace veltrin
