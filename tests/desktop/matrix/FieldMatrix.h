#pragma once

#include "desktop/matrix/MatrixTable.h"
#include "support/desktop/ClipboardProbe.h"
#include "support/desktop/Typist.h"
#include "support/fields/FieldApplications.h"

#include <QRectF>

#include <gtest/gtest.h>

#include <memory>

namespace veltrin {

/// The desktop and the application that the cells share; an application is started for its first cell and
/// ended when another one's turn comes.
class MatrixWorld {
public:
    /// Alive until `end`.
    static MatrixWorld& shared();
    static void end();

    MatrixWorld();
    FieldApplication& application(const QString& name);
    RealDesktop& desktop() { return RealDesktop::shared(); }
    XDesktop& x() { return desktop().x(); }

    ExternalTextDesktop text;
    AtSpiProbe probe;
    ClipboardProbe clipboard;
    Typist typist;

private:
    std::unique_ptr<FieldApplication> application_;
};

/// One cell: one thing done in one field, with an outcome in a word or two.
class FieldMatrix : public testing::Test {
public:
    using Run = QString (FieldMatrix::*)();
    struct Cell {
        const char* name;
        Run run;
    };
    static const std::vector<Cell>& cells();

    FieldMatrix(const MatrixRow& row, const Cell& cell) : row_(row), cell_(cell) {}

protected:
    void SetUp() override;
    void TearDown() override;
    void TestBody() override;

private:
    enum class Road { paste, direct };
    enum class Place { selection, caret, all };
    enum class Beside { itself, end, nextLine };  ///< where an anchor stands, of a passage

    QString find();
    QString readSelection();
    QString readCaret();
    QString readLines();
    QString readEmpty();
    QString anchorSelection();
    QString anchorCaret();
    QString anchorEnd();
    QString anchorLine();
    QString pasteSelection() { return write(Road::paste, Place::selection); }
    QString pasteCaret() { return write(Road::paste, Place::caret); }
    QString pasteAll() { return write(Road::paste, Place::all); }
    QString directSelection() { return write(Road::direct, Place::selection); }
    QString directCaret() { return write(Road::direct, Place::caret); }
    QString directAll() { return write(Road::direct, Place::all); }
    QString copyRead();
    QString copyWrite();

    /// What the program would read by copying, with accessibility giving it the element at most.
    ExternalTextReadResult readByCopy();
    QString readPassage(const FieldState& field);
    QString readTerminalSelection();
    QString write(Road road, Place place);
    QString undone(const FieldState& before);
    QString anchor(const FieldState& field, const FieldState& measured, Beside beside);
    void set(const FieldState& state);
    double readingPatience() const;
    double undoPatience() const;
    bool isTerminal() const;
    bool isOneLine() const;
    /// Where the passage is on the screen, by the pixels that selecting it changes; empty when none do.
    QRectF selectionOnScreen(qsizetype start, qsizetype end);
    QRectF elementOnScreen();
    void expectClipboardBack();

    MatrixWorld& world() { return MatrixWorld::shared(); }
    ExternalTextDesktop& text() { return world().text; }
    FieldApplication& application() { return world().application(row_.application); }
    FieldDriver& field() { return application().field(row_.field); }

    const MatrixRow& row_;
    const Cell& cell_;
};

}  // namespace veltrin
