#pragma once

#include "support/desktop/DesktopTest.h"
#include "support/fake/LogCapture.h"
#include "support/fields/SelectionDesktop.h"

namespace veltrin {

/// The watch over selections over its own adapters, in the test's process, with a surface that keeps what it
/// is asked for, beside a real application. The user has copied something before, and has it afterwards.
class SelectionTest : public DesktopTest {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Starts one of the field applications and waits until it is in front.
    FieldApplication& startApplication(const QString& name);
    QRect placeOf(qint64 location, qint64 length) { return world_->placeOf(*application_, location, length); }

    // Gestures, from which the test's event loop runs on. A stretch is selected from its first character to
    // its last.
    void dragAcross(const QRect& place);
    void click(QPoint at, int count = 1);
    void drag(const QList<QPoint>& places) { dragThrough(typist(), places); }

    /// What was shown last; empty when nothing comes in time.
    QString shownText(double seconds = 20);
    /// Waits until a look at the selection has come to nothing, so often in all.
    bool waitForNothing(int times, double seconds = 20);
    int logged(const QString& line) const { return static_cast<int>(log_->lines().count(line)); }
    int loggedStarting(const QString& start) const;
    /// Forgets what was shown, and lets the same selection be another one.
    void forget();
    int copyKeysPosted() const { return world_->poster.posted; }
    RecordingSurface& surface() { return world_->surface; }
    SmartSelectTrigger& trigger() { return world_->trigger; }

    std::unique_ptr<LogCapture> log_;
    std::unique_ptr<SelectionDesktop> world_;
    std::unique_ptr<FieldApplication> application_;
    bool keepsClipboard_ = true;  ///< false for a test that has its own
};

inline const QString usersClipboard = QStringLiteral("the user's own 📋");

}  // namespace veltrin
