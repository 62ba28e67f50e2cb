#include "AI/AgentStudio.h"

#include "AI/AgentTeamManager.h"
#include "Foundation/Error.h"
#include "Foundation/Files.h"
#include "Foundation/Text.h"

#include <QFile>
#include <QFileInfo>

namespace veltrin {
namespace {

/// Far above any card; what is larger is no card.
constexpr qint64 maximumCardSize = 16LL * 1024 * 1024;

QString quoted(const QString& name) {
    return QStringLiteral("「") + name + QStringLiteral("」");
}

/// Written in place, so that a file that cannot be replaced, on a stick or a share, can be written too.
bool writeInPlace(const QString& path, const QByteArray& bytes) {
    const QFileInfo info(path);
    if (info.exists() && !info.isFile()) return false;  // a pipe would be waited for
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size() &&
           file.flush();
}

}  // namespace

void AgentStudio::create(const AgentProfile& agent) {
    add(agent);
    show(quoted(agent.name) + QStringLiteral("已创建"), QStringLiteral("sparkles"));
}

void AgentStudio::generateForReplace(const QString& description) {
    if (isGenerating_ || Text::isBlank(description)) return;
    isGenerating_ = true;
    generatedAgent_.reset();
    changed.notify();
    generating(this, description);
}

QCoro::Task<void> AgentStudio::generating(AgentStudio* studio, QString description) {
    const Lifetime::Token token = studio->lifetime_.token();
    std::optional<AgentProfile> agent;
    QString failure;
    try {
        auto task = studio->manager_.generateAgent(studio->client_, description);
        agent = co_await task;
    } catch (const std::exception& error) {
        failure = QStringLiteral("生成失败: ") + describe(error);
    }
    if (!token.alive()) co_return;
    studio->isGenerating_ = false;
    studio->generatedAgent_ = std::move(agent);
    studio->changed.notify();
    if (!failure.isEmpty() && token.alive()) studio->show(failure);
}

void AgentStudio::replace(const QString& key, int slot, const QString& slotWord) {
    if (!generatedAgent_) return;
    const AgentProfile agent = *generatedAgent_;
    generatedAgent_.reset();
    add(agent);
    manager_.assignAgent(agent.id, key, slot);
    changed.notify();
    show(quoted(agent.name) + QStringLiteral("已创建并分配到") + slotWord);
}

void AgentStudio::optimize(const QUuid& id) {
    const AgentProfile* agent = manager_.agent(id);
    if (isOptimizing_ || agent == nullptr) return;
    isOptimizing_ = true;
    changed.notify();
    optimizing(this, *agent);
}

QCoro::Task<void> AgentStudio::optimizing(AgentStudio* studio, AgentProfile agent) {
    const Lifetime::Token token = studio->lifetime_.token();
    QString message = QStringLiteral("优化完成");
    std::optional<AgentProfile> improved;
    try {
        auto task = studio->manager_.optimizeAgent(studio->client_, agent);
        improved = co_await task;
    } catch (const std::exception& error) {
        message = QStringLiteral("优化失败: ") + describe(error);
    }
    if (!token.alive()) co_return;
    studio->isOptimizing_ = false;
    if (improved) studio->takeImprovement(agent, *improved);
    studio->changed.notify();
    if (token.alive()) studio->show(message);
}

/// An answer without a prompt counts as an update too: meant so.
void AgentStudio::takeImprovement(const AgentProfile& before, const AgentProfile& improved) {
    const AgentProfile* stored = manager_.agent(before.id);
    if (stored == nullptr) return;
    AgentProfile agent = *stored;
    if (improved.systemPrompt != before.systemPrompt) agent.systemPrompt = improved.systemPrompt;
    manager_.update(agent);
}

void AgentStudio::applyScene(const SceneConfig& scene) {
    show(manager_.applyScene(scene).summary());
}

void AgentStudio::handleImport(const QString& path) {
    const QFileInfo info(path);
    if (!info.isReadable()) return show(QStringLiteral("无法访问文件"));
    const Files::Contents file = Files::read(path, maximumCardSize);
    if (file.state != Files::Contents::State::read) {
        const bool large = info.isFile() && info.size() > maximumCardSize;
        return show(QStringLiteral("读取文件失败: ") +
                    (large ? QStringLiteral("文件过大") : QStringLiteral("不是可读取的文件")));
    }
    const auto agent = manager_.importAgentCard(file.bytes);
    if (!agent) return show(QStringLiteral("无法解析 Agent Card 文件"));
    show(QStringLiteral("已导入") + quoted(agent->name), QStringLiteral("square.and.arrow.down"));
}

void AgentStudio::exportAgent(const AgentProfile& agent, const QString& path) {
    const auto card = manager_.exportAgentCard(agent);
    if (!card) return show(QStringLiteral("导出失败"));
    show(writeInPlace(path, *card) ? QStringLiteral("已导出到 ") + path : QStringLiteral("保存失败"));
}

void AgentStudio::add(const AgentProfile& agent) {
    manager_.append(agent);
    manager_.persist();
}

void AgentStudio::show(const QString& text, const QString& icon) {
    toasts.notify({text, icon});
}

}  // namespace veltrin
