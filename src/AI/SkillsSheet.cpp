#include "AI/SkillsSheet.h"

#include "Foundation/Characters.h"
#include "Foundation/Files.h"
#include "Foundation/Text.h"
#include "Platform/RunLoop.h"

#include <QDir>
#include <QFileInfo>
#include <QStringDecoder>

#include <algorithm>

namespace veltrin {
namespace {

constexpr qsizetype descriptionCharacters = 80;
/// No skill is as large as this; a file that is larger counts as unreadable.
constexpr qint64 maximumSize = 4LL * 1024 * 1024;

const QString localSource = QStringLiteral("~/.claude/skills");
const QString importedSource = QStringLiteral("导入");

QString descriptionOf(const QString& text) {
    QString unbroken = text;
    unbroken.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    qsizetype start = 0;
    for (qsizetype i = 0; i <= unbroken.size(); ++i) {
        if (i < unbroken.size() && !Text::isLineBreak(unbroken[i])) continue;
        const QStringView line = QStringView(unbroken).mid(start, i - start);
        start = i + 1;
        if (!Text::isBlank(line) && !line.startsWith(u'#'))
            return Characters::prefix(Text::trimmed(line), descriptionCharacters);
    }
    return QStringLiteral("Skills 文件");
}

QStringList markdownFiles(const QString& directory) {
    QStringList paths;
    const auto entries = QDir(directory).entryInfoList(QDir::Files | QDir::Hidden, QDir::Name);
    for (const QFileInfo& entry : entries) {
        // A name that only begins with a dot has no extension.
        if (entry.suffix() == QStringLiteral("md") && !entry.completeBaseName().isEmpty())
            paths << entry.filePath();
    }
    return paths;
}

std::vector<SkillsSheet::SkillItem> skillsOf(const QStringList& paths, const QString& source) {
    std::vector<SkillsSheet::SkillItem> skills;
    for (const QString& path : paths) {
        const Files::Contents file = Files::read(path, maximumSize);
        if (file.state != Files::Contents::State::read) continue;
        auto skill = SkillsSheet::skill(QFileInfo(path).fileName(), file.bytes, source);
        if (skill) skills.push_back(std::move(*skill));
    }
    return skills;
}

}  // namespace

std::optional<SkillsSheet::SkillItem> SkillsSheet::skill(const QString& fileName, const QByteArray& utf8,
                                                         const QString& source) {
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(utf8);
    if (decoder.hasError()) return std::nullopt;
    SkillItem item;
    item.id = QFileInfo(fileName).completeBaseName();
    item.name = item.id;
    item.description = descriptionOf(text);
    item.source = source;
    item.systemPrompt = text;
    return item;
}

void SkillsSheet::scanLocalSkills() {
    if (isScanning_) return;
    isScanning_ = true;
    changed.notify();
    read([directory = skillsDirectory_] { return markdownFiles(directory); }, localSource);
}

void SkillsSheet::importSkills(const QStringList& paths) {
    read([paths] { return paths; }, importedSource);
}

void SkillsSheet::read(std::function<QStringList()> paths, const QString& source) {
    background_([paths = std::move(paths), source, &runLoop = runLoop_,
                 done = lifetime_.bind([this, source](std::vector<SkillItem> items) {
                     take(std::move(items), source);
                 })]() mutable {
        auto items = skillsOf(paths(), source);
        // The sheet may be gone by then; `done` knows, but only on the main thread.
        runLoop.post(
            [items = std::move(items), done = std::move(done)]() mutable { done(std::move(items)); });
    });
}

void SkillsSheet::take(std::vector<SkillItem> items, const QString& source) {
    if (source == localSource) {
        isScanning_ = false;
        std::erase_if(items_, [](const SkillItem& item) { return item.source == localSource; });
        std::swap(items_, items);
    }
    // What was imported takes the place of a local skill of the same name.
    for (SkillItem& item : items) {
        const auto same = std::find_if(items_.begin(), items_.end(),
                                       [&item](const SkillItem& each) { return each.id == item.id; });
        if (same == items_.end()) {
            items_.push_back(std::move(item));
        } else {
            *same = std::move(item);
        }
    }
    changed.notify();
}

void SkillsSheet::toggle(const QString& id) {
    if (!selected_.remove(id)) selected_.insert(id);
    changed.notify();
}

qsizetype SkillsSheet::selectedCount() const {
    return std::count_if(items_.begin(), items_.end(),
                         [this](const SkillItem& item) { return isSelected(item.id); });
}

std::optional<AgentProfile> SkillsSheet::createFromSkills() const {
    QStringList names;
    QStringList blocks;
    for (const SkillItem& item : items_) {
        if (!isSelected(item.id)) continue;
        names << item.name;
        blocks << QStringLiteral("## ") + item.name + u'\n' + item.systemPrompt;
    }
    if (names.isEmpty()) return std::nullopt;
    AgentProfile agent = AgentProfile::made(Date{runLoop_.wallNow()});
    agent.name = names.size() == 1 ? names.front() : QStringLiteral("Skills Agent");
    agent.systemPrompt = blocks.join(QStringLiteral("\n\n"));
    agent.description = QStringLiteral("从 %1 个 Skills 创建").arg(names.size());
    agent.icon = QStringLiteral("sparkles.rectangle.stack");
    agent.colorHex = QStringLiteral("#DCCBFA");
    agent.skills = names;
    return agent;
}

}  // namespace veltrin
