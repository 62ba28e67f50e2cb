// A program that listens to keys as ours does and does nothing else: it swallows Alt+Space and Return, says
// "ready" and then "swallowed" for each. With --abort it crashes in the middle of deciding about the first
// one.
#include "Platform/Linux/QtRunLoop.h"
#include "Platform/Linux/X11/X11KeyEventTaps.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    using namespace veltrin;
    const QCoreApplication application(argc, argv);
    const bool aborts = application.arguments().contains(QStringLiteral("--abort"));
    QtRunLoop loop;
    X11KeyEventTaps taps(loop);
    auto tap = taps.create(KeyEventMask::keyDown, [&](const KeyEvent& event) {
        const bool isOurs = (event.keyCode == KeyCode::space && event.flags == KeyFlags::option) ||
                            (event.keyCode == KeyCode::returnKey && event.flags == 0);
        if (isOurs && aborts) std::abort();
        if (isOurs && !event.isAutoRepeat) {
            std::puts("swallowed");
            std::fflush(stdout);
        }
        return !isOurs;
    });
    if (!tap) return 1;
    tap->setClaimable({{KeyCode::space, KeyFlags::option, false}, {KeyCode::returnKey, 0, false}});
    tap->addToRunLoop();
    tap->setEnabled(true);
    std::puts("ready");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
