#include "support/apps/SelectionHost.h"

#include "Foundation/Json.h"
#include "Foundation/Text.h"

namespace veltrin {

SelectionHost::SelectionHost(RunLoop& runLoop, FloatingPanels& panels, const Screens& screens,
                             Pasteboard& pasteboard, Preferences& preferences, const QString& folder)
    : settings_(preferences, notifications_, environment_),
      sounds_(runLoop, sound_, settings_),
      agents_(folder, preferences, runLoop),
      history_(folder, runLoop),
      prompts_(folder, runLoop),
      overlay_({runLoop, panels, screens, pasteboard, agents_, settings_, sounds_, history_, prompts_,
                ExpressionRunner(client_)}) {
}

void SelectionHost::modelSays(const QString& text) {
    Json body;
    body.set(QStringLiteral("response"), text);
    if (text.isEmpty())
        http_.fail(UrlError::timedOut, QStringLiteral("timed out"));
    else
        http_.answer(200, body.serialized());
}

void SelectionHost::release() {
    http_.holding = false;
    http_.release();
}

QByteArray SelectionHost::shown() const {
    const SmartSelectPopupView* view = overlay_.popupView();
    if (view == nullptr) return {};
    const SelectionContent content = view->content();
    const QStringList parts{content.title, content.subtitle, content.recognizerName, content.text};
    return Text::lineBreaksAsBlanks(parts.join(u'|')).toUtf8();
}

QByteArray SelectionHost::saved() const {
    return prompts_.prompts().front().title.toUtf8();
}

}  // namespace veltrin
