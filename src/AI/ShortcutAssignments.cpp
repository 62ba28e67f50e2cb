#include "AI/ShortcutAssignments.h"

#include "Foundation/Records.h"

namespace veltrin {
namespace {

using Codec = RecordCodec<std::map<QString, QStringList>>;

}  // namespace

int ShortcutSlots::count(const QString& key) {
    for (const Count& each : counts) {
        if (key == each.key) return each.slots;
    }
    return 1;
}

ShortcutAssignments ShortcutAssignments::decoded(const QByteArray& utf8) {
    ShortcutAssignments assignments;
    const auto json = Json::tryParse(utf8);
    if (auto ids = json ? Codec::read(*json, {}) : std::nullopt) assignments.ids_ = std::move(*ids);
    return assignments;
}

QByteArray ShortcutAssignments::encoded() const {
    return Codec::write(ids_, {}).value_or(Json()).serialized();
}

QStringList ShortcutAssignments::ids(const QString& key) const {
    const auto found = ids_.find(key);
    return found == ids_.end() ? QStringList() : found->second;
}

bool ShortcutAssignments::assign(const QString& id, const QString& key, int slot) {
    if (slot < 0 || slot >= ShortcutSlots::count(key)) return false;
    QStringList& ids = ids_[key];
    // Empty here and the fallback in `repair`: the next repair fills what is left empty.
    while (ids.size() <= slot)
        ids << QString();
    ids[slot] = id;
    if (ids.size() > ShortcutSlots::count(key)) ids = ids.first(ShortcutSlots::count(key));
    return true;
}

void ShortcutAssignments::remove(const QString& id) {
    for (auto& [key, ids] : ids_)
        ids.removeAll(id);
}

bool ShortcutAssignments::repair(const QString& fallback, const std::function<bool(const QString&)>& exists) {
    bool changed = false;
    for (const ShortcutSlots::Count& shortcut : ShortcutSlots::counts) {
        const QString key = QString::fromUtf16(shortcut.key);
        QStringList repaired = ids(key).mid(0, shortcut.slots);
        for (QString& id : repaired) {
            if (id.isEmpty() || !exists(id)) id = fallback;
        }
        while (repaired.size() < shortcut.slots)
            repaired << fallback;
        QStringList& stored = ids_[key];
        if (stored == repaired) continue;
        stored = std::move(repaired);
        changed = true;
    }
    return changed;
}

}  // namespace veltrin
