#pragma once

#include "Foundation/Records.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace veltrin {

/// An agent as a scene describes it. Its name is its identity: an agent of that name is reused as it stands.
struct SceneAgentDef {
    QString name;
    QString icon;      ///< symbol name
    QString colorHex;  ///< "#RRGGBB"
    QString description;
    QString systemPrompt;
    QStringList skills;
    QString outputStyle;
    QString shortcut;  ///< key of the shortcut that the agent is to serve
    int slot = 0;      ///< slot of the shortcut, from 0
    friend bool operator==(const SceneAgentDef&, const SceneAgentDef&) = default;
};
template <>
inline constexpr auto recordFields<SceneAgentDef> = std::tuple{
    required(u"name", &SceneAgentDef::name),
    required(u"icon", &SceneAgentDef::icon),
    required(u"colorHex", &SceneAgentDef::colorHex),
    required(u"description", &SceneAgentDef::description),
    required(u"systemPrompt", &SceneAgentDef::systemPrompt),
    required(u"skills", &SceneAgentDef::skills),
    required(u"outputStyle", &SceneAgentDef::outputStyle),
    required(u"shortcut", &SceneAgentDef::shortcut),
    required(u"slot", &SceneAgentDef::slot),
};

/// A prepared set of agents for one kind of work.
struct SceneConfig {
    QString id;
    QString name;
    QString icon;
    QString colorHex;
    QString description;
    std::vector<SceneAgentDef> agents;
    friend bool operator==(const SceneConfig&, const SceneConfig&) = default;
};
template <>
inline constexpr auto recordFields<SceneConfig> = std::tuple{
    required(u"id", &SceneConfig::id),
    required(u"name", &SceneConfig::name),
    required(u"icon", &SceneConfig::icon),
    required(u"colorHex", &SceneConfig::colorHex),
    required(u"description", &SceneConfig::description),
    required(u"agents", &SceneConfig::agents),
};

/// The scenes that come with the program. Immutable.
class SceneLibrary {
public:
    static const SceneLibrary& shared();

    /// In the order in which they are shown.
    const std::vector<SceneConfig>& allScenes() const { return scenes_; }

private:
    SceneLibrary();
    static std::vector<SceneConfig> buildScenes();

    std::vector<SceneConfig> scenes_;
};

}  // namespace veltrin
