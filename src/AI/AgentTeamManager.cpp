#include "AI/AgentTeamManager.h"

#include "AI/AgentCard.h"
#include "AI/AgentGeneration.h"
#include "AI/AgentRuntimeContract.h"
#include "Platform/Preferences.h"
#include "Platform/RunLoop.h"

#include <algorithm>
#include <limits>

namespace veltrin {
namespace {

const QString fileName = QStringLiteral("agents.json");
const QString assignmentsKey = QStringLiteral("shortcut_agent_assignments");

// Unlike the other stores, this file has its dates as numbers.
constexpr JSONStoreOptions fileOptions{DateStrategy::referenceDate, DateStrategy::referenceDate};

QString contractPrompt(const AgentProfile& agent) {
    return AgentRuntimeContract::build(agent.name, agent.description, agent.systemPrompt, agent.skills,
                                       agent.outputStyle, agent.category, agent.tags)
        .promptBlock();
}

template <typename Predicate>
std::vector<AgentProfile> those(const std::vector<AgentProfile>& agents, Predicate predicate) {
    std::vector<AgentProfile> chosen;
    std::copy_if(agents.begin(), agents.end(), std::back_inserter(chosen), predicate);
    return chosen;
}

/// The first agent that fits; null when none does.
template <typename Agents, typename Predicate>
auto first(Agents& agents, Predicate predicate) {
    const auto found = std::find_if(agents.begin(), agents.end(), predicate);
    return found == agents.end() ? nullptr : &*found;
}

bool isActive(const AgentProfile& agent) {
    return agent.isActive;
}

bool isBuiltin(const AgentProfile& agent) {
    return agent.isBuiltin;
}

}  // namespace

AgentTeamManager::AgentTeamManager(const QString& directory, Preferences& preferences, RunLoop& runLoop)
    : preferences_(preferences), runLoop_(runLoop), file_(directory, fileName, fileOptions) {
    agents_ = file_.load(now());
    if (agents_.empty()) seedBuiltins();
    loadAssignments();
}

void AgentTeamManager::seedBuiltins() {
    agents_ = AgentContents::builtins(now());
    persist();
}

void AgentTeamManager::persist() {
    file_.persist(agents_);
}

void AgentTeamManager::loadAssignments() {
    if (const auto stored = preferences_.data(assignmentsKey))
        assignments_ = ShortcutAssignments::decoded(*stored);
    ensureDefaultShortcutAssignments();
}

void AgentTeamManager::persistAssignments() {
    preferences_.set(assignmentsKey, assignments_.encoded());
}

const AgentProfile* AgentTeamManager::agent(const QUuid& id) const {
    return first(agents_, [&id](const AgentProfile& each) { return each.id == id; });
}

const AgentProfile* AgentTeamManager::agentNamed(const QString& name) const {
    return first(agents_, [&name](const AgentProfile& each) { return each.name == name; });
}

const AgentProfile* AgentTeamManager::agentOfText(const QString& idText) const {
    const auto id = uuidFrom(idText);
    // The text has to be the written form: one in lower case names nobody.
    return id && uuidText(*id) == idText ? agent(*id) : nullptr;
}

std::vector<AgentProfile> AgentTeamManager::activeAgents() const {
    return those(agents_, isActive);
}

std::vector<AgentProfile> AgentTeamManager::builtinAgents() const {
    return those(agents_, isBuiltin);
}

std::optional<AgentProfile> AgentTeamManager::primaryAgent() const {
    const AgentProfile* primary = first(agents_, isActive);
    return primary == nullptr ? std::nullopt : std::optional(*primary);
}

/// Who takes the slots that have nobody.
const AgentProfile* AgentTeamManager::fallbackAgent() const {
    if (const AgentProfile* active = first(agents_, isActive)) return active;
    if (const AgentProfile* builtin = first(agents_, isBuiltin)) return builtin;
    return agents_.empty() ? nullptr : &agents_.front();
}

void AgentTeamManager::ensureDefaultShortcutAssignments() {
    const AgentProfile* fallback = fallbackAgent();
    if (fallback == nullptr) return;
    const bool repaired = assignments_.repair(
        uuidText(fallback->id), [this](const QString& idText) { return agentOfText(idText) != nullptr; });
    if (!repaired) return;
    persistAssignments();
    changed.notify();
}

std::vector<std::optional<AgentProfile>> AgentTeamManager::assignedAgentSlots(const QString& key) {
    ensureDefaultShortcutAssignments();
    const QStringList ids = assignments_.ids(key);
    std::vector<std::optional<AgentProfile>> slots;
    for (int slot = 0; slot < ShortcutSlots::count(key); ++slot) {
        const AgentProfile* agent = agentOfText(ids.value(slot));
        slots.push_back(agent == nullptr ? std::nullopt : std::optional(*agent));
    }
    return slots;
}

std::optional<AgentProfile> AgentTeamManager::assignedAgent(const QString& key, int slot) {
    const auto slots = assignedAgentSlots(key);
    if (slot < 0 || slot >= static_cast<int>(slots.size())) return std::nullopt;
    return slots[static_cast<std::size_t>(slot)];
}

std::vector<AgentProfile> AgentTeamManager::assignedAgents(const QString& key) const {
    std::vector<AgentProfile> agents;
    for (const QString& idText : assignments_.ids(key)) {
        if (const AgentProfile* agent = agentOfText(idText)) agents.push_back(*agent);
    }
    return agents;
}

void AgentTeamManager::assignAgent(const QUuid& id, const QString& key, int slot) {
    if (!assignments_.assign(uuidText(id), key, slot)) return;
    persistAssignments();
    changed.notify();
}

QString AgentTeamManager::runtimeContractPromptFor(const QString& key, std::optional<int> slot) {
    if (slot) {
        if (const auto agent = assignedAgent(key, *slot)) return contractPrompt(*agent);
    }
    std::vector<AgentProfile> agents = assignedAgents(key);
    if (agents.empty()) agents = activeAgents();
    QStringList blocks;
    // An agent that serves several slots stands here several times: meant so.
    for (const AgentProfile& agent : agents)
        blocks << contractPrompt(agent);
    return blocks.join(QStringLiteral("\n\n"));
}

void AgentTeamManager::activate(const QUuid& id) {
    setActive(id, [](bool) { return true; });
}

void AgentTeamManager::toggle(const QUuid& id) {
    setActive(id, [](bool active) { return !active; });
}

template <typename Change>
void AgentTeamManager::setActive(const QUuid& id, Change change) {
    AgentProfile* agent = found(id);
    if (agent == nullptr) return;
    agent->isActive = change(agent->isActive);
    agent->updatedAt = now();
    persist();
    changed.notify();
}

void AgentTeamManager::update(const AgentProfile& agent) {
    AgentProfile* stored = found(agent.id);
    if (stored == nullptr) return;
    *stored = agent;
    stored->updatedAt = now();
    // A file may hold any number.
    if (stored->version < std::numeric_limits<std::int64_t>::max()) ++stored->version;
    persist();
    changed.notify();
}

void AgentTeamManager::remove(const QUuid& id) {
    const QUuid gone = id;  // which may be that of an agent in the list
    std::erase_if(agents_, [&gone](const AgentProfile& each) { return each.id == gone; });
    assignments_.remove(uuidText(gone));
    persist();
    changed.notify();
    ensureDefaultShortcutAssignments();
}

void AgentTeamManager::duplicate(const AgentProfile& agent) {
    AgentProfile copy = asNew(agent);
    copy.name += QStringLiteral(" (副本)");
    copy.isActive = false;
    append(std::move(copy));
    persist();
}

/// A copy that is the user's own and has no past.
AgentProfile AgentTeamManager::asNew(const AgentProfile& agent) const {
    AgentProfile copy = agent;
    copy.id = QUuid::createUuid();
    copy.isBuiltin = false;
    copy.createdAt = copy.updatedAt = now();
    copy.version = 1;
    return copy;
}

void AgentTeamManager::append(AgentProfile agent) {
    agents_.push_back(std::move(agent));
    changed.notify();
}

void AgentTeamManager::insertFirst(AgentProfile agent) {
    agents_.insert(agents_.begin(), std::move(agent));
    changed.notify();
}

std::optional<QByteArray> AgentTeamManager::exportAgentCard(const AgentProfile& agent) const {
    return AgentCard::encoded(agent, now());
}

std::optional<AgentProfile> AgentTeamManager::importAgentCard(const QByteArray& utf8) {
    const auto card = AgentCard::decoded(utf8, now());
    if (!card) return std::nullopt;
    // The stored agent and the returned one have identifiers of their own: meant so.
    AgentProfile returned = asNew(card->agent);
    insertFirst(asNew(returned));
    persist();
    return returned;
}

QCoro::Task<AgentProfile> AgentTeamManager::generateAgent(const OllamaClient& client,
                                                          const QString& description) const {
    return AgentGeneration::generate(client, &runLoop_, description);
}

QCoro::Task<AgentProfile> AgentTeamManager::optimizeAgent(const OllamaClient& client,
                                                          const AgentProfile& agent) const {
    return AgentGeneration::optimize(client, &runLoop_, agent);
}

AgentProfile* AgentTeamManager::found(const QUuid& id) {
    return first(agents_, [&id](const AgentProfile& each) { return each.id == id; });
}

Date AgentTeamManager::now() const {
    return Date{runLoop_.wallNow()};
}

}  // namespace veltrin
