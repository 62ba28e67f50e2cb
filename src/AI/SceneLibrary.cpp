#include "AI/SceneLibrary.h"

#include "Foundation/Resource.h"

namespace veltrin {
namespace {

/// The order is the one on the screen.
constexpr const char16_t* words[] = {
    u"ai_painting",       u"wechat",       u"coding", u"product",      u"academic",
    u"business_email",    u"social_media", u"xhs",    u"video_script", u"customer_service",
    u"translation_trade", u"study",        u"daily",
};

}  // namespace

const SceneLibrary& SceneLibrary::shared() {
    static const SceneLibrary library;
    return library;
}

SceneLibrary::SceneLibrary() : scenes_(buildScenes()) {
}

std::vector<SceneConfig> SceneLibrary::buildScenes() {
    std::vector<SceneConfig> scenes;
    for (const char16_t* word : words) {
        const Json file = Resource::json(QStringLiteral("scenes/%1.json").arg(QStringView(word)));
        scenes.push_back(readRecord<SceneConfig>(file).value());
    }
    return scenes;
}

}  // namespace veltrin
