#pragma once

#include "support/desktop/ClipboardProbe.h"

#include <QString>

#include <optional>
#include <random>
#include <stdexcept>

namespace veltrin {

/// What must not be: something of the user's lost, changed or misread, a key pressed where none may be.
class Broken : public std::runtime_error {
public:
    explicit Broken(const QString& what) : std::runtime_error(what.toStdString()) {}
};

/// The same choices for the same seed.
class Chance {
public:
    explicit Chance(quint64 seed) : random_(seed) {}
    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }
    bool percent(int of100) { return below(100) < of100; }

    struct Words {
        bool mayBeHard = true;  ///< characters of several code points too
        bool mayBreak = true;   ///< lines too
    };
    QString words(int count, Words kind);

private:
    std::mt19937_64 random_;
};

/// What the user has on the clipboard.
struct UsersContent {
    ClipboardSnapshot offered;  ///< empty for an empty clipboard
    std::optional<QString> text;
    bool isSecret = false;
    bool isSilent = false;  ///< its owner never answers

    QString told() const;
};

/// Nothing, text, a long text, a password, a picture, or many kinds at once, some of them large.
UsersContent randomContent(Chance& chance);
/// The same, or files, or an owner that never answers.
UsersContent randomContentOfAnyOwner(Chance& chance);

/// For a report: short, on one line.
QString quoted(const QString& text);

}  // namespace veltrin
