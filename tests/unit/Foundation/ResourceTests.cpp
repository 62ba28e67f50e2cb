#include "Foundation/Resource.h"

#include <QDirIterator>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

TEST(Resource, everyJsonFileThatIsCompiledInReads) {
    const QString root = QStringLiteral(":/veltrin/");
    int files = 0;
    for (QDirIterator each(root, {QStringLiteral("*.json")}, QDir::Files, QDirIterator::Subdirectories);
         each.hasNext(); ++files)
        EXPECT_FALSE(Resource::json(each.next().mid(root.size())).isNull())
            << qUtf8Printable(each.filePath());
    EXPECT_GT(files, 0);
}

}  // namespace
}  // namespace veltrin
