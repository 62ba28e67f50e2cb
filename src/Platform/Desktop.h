#pragma once

namespace veltrin {

class RunLoop;
class KeyEventTaps;
class MouseEventTaps;
class KeyPoster;
class Accessibility;
class Pasteboard;
class Workspace;
class Screens;
class Preferences;
class HttpClient;
class FloatingPanels;
class ProcessControl;
class SystemEnvironment;

/// All ports of one desktop, for the composition root and the coordinator. What it names outlives its users.
struct Desktop {
    RunLoop& runLoop;
    KeyEventTaps& keyEventTaps;
    MouseEventTaps& mouseEventTaps;
    KeyPoster& keyPoster;
    Accessibility& accessibility;
    Pasteboard& pasteboard;
    Workspace& workspace;
    Screens& screens;
    Preferences& preferences;
    HttpClient& httpClient;
    FloatingPanels& floatingPanels;
    ProcessControl& processControl;
    SystemEnvironment& environment;
};

}  // namespace veltrin
