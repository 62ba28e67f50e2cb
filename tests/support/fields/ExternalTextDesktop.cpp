#include "support/fields/ExternalTextDesktop.h"

namespace veltrin {

ExternalTextDesktop::ExternalTextDesktop(RealDesktop& desktop)
    : connection((desktop.applyToThisProcess(), X11Connection::open())),
      windows(*connection),
      workspace(windows, entries),
      screens(*connection),
      accessibility(&topLevelWindows),
      inspector_(accessibility),
      poster(windows, {{}, &inspector_, [this](quint64 window) { pasteboard.pastePosted(window); }}),
      preferences(desktop.file(QStringLiteral("preferences.json"))),
      reader(accessibility, workspace, preferences),
      locator(accessibility, workspace, screens),
      loan(pasteboard, runLoop),
      writeback(accessibility, workspace, loan, poster, runLoop),
      directWriteback(accessibility, workspace, loan, refusingPoster, runLoop) {
}

}  // namespace veltrin
