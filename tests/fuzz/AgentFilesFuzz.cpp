#include "AI/AgentCard.h"
#include "AI/ShortcutAssignments.h"
#include "fuzz/FuzzInput.h"

using namespace veltrin;

namespace {

constexpr Date now{1795255200};
constexpr RecordReading reading{DateStrategy::referenceDate, now};

/// What is written of agents reads as the same agents, but for dates too far away for a fraction of a second.
void checkComesBack(const std::vector<AgentProfile>& agents) {
    const auto written = writeRecords(agents, DateStrategy::referenceDate);
    if (!written) return;  // a date that no number of the file holds
    const auto again = readRecords<AgentProfile>(*written, reading);
    fuzz::check(again && again->size() == agents.size(), "written agents can be read");
    fuzz::check(writeRecords(*again, DateStrategy::referenceDate).has_value(), "and written again");
    for (std::size_t i = 0; i < agents.size(); ++i) {
        AgentProfile back = (*again)[i];
        back.createdAt = agents[i].createdAt;
        back.updatedAt = agents[i].updatedAt;
        fuzz::check(back == agents[i], "an agent comes back as it was");
    }
}

void checkAssignments(const QByteArray& bytes) {
    ShortcutAssignments assignments = ShortcutAssignments::decoded(bytes);
    fuzz::check(ShortcutAssignments::decoded(assignments.encoded()) == assignments, "a table comes back");
    const QString fallback = QStringLiteral("F");
    const auto lives = [&fallback](const QString& id) { return id == fallback; };
    assignments.repair(fallback, lives);
    for (const ShortcutSlots::Count& shortcut : ShortcutSlots::counts)
        fuzz::check(
            assignments.ids(QString::fromUtf16(shortcut.key)) == QStringList(shortcut.slots, fallback),
            "every slot holds a living agent");
    fuzz::check(!assignments.repair(fallback, lives), "a repaired table needs no repair");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes = fuzz::bytes(data, size);
    if (const auto agents = readRecords<AgentProfile>(bytes, reading)) checkComesBack(*agents);
    if (const auto card = AgentCard::decoded(bytes, now)) {
        checkComesBack({card->agent});
        if (const auto again = AgentCard::encoded(card->agent, now))
            fuzz::check(AgentCard::decoded(*again, now).has_value(), "a written card can be read");
    }
    checkAssignments(bytes);
    return 0;
}
