#include "desktop/matrix/MatrixTable.h"

#include "Foundation/Json.h"

#include <QFile>

#include <stdexcept>
#include <string>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr char tablePath[] = VELTRIN_SOURCE_DIR "/tests/desktop/matrix/expected.json";
constexpr char documentPath[] = VELTRIN_SOURCE_DIR "/docs/applications.md";
constexpr char introductionPath[] = VELTRIN_SOURCE_DIR "/tests/desktop/matrix/introduction.md";

QByteArray fileContent(const char* path) {
    QFile file(QString::fromUtf8(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const char* path, const QByteArray& content) {
    QFile file(QString::fromUtf8(path));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        throw std::runtime_error(std::string("cannot write ") + path);
}

QString text(const Json& object, const char16_t* key) {
    const Json* found = object.find(QStringView(key));
    if (found == nullptr) throw std::runtime_error("the table of applications is not in order");
    return found->toString().value_or(QString());
}

struct Section {
    QString title;
    QStringList cells;
};

const std::vector<Section>& sections() {
    static const std::vector<Section> all = {
        {u"Reading and locating"_s,
         {u"find"_s, u"readSelection"_s, u"readCaret"_s, u"readLines"_s, u"readEmpty"_s, u"anchorSelection"_s,
          u"anchorCaret"_s, u"anchorEnd"_s, u"anchorLine"_s}},
        {u"Writing by paste"_s, {u"pasteSelection"_s, u"pasteCaret"_s, u"pasteAll"_s}},
        {u"Writing by accessibility, where a paste is refused"_s,
         {u"directSelection"_s, u"directCaret"_s, u"directAll"_s}},
        {u"By copy and paste, where accessibility gives nothing"_s, {u"copyRead"_s, u"copyWrite"_s}},
    };
    return all;
}

}  // namespace

const std::vector<MatrixColumn>& matrixColumns() {
    static const std::vector<MatrixColumn> all = {
        {u"find"_s, u"focused element"_s},
        {u"readSelection"_s, u"read a selection"_s},
        {u"readCaret"_s, u"read at a caret"_s},
        {u"readLines"_s, u"read several lines"_s},
        {u"readEmpty"_s, u"read an empty field"_s},
        {u"anchorSelection"_s, u"anchor of a selection"_s},
        {u"anchorCaret"_s, u"anchor of a caret"_s},
        {u"anchorEnd"_s, u"anchor of a caret at the end"_s},
        {u"anchorLine"_s, u"anchor on a new line"_s},
        {u"pasteSelection"_s, u"over a selection"_s},
        {u"pasteCaret"_s, u"at the caret"_s},
        {u"pasteAll"_s, u"the whole field"_s},
        {u"directSelection"_s, u"over a selection"_s},
        {u"directCaret"_s, u"at the caret"_s},
        {u"directAll"_s, u"the whole field"_s},
        {u"copyRead"_s, u"read the whole field"_s},
        {u"copyWrite"_s, u"write the whole field"_s},
    };
    return all;
}

MatrixTable& MatrixTable::shared() {
    static MatrixTable table;
    return table;
}

MatrixTable::MatrixTable() {
    const auto json = Json::tryParse(fileContent(tablePath));
    const Json::Array* rows = json ? json->array() : nullptr;
    if (rows == nullptr) throw std::runtime_error("no table of applications");
    for (const Json& entry : *rows) {
        MatrixRow row{text(entry, u"application"), text(entry, u"field"), text(entry, u"title"), {}};
        const Json* outcomes = entry.find(u"outcomes");
        for (const auto& [cell, outcome] : *outcomes->object())
            row.outcomes.insert(cell, outcome.toString().value_or(QString()));
        rows_.push_back(std::move(row));
    }
}

bool MatrixTable::isRecording() {
    return qEnvironmentVariableIsSet("VELTRIN_RECORD_MATRIX");
}

void MatrixTable::found(const MatrixRow& row, const QString& cell, const QString& outcome) {
    found_.insert(row.key() + u"/"_s + cell, outcome);
}

QString MatrixTable::outcome(const MatrixRow& row, const QString& cell) const {
    return found_.value(row.key() + u"/"_s + cell, row.outcomes.value(cell));
}

QString MatrixTable::document() const {
    QString page = QString::fromUtf8(fileContent(introductionPath));
    for (const Section& section : sections()) {
        page += u"\n## "_s + section.title + u"\n\n| application |"_s;
        QString rule = u"|---|"_s;
        for (const QString& cell : section.cells) {
            for (const MatrixColumn& column : matrixColumns()) {
                if (column.cell == cell) page += u" "_s + column.title + u" |"_s;
            }
            rule += u"---|"_s;
        }
        page += u"\n"_s + rule + u"\n"_s;
        for (const MatrixRow& row : rows_) {
            page += u"| "_s + row.title + u" |"_s;
            for (const QString& cell : section.cells)
                page += u" "_s + outcome(row, cell) + u" |"_s;
            page += u"\n"_s;
        }
    }
    return page;
}

QString MatrixTable::committedDocument() {
    return QString::fromUtf8(fileContent(documentPath));
}

void MatrixTable::record() const {
    Json::Array table;
    for (const MatrixRow& row : rows_) {
        Json::Object outcomes;
        for (const MatrixColumn& column : matrixColumns())
            outcomes.emplace_back(column.cell, outcome(row, column.cell));
        table.emplace_back(Json::Object{{u"application"_s, row.application},
                                        {u"field"_s, row.field},
                                        {u"title"_s, row.title},
                                        {u"outcomes"_s, Json(std::move(outcomes))}});
    }
    writeFile(tablePath, Json(std::move(table)).serialized(2) + '\n');
    writeFile(documentPath, document().toUtf8());
}

}  // namespace veltrin
