#include "support/desktop/AtSpiProbe.h"

#include "support/desktop/Waiting.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>

#include <unistd.h>

#include <stdexcept>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

qsizetype codePoints(const QString& text, qsizetype utf16) {
    return text.left(utf16).toUcs4().size();
}

qsizetype utf16Offset(const QString& text, qsizetype codePoint) {
    qsizetype offset = 0;
    for (; codePoint > 0 && offset < text.size(); --codePoint) {
        offset += text.at(offset).isHighSurrogate() ? 2 : 1;
    }
    return offset;
}

QRect rectangle(const QJsonValue& value) {
    const QJsonArray numbers = value.toArray();
    return {numbers.at(0).toInt(), numbers.at(1).toInt(), numbers.at(2).toInt(), numbers.at(3).toInt()};
}

ProbedField described(const QJsonObject& field) {
    return {field.value(u"element"_s).toInt(-1), field.value(u"role"_s).toString(),
            field.value(u"name"_s).toString(),   field.value(u"focused"_s).toBool(),
            field.value(u"editable"_s).toBool(), field.value(u"multiline"_s).toBool(),
            field.value(u"password"_s).toBool()};
}

}  // namespace

AtSpiProbe::AtSpiProbe(RealDesktop& desktop) : log_(desktop.file(u"atspi-probe.log"_s)) {
    // The system's interpreter: the bindings are installed for that one.
    const QString script = QStringLiteral(VELTRIN_SOURCE_DIR "/tests/support/desktop/atspi_probe.py");
    process_ = ChildProcess(
        {{u"/usr/bin/python3"_s, u"-B"_s, script}, desktop.environment(), log_, input_.read, output_.write});
    input_.closeRead();
    output_.closeWrite();
    nextReply(15);
}

QJsonValue AtSpiProbe::nextReply(double seconds) {
    const auto line = readLine(output_.read, pending_, seconds);
    if (!line) {
        QFile log(log_);
        const bool isOpen = log.open(QIODevice::ReadOnly);
        throw std::runtime_error("the AT-SPI probe does not answer: " +
                                 (isOpen ? log.readAll().toStdString() : std::string()));
    }
    const QJsonObject reply = QJsonDocument::fromJson(*line).object();
    if (!reply.value(u"ok"_s).toBool()) {
        throw std::runtime_error("AT-SPI probe: " + reply.value(u"error"_s).toString().toStdString());
    }
    return reply.value(u"result"_s);
}

QJsonValue AtSpiProbe::ask(const QString& action, QJsonObject arguments, double seconds) {
    arguments.insert(u"do"_s, action);
    const QByteArray line = QJsonDocument(arguments).toJson(QJsonDocument::Compact) + '\n';
    for (qsizetype written = 0; written < line.size();) {
        const ssize_t count = ::write(input_.write, line.constData() + written,
                                      static_cast<std::size_t>(line.size() - written));
        if (count <= 0) throw std::runtime_error("the AT-SPI probe is gone");
        written += count;
    }
    return nextReply(seconds);
}

QJsonValue AtSpiProbe::ask(const QString& action, const ProbedField& field, QJsonObject arguments,
                           double seconds) {
    arguments.insert(u"element"_s, field.element);
    return ask(action, arguments, seconds);
}

void AtSpiProbe::demand(const QString& action, const ProbedField& field, const QJsonObject& arguments) {
    if (!ask(action, field, arguments).toBool()) {
        throw std::runtime_error("AT-SPI probe: " + action.toStdString() + " did not take hold");
    }
}

QList<ProbedField> AtSpiProbe::fields(pid_t process) {
    QList<ProbedField> found;
    for (const QJsonValue value : ask(u"fields"_s, {{u"pid"_s, process}}, 60).toArray())
        found.append(described(value.toObject()));
    return found;
}

ProbedField AtSpiProbe::fieldAt(const QString& bus, const QString& path) {
    return described(ask(u"field_at"_s, {{u"bus"_s, bus}, {u"path"_s, path}}).toObject());
}

ProbedField AtSpiProbe::waitForField(const Program& program, const QString& name, double seconds) {
    ProbedField found;
    const bool there = waitUntil(seconds, [&] {
        for (const ProbedField& field : fields(program.pid())) {
            if (name.isEmpty() ? field.focused : field.name == name) {
                found = field;
                return true;
            }
        }
        return false;
    });
    if (!there) {
        throw std::runtime_error("no such text field; the program shows\n" +
                                 tree(program.pid()).toStdString());
    }
    return found;
}

ProbedText AtSpiProbe::read(const ProbedField& field) {
    const QJsonObject read = ask(u"read"_s, field).toObject();
    ProbedText result;
    result.text = read.value(u"text"_s).toString();
    result.caret = utf16Offset(result.text, read.value(u"caret"_s).toInteger());
    for (const QJsonValue selection : read.value(u"selections"_s).toArray()) {
        result.selections.append({utf16Offset(result.text, selection.toArray().at(0).toInteger()),
                                  utf16Offset(result.text, selection.toArray().at(1).toInteger())});
    }
    result.focused = read.value(u"focused"_s).toBool();
    return result;
}

QString AtSpiProbe::waitFor(const ProbedField& field, const QString& how, const QString& text,
                            double seconds) {
    return ask(u"wait_text"_s, field, {{how, text}, {u"seconds"_s, seconds}}, seconds + 10)
        .toObject()
        .value(u"text"_s)
        .toString();
}

QString AtSpiProbe::waitForText(const ProbedField& field, const QString& expected, double seconds) {
    return waitFor(field, u"equals"_s, expected, seconds);
}

QString AtSpiProbe::waitForTextContaining(const ProbedField& field, const QString& part, double seconds) {
    return waitFor(field, u"contains"_s, part, seconds);
}

void AtSpiProbe::grabFocus(const ProbedField& field) {
    demand(u"grab_focus"_s, field);
}

void AtSpiProbe::setText(const ProbedField& field, const QString& text) {
    demand(u"set_text"_s, field, {{u"text"_s, text}});
}

void AtSpiProbe::setCaret(const ProbedField& field, qsizetype offset) {
    demand(u"set_caret"_s, field, {{u"offset"_s, codePoints(text(field), offset)}});
}

QJsonObject AtSpiProbe::range(const ProbedField& field, qsizetype start, qsizetype end) {
    const QString content = text(field);
    return {{u"start"_s, codePoints(content, start)}, {u"end"_s, codePoints(content, end)}};
}

void AtSpiProbe::select(const ProbedField& field, qsizetype start, qsizetype end) {
    demand(u"select"_s, field, range(field, start, end));
}

QRect AtSpiProbe::extents(const ProbedField& field) {
    return rectangle(ask(u"extents"_s, field));
}

QRect AtSpiProbe::rangeExtents(const ProbedField& field, qsizetype start, qsizetype end) {
    return rectangle(ask(u"range_extents"_s, field, range(field, start, end)));
}

QString AtSpiProbe::tree(pid_t process) {
    QStringList lines;
    for (const QJsonValue value : ask(u"tree"_s, {{u"pid"_s, process}}, 60).toArray()) {
        lines.append(value.toArray().at(0).toString() + u": "_s + value.toArray().at(1).toString());
    }
    return lines.join(u'\n');
}

}  // namespace veltrin
