#include "Foundation/MVPLog.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// The interface without a display: the windows are drawn into memory.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    // No session bus of whoever runs the tests.
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication application(argc, argv);
    const QTemporaryDir folder;
    veltrin::MVPLog::setLogURL(folder.filePath(QStringLiteral("test.log")));
    veltrin::MVPLog::setPrinting(false);
    return RUN_ALL_TESTS();
}
