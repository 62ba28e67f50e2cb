#include "support/fields/ExternalTextDesktop.h"

namespace veltrin {

ExternalTextDesktop::ExternalTextDesktop(RealDesktop& desktop)
    : connection((desktop.applyToThisProcess(), X11Connection::open())),
      windows(*connection),
      workspace(windows, entries),
      screens(*connection),
      accessibility(&topLevelWindows),
      inspector_(accessibility),
      poster(windows, {{},
                       &inspector_,
                       [this](quint64 window) {
                           pasteboard.pastePosted(window);
                           if (atPaste) atPaste();
                       }}),
      preferences(desktop.file(QStringLiteral("preferences.json"))),
      loan(pasteboard, runLoop),
      guard(runLoop),
      fallback(workspace, pasteboard, loan, poster, runLoop, guard),
      reader(accessibility, workspace, preferences),
      wholeReader(accessibility, workspace, preferences, &fallback),
      locator(accessibility, workspace, screens),
      writeback(accessibility, workspace, loan, poster, runLoop, &fallback),
      directWriteback(accessibility, workspace, loan, refusingPoster, runLoop) {
}

}  // namespace veltrin
