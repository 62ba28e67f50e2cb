#include "AI/AgentTeamManager.h"
#include "Data/DataStore.h"
#include "Data/ExportImportManager.h"
#include "StoresFixture.h"
#include "support/fake/FakeDesktop.h"

#include <QFileInfo>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

class ExportImportManagerTest : public StoresFixture {
protected:
    /// The stores of one launch.
    struct Launch {
        explicit Launch(ExportImportManagerTest& test)
            : data(test.folder(), test.loop, test.desktop.pasteboard, test.desktop.workspace,
                   test.desktop.preferences),
              agents(test.folder(), test.desktop.preferences, test.loop),
              manager(test.loop, data, agents) {}
        DataStore data;
        AgentTeamManager agents;
        ExportImportManager manager;
    };
    void empty(Launch& launch) {
        launch.data.dictionary.deleteTerm(launch.data.dictionary.terms()[0].id);
        while (!launch.data.prompts.prompts().empty())
            launch.data.prompts.deletePrompt(launch.data.prompts.prompts()[0].id);
    }

    FakeDesktop desktop;
};

TEST_F(ExportImportManagerTest, showsHowMuchThereIsOfEverything) {
    Launch launch(*this);
    launch.data.history.record(u"send"_s, u"x"_s, {});
    launch.data.clipboard.add(u"a"_s, {});
    launch.data.clipboard.add(u"b"_s, {});
    EXPECT_EQ(launch.manager.overview(), (std::vector<ExportImportManager::Row>{{u"历史记录"_s, 1},
                                                                                {u"提示词资产"_s, 10},
                                                                                {u"词典词条"_s, 1},
                                                                                {u"粘贴板记录"_s, 2},
                                                                                {u"语音记录"_s, 0},
                                                                                {u"Agent 数量"_s, 6}}));
}

TEST_F(ExportImportManagerTest, exportingEmptyStoresWritesZerosAndExactlyFiveKeys) {
    Launch launch(*this);
    empty(launch);
    QStringList asked;
    launch.manager.exportAllData([&](const QString& title, const QString& name) {
        asked = {title, name};
        return std::optional(path(name));
    });
    EXPECT_EQ(asked, (QStringList{u"导出数据"_s, u"Veltrin_Data_2026-11-21T10:00:00Z.json"_s}));
    EXPECT_EQ(bytesOf(asked[1]), QByteArray(R"({
  "exportedAt" : "2026-11-21T10:00:00Z",
  "version" : "1.0.10",
  "history" : 0,
  "prompts" : 0,
  "dictionary" : 0
})"));
}

TEST_F(ExportImportManagerTest, theMomentOfExportIsTheAnswers) {
    Launch launch(*this);
    launch.manager.exportAllData([&](const QString&, const QString&) {
        loop.advance(60);  // the user thinks
        return std::optional(path(u"out.json"_s));
    });
    EXPECT_EQ(*Json::parse(bytesOf(u"out.json"_s)).find(u"exportedAt"), Json("2026-11-21T10:01:00Z"));
}

TEST_F(ExportImportManagerTest, cancellingTheSavePanelWritesNothing) {
    Launch launch(*this);
    const auto before = QDir(folder()).entryList(QDir::Files);
    launch.manager.exportAllData([](const QString&, const QString&) { return std::optional<QString>(); });
    EXPECT_EQ(QDir(folder()).entryList(QDir::Files), before);
}

TEST_F(ExportImportManagerTest, aFileThatCannotBeWrittenIsNoError) {
    Launch launch(*this);
    launch.manager.exportAllData(
        [&](const QString&, const QString&) { return std::optional(path(u"no/such/folder"_s)); });
    EXPECT_FALSE(QFileInfo::exists(path(u"no"_s)));
}

TEST_F(ExportImportManagerTest, afterClearingTheHistoryAndARestartTheOldEntriesAreBack) {
    {
        Launch launch(*this);
        launch.data.history.record(u"send"_s, u"old"_s, {});
        EXPECT_EQ(launch.manager.clearHistory(), u"历史记录已清除"_s);
        EXPECT_TRUE(launch.data.history.entries().empty());
    }
    EXPECT_EQ(Launch(*this).data.history.entries().size(), 1U);
}

TEST_F(ExportImportManagerTest, afterClearingTheClipboardAndARestartTheListStaysEmpty) {
    {
        Launch launch(*this);
        launch.data.clipboard.add(u"a"_s, {});
        EXPECT_EQ(launch.manager.clearClipboard(), u"粘贴板记录已清除"_s);
    }
    EXPECT_TRUE(Launch(*this).data.clipboard.entries().empty());
}

TEST_F(ExportImportManagerTest, clearingTheCachesTouchesNoData) {
    Launch launch(*this);
    launch.data.history.record(u"send"_s, u"x"_s, {});
    const auto before = launch.manager.overview();
    EXPECT_EQ(launch.manager.clearCaches(), u"缓存已清除"_s);
    EXPECT_EQ(launch.manager.overview(), before);
}

}  // namespace
}  // namespace veltrin
