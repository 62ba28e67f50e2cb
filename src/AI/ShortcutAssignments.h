#pragma once

#include <QByteArray>
#include <QStringList>

#include <functional>
#include <map>

namespace veltrin {

/// The shortcuts that agents serve, and how many slots each has.
namespace ShortcutSlots {
struct Count {
    const char16_t* key;
    int slots;
};
inline constexpr Count counts[] = {
    {u"optimize", 4}, {u"translation", 1}, {u"smartSelect", 2}, {u"drag", 4}, {u"voice", 1},
};
/// The number of slots of a shortcut; a key that is not listed counts as 1.
int count(const QString& key);
}  // namespace ShortcutSlots

/// Which agent serves which slot of which shortcut: a list of agent identifiers for each shortcut key, whose
/// index is the slot. Keys that are no shortcut of this version are kept as they are. Plain value.
class ShortcutAssignments {
public:
    /// The stored form: a JSON object of arrays of strings. Bytes that are anything else read as empty.
    static ShortcutAssignments decoded(const QByteArray& utf8);
    QByteArray encoded() const;

    /// The identifiers under a key; a slot that was never filled may hold an empty one.
    QStringList ids(const QString& key) const;

    /// Puts an agent into a slot; slots before it that were missing become empty. False, with nothing
    /// changed, for a slot that the shortcut does not have.
    bool assign(const QString& id, const QString& key, int slot);
    /// Takes an agent out of every shortcut; the slots after it move up.
    void remove(const QString& id);
    /// Gives each listed shortcut exactly its number of slots, and `fallback` to each slot that is empty or
    /// whose agent does not exist. True when anything changed.
    bool repair(const QString& fallback, const std::function<bool(const QString&)>& exists);

    friend bool operator==(const ShortcutAssignments& a, const ShortcutAssignments& b) = default;

private:
    std::map<QString, QStringList> ids_;
};

}  // namespace veltrin
