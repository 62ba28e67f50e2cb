#include "Data/ExportImportManager.h"

#include "AI/AgentTeamManager.h"
#include "Data/DataStore.h"
#include "Foundation/Date.h"

#include <QFile>

namespace veltrin {

/// One kind of the user's things: its row on the page, and its member of the summary file when it has one.
struct ExportImportManager::Section {
    QString label;
    std::optional<QString> summaryKey;
    std::size_t (*count)(const ExportImportManager&);
};

ExportImportManager::ExportImportManager(const RunLoop& runLoop, DataStore& data,
                                         const AgentTeamManager& agents)
    : runLoop_(runLoop), data_(data), agents_(agents) {
}

const std::vector<ExportImportManager::Section>& ExportImportManager::sections() {
    using Manager = const ExportImportManager&;
    static const std::vector<Section> sections{
        {QStringLiteral("历史记录"), QStringLiteral("history"),
         [](Manager its) { return its.data_.history.entries().size(); }},
        {QStringLiteral("提示词资产"), QStringLiteral("prompts"),
         [](Manager its) { return its.data_.prompts.prompts().size(); }},
        {QStringLiteral("词典词条"), QStringLiteral("dictionary"),
         [](Manager its) { return its.data_.dictionary.terms().size(); }},
        {QStringLiteral("粘贴板记录"), std::nullopt,
         [](Manager its) { return its.data_.clipboard.entries().size(); }},
        {QStringLiteral("语音记录"), std::nullopt,
         [](Manager its) { return its.data_.voiceRecords.records().size(); }},
        {QStringLiteral("Agent 数量"), std::nullopt, [](Manager its) { return its.agents_.agents().size(); }},
    };
    return sections;
}

std::vector<ExportImportManager::Row> ExportImportManager::overview() const {
    std::vector<Row> rows;
    for (const Section& section : sections())
        rows.push_back({section.label, static_cast<qsizetype>(section.count(*this))});
    return rows;
}

Json ExportImportManager::summary(const QString& moment) const {
    Json summary;
    summary.set(QStringLiteral("exportedAt"), moment);
    summary.set(QStringLiteral("version"), QStringLiteral("1.0.10"));
    for (const Section& section : sections()) {
        if (section.summaryKey)
            summary.set(*section.summaryKey, static_cast<std::int64_t>(section.count(*this)));
    }
    return summary;
}

void ExportImportManager::exportAllData(const SavePanel& savePanel) const {
    const auto now = [this] { return iso8601Text(Date{runLoop_.wallNow()}).value_or(QString()); };
    const auto path = savePanel(QStringLiteral("导出数据"),
                                QStringLiteral("Veltrin_Data_") + now() + QStringLiteral(".json"));
    if (!path) return;
    QFile file(*path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) file.write(summary(now()).prettyPrinted());
}

QString ExportImportManager::clearHistory() {
    data_.history.clearEntries();
    return QStringLiteral("历史记录已清除");
}

QString ExportImportManager::clearClipboard() {
    data_.clipboard.clearEntries();
    return QStringLiteral("粘贴板记录已清除");
}

QString ExportImportManager::clearCaches() const {
    return QStringLiteral("缓存已清除");
}

}  // namespace veltrin
