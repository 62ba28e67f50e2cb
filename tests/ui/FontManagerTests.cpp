#include "UI/Design/FontManager.h"
#include "support/fake/LogCapture.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

class FontManagerTest : public testing::Test {
protected:
    QString path(const char* name) const { return folder_.filePath(QString::fromLatin1(name)); }
    void put(const char* name, const QByteArray& bytes) const {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }
    /// A font of the design's, as installed.
    static QString someFont() {
        QDirIterator fonts(QStringLiteral("/usr/share/fonts"), {QStringLiteral("*.otf")}, QDir::Files,
                           QDirIterator::Subdirectories);
        return fonts.hasNext() ? fonts.next() : QString();
    }

    LogCapture log_;
    QTemporaryDir folder_;
};

TEST_F(FontManagerTest, everyOtfFontOfTheFolderIsRegistered) {
    ASSERT_TRUE(QFile::copy(someFont(), path("a.otf"))) << "no .otf font is installed";
    put("notes.txt", "not a font");
    FontManager::registerAll(folder_.path());
    EXPECT_EQ(log_.lines(), QStringList());
    EXPECT_TRUE(FontManager::registerFont(path("a.otf")));
}

TEST_F(FontManagerTest, aFileThatIsNoFontIsSaidAndLeftOut) {
    put("broken.otf", "hello");
    put("empty.otf", "");
    FontManager::registerAll(folder_.path());
    EXPECT_EQ(
        log_.lines(),
        (QStringList{QStringLiteral("FontManager: failed to create CGFont from ") + path("broken.otf"),
                     QStringLiteral("FontManager: failed to create CGFont from ") + path("empty.otf")}));
}

TEST_F(FontManagerTest, aFontThatCannotBeUsedIsSaid) {
    put("cut.otf", QByteArray("OTTO") + QByteArray(60, '\xff'));
    EXPECT_FALSE(FontManager::registerFont(path("cut.otf")));
    EXPECT_EQ(log_.lines(),
              QStringList{QStringLiteral("FontManager: register failed for ") + path("cut.otf")});
}

TEST_F(FontManagerTest, aFolderThatIsMissingIsAFolderWithoutFonts) {
    FontManager::registerAll(path("nowhere"));
    EXPECT_EQ(log_.lines(), QStringList());
    EXPECT_FALSE(FontManager::registerFont(path("nowhere.otf")));
}

}  // namespace
}  // namespace veltrin
