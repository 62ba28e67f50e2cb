#include "Foundation/MVPLog.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// Tests log into a private file, never into the user's, and print no log lines.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    veltrin::MVPLog::setLogURL(folder.filePath(QStringLiteral("test.log")));
    veltrin::MVPLog::setPrinting(false);
    return RUN_ALL_TESTS();
}
