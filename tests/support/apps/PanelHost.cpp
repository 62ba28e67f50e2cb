// Shows the program's floating panels as it is told, without the rest of the program.
//
// Each line on standard input is a command, each answered by a line on standard output when its panel's first
// picture is on the screen or its work is done: "ok" with what is asked for, or "bad".
//
//   text TEXT | failure TEXT | pill X Y W H | pill | choice X Y W H | choice
//       show (rectangles from the bottom left); the answer has the milliseconds to the first picture
//   icon X Y TEXT
//       the same of the icon beside a selection
//   move X Y W H | dismiss | dismissOverlay | dismissIcon | dismissPopup
//       as the operations of the panel object and of the selections' overlay
//   toggle N | rounds N
//       shows and dismisses the choice, or icon and popup, N times without fading out
//   prepare | dark | light | english | still
//       makes the windows ahead; the look
//   windows | selected | memory | cpu | screens
//       windows kept; rows clicked so far; resident KiB; processor milliseconds; screens that are there
//   iconFrame | popupFrame | shown | saved | clipboard
//       "x y w h" or nothing; what the popup shows and the newest prompt (see SelectionHost)
//   model TEXT | model | hold | release
//       what the model says next (nothing: it fails), and when
#include "Debug/MVPDebugPanel.h"
#include "Foundation/MVPLog.h"
#include "Platform/Linux/FilePreferences.h"
#include "Platform/Linux/QtRunLoop.h"
#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/Linux/X11/X11Pasteboard.h"
#include "Platform/Linux/X11/X11Screens.h"
#include "UI/Design/VtLook.h"
#include "UI/Overlays/QuickFloatingPanels.h"
#include "support/apps/SelectionHost.h"

#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <QTimer>

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <utility>

#ifdef __SANITIZE_ADDRESS__
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();  // its header is not always installed
#endif

namespace veltrin {
namespace {

class PanelHost : public QObject {
public:
    PanelHost() : notifier_(STDIN_FILENO, QSocketNotifier::Read) {
        connect(&notifier_, &QSocketNotifier::activated, this, [this] { read(); });
        connect(&floating_, &QuickFloatingPanels::firstFrameShown, this, [this] { frameShown(); });
    }

private:
    void read() {
        char buffer[4096];
        const auto count = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (count <= 0) return QCoreApplication::quit();
        pending_.append(buffer, static_cast<qsizetype>(count));
        for (qsizetype end = pending_.indexOf('\n'); end >= 0; end = pending_.indexOf('\n')) {
            const QString line = QString::fromUtf8(pending_.left(end));
            pending_.remove(0, end + 1);
            obey(line.section(u' ', 0, 0), line.section(u' ', 1));
        }
    }

    void obey(const QString& command, const QString& rest) {
        clock_.start();
        waitsForFrame_ = true;
        if (command == u"text")
            return panel_.showPanel(QString(rest).replace(u'|', u'\n'), std::nullopt, std::nullopt);
        if (command == u"failure")
            return panel_.showFailureCard(rest, QStringLiteral("细节"), QString(), std::nullopt, std::nullopt,
                                          std::nullopt);
        if (command == u"pill")
            return panel_.showStatusPill(QStringLiteral("正在优化"), rectangle(rest), std::nullopt);
        if (command == u"choice") return showChoice(rectangle(rest));
        if (command == u"icon") {
            const QPointF point(rest.section(u' ', 0, 0).toDouble(), rest.section(u' ', 1, 1).toDouble());
            return selection_.overlay().showIcon(point, rest.section(u' ', 2).replace(u'|', u'\n'));
        }
        waitsForFrame_ = false;
        if (command == u"toggle") return toggle(rest.toInt());
        if (command == u"rounds") return playRounds(rest.toInt());
        if (command == u"prepare") return prepare();
        answer(done(command, rest));
    }

    /// The answer of what is done at once.
    QByteArray done(const QString& command, const QString& rest) {
        if (command == u"move")
            panel_.repositionPanel(rectangle(rest));
        else if (command == u"dismiss")
            panel_.dismissPanel();
        else if (command == u"dismissOverlay")
            panel_.dismissOverlay();
        else if (command == u"dark" || command == u"light")
            look_.setPopupDark(command == u"dark");
        else if (command == u"still")
            look_.setReducedMotion(true);
        else if (command == u"windows")
            return QByteArray::number(floating_.windowCount());
        else if (command == u"selected")
            return selected_;
        else if (command == u"memory")
            return memoryInUse();
        else if (command == u"cpu")
            return QByteArray::number(processorMilliseconds());
        else if (command == u"screens")
            return QByteArray::number(static_cast<int>(screens_.screens().size()));
        else
            return doneWithSelection(command, rest);
        return {};
    }
    QByteArray doneWithSelection(const QString& command, const QString& rest) {
        SmartSelectOverlay& overlay = selection_.overlay();
        if (command == u"iconFrame")
            return text(overlay.iconFrame());
        else if (command == u"popupFrame")
            return text(overlay.popupFrame());
        else if (command == u"shown")
            return selection_.shown();
        else if (command == u"saved")
            return selection_.saved();
        else if (command == u"clipboard")
            return pasteboard_.string().text.toUtf8();
        else if (command == u"model")
            selection_.modelSays(rest);
        else if (command == u"hold")
            selection_.hold();
        else if (command == u"release")
            selection_.release();
        else if (command == u"dismissIcon")
            overlay.dismissIcon();
        else if (command == u"dismissPopup")
            overlay.dismissPopup();
        else if (command == u"english")
            speakEnglish();
        else
            return "bad";
        return {};
    }
    void speakEnglish() {
        look_.setEnglish(true);
        selection_.settings().interfaceLanguage.set(AppLanguage::english);
    }
    static QByteArray text(const std::optional<QRectF>& frame) {
        if (!frame) return {};
        return QStringLiteral("%1 %2 %3 %4")
            .arg(frame->x())
            .arg(frame->y())
            .arg(frame->width())
            .arg(frame->height())
            .toUtf8();
    }

    void playRounds(int left) {
        if (left <= 0) return answer(QByteArray::number(floating_.windowCount()));
        roundsLeft_ = left;
        selection_.overlay().showIcon(QPointF(200 + left % 400, 400), QStringLiteral("第 %1 段").arg(left));
    }
    /// A picture of the icon is followed by the popup, one of the popup by the next round.
    void nextOfRounds() {
        SmartSelectOverlay& overlay = selection_.overlay();
        if (overlay.iconFrame()) return overlay.showPopup();
        const int left = std::exchange(roundsLeft_, 0) - 1;
        overlay.dismissPopup();
        playRounds(left);
    }

    void showChoice(std::optional<QRectF> anchor) {
        panel_.showOptimizeChoicePanel(actions(), agents(), anchor,
                                       [this](int slot) { selected_ += QByteArray::number(slot); });
    }

    void toggle(int left) {
        if (left <= 0) return answer(QByteArray::number(floating_.windowCount()));
        left_ = left;
        showChoice(QRectF(200 + left % 400, 400, 2, 20));
    }
    void frameShown() {
        if (std::exchange(waitsForFrame_, false))
            return answer(QByteArray::number(clock_.nsecsElapsed() / 1e6, 'f', 2));
        if (roundsLeft_ > 0) return QTimer::singleShot(0, this, [this] { nextOfRounds(); });
        if (left_ == 0) return;
        const int left = std::exchange(left_, 0) - 1;
        // What replaces the choice takes its window at once; a pill is the other half of the toggling.
        QTimer::singleShot(0, this, [this, left] {
            panel_.showStatusPill(QStringLiteral("正在翻译"), QRectF(300, 300, 10, 10), std::nullopt);
            panel_.dismissOverlay();
            toggle(left);
        });
    }
    void prepare() {
        floating_.prepare();
        auto* timer = new QTimer(this);
        connect(timer, &QTimer::timeout, this, [this, timer] {
            if (floating_.windowCount() < kindsOfPanels) return;
            timer->deleteLater();
            timer->stop();
            QTimer::singleShot(50, this, [this] { answer({}); });
        });
        timer->start(5);
    }

    static std::vector<MemoryActionPreset> actions() {
        std::vector<MemoryActionPreset> all;
        for (const auto& [title, icon, color] : {std::tuple{"提示词优化", "scope", "#FFE066"},
                                                 {"添加表情", "face.smiling", "#F4C8E0"},
                                                 {"更专业", "briefcase.fill", "#B5D8FF"},
                                                 {"更简洁", "bolt.fill", "#B5F0C8"}}) {
            MemoryActionPreset action;
            action.title = QString::fromUtf8(title);
            action.icon = QString::fromUtf8(icon);
            action.colorHex = QString::fromUtf8(color);
            action.shortcutSlot = static_cast<int>(all.size()) + 1;
            all.push_back(action);
        }
        return all;
    }
    static std::vector<std::optional<AgentProfile>> agents() {
        std::vector<std::optional<AgentProfile>> all(4);
        all[0] = AgentProfile::made({});
        all[0]->name = QStringLiteral("产品思维");
        all[0]->icon = QStringLiteral("lightbulb.fill");
        all[0]->colorHex = QStringLiteral("#F4C8E0");
        all[1] = all[0];
        all[1]->name = QStringLiteral("代码架构");
        all[1]->icon = QStringLiteral("chevron.left.forwardslash.chevron.right");
        all[1]->colorHex = QStringLiteral("#A7DFFC");
        return all;
    }
    static std::optional<QRectF> rectangle(const QString& numbers) {
        const QStringList parts = numbers.split(u' ', Qt::SkipEmptyParts);
        if (parts.size() != 4) return std::nullopt;
        return QRectF(parts[0].toDouble(), parts[1].toDouble(), parts[2].toDouble(), parts[3].toDouble());
    }
    /// In KiB. The address sanitizer keeps what was freed, and counts what is in use itself.
    static QByteArray memoryInUse() {
#ifdef __SANITIZE_ADDRESS__
        return QByteArray::number(static_cast<qint64>(__sanitizer_get_current_allocated_bytes() / 1024));
#else
        QFile file(QStringLiteral("/proc/self/statm"));
        if (!file.open(QIODevice::ReadOnly)) return "bad";
        return QByteArray::number(file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE) /
                                  1024);
#endif
    }
    static long processorMilliseconds() {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        const auto milliseconds = [](const timeval& time) {
            return time.tv_sec * 1000 + time.tv_usec / 1000;
        };
        return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
    }
    static void answer(const QByteArray& text) {
        std::printf("ok %s\n", text.constData());
        std::fflush(stdout);
    }

    static constexpr int kindsOfPanels = 5;

    QSocketNotifier notifier_;
    QByteArray pending_;
    QElapsedTimer clock_;
    bool waitsForFrame_ = false;
    int left_ = 0;
    int roundsLeft_ = 0;
    QByteArray selected_;

    QTemporaryDir folder_;
    QtRunLoop runLoop_;
    std::unique_ptr<X11Connection> connection_ = X11Connection::open();
    X11Screens screens_{*connection_};
    X11Pasteboard pasteboard_;
    FilePreferences preferences_{folder_.filePath(QStringLiteral("preferences.json"))};
    VtLook look_{nullptr};
    QuickFloatingPanels floating_{screens_, look_};
    MVPDebugPanel panel_{runLoop_, floating_, screens_, pasteboard_, preferences_};
    SelectionHost selection_{runLoop_, floating_, screens_, pasteboard_, preferences_, folder_.path()};
};

}  // namespace
}  // namespace veltrin

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "xcb");
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication application(argc, argv);
    veltrin::MVPLog::setPrinting(false);
    veltrin::PanelHost host;
    std::printf("ready\n");
    std::fflush(stdout);
    return QGuiApplication::exec();
}
