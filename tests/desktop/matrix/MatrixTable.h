#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <vector>

namespace veltrin {

/// What is expected of one field of one application, by cell.
struct MatrixRow {
    QString application;  ///< as FieldApplication names it
    QString field;        ///< as the application's driver names it
    QString title;        ///< for people
    QHash<QString, QString> outcomes;

    QString key() const { return application + QStringLiteral("/") + field; }
};

/// The table of expectations in `expected.json`, and the document made of it. What a run has found takes the
/// place of what was expected, so that the document can't tell anything that is not so.
class MatrixTable {
public:
    /// Throws std::runtime_error when the file is not there or not in order.
    static MatrixTable& shared();

    const std::vector<MatrixRow>& rows() const { return rows_; }
    QString expected(const MatrixRow& row, const QString& cell) const { return row.outcomes.value(cell); }
    void found(const MatrixRow& row, const QString& cell, const QString& outcome);

    /// docs/applications.md as it should be.
    QString document() const;
    /// The same as it is.
    static QString committedDocument();
    /// Writes both files anew from what was found.
    void record() const;
    /// VELTRIN_RECORD_MATRIX is set: outcomes are taken down, not compared.
    static bool isRecording();

private:
    MatrixTable();
    QString outcome(const MatrixRow& row, const QString& cell) const;

    std::vector<MatrixRow> rows_;
    QHash<QString, QString> found_;
};

/// The cells in the order of the document, with their titles there.
struct MatrixColumn {
    QString cell;
    QString title;
};
const std::vector<MatrixColumn>& matrixColumns();

}  // namespace veltrin
