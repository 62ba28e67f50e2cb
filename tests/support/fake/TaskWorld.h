#pragma once

#include "AI/ModelTasks.h"
#include "support/fake/FakeRunLoop.h"
#include "support/fake/ModelWorld.h"

#include <QStringList>

namespace veltrin {

/// The user's material as a test sets it, with a note of what the tasks ask of it.
struct TaskMaterial {
    QString contract;    ///< what every shortcut answers
    QString dictionary;  ///< what every limit answers
    QStringList asked;   ///< "translation nil", "16"
    QStringList history;

    ModelTaskMaterial closures() {
        ModelTaskMaterial material;
        material.runtimeContractPromptFor = [this](const QString& shortcut, std::optional<int> slot) {
            asked << shortcut + u' ' + (slot ? QString::number(*slot) : QStringLiteral("nil"));
            return contract;
        };
        material.contextPrompt = [this](int limit) {
            asked << QString::number(limit);
            return dictionary;
        };
        material.recordHistory = [this](const QString& type, const QString& snippet, const QString& app) {
            history << type + u'|' + snippet + u'|' + app;
        };
        return material;
    }
};

/// The named tasks with everything they stand on, on a scripted network.
struct TaskWorld : ModelWorld {
    FakeRunLoop runLoop;
    TaskMaterial material;

    ModelTasks tasks() { return ModelTasks(client(), settings(), runLoop, material.closures()); }

    /// The number of the local request's `option` ("temperature", "num_predict"); none when it is absent.
    std::optional<double> localOption(std::size_t request, QStringView option) const {
        const Json body = Json::parse(http.requests.at(request).body);
        const Json* options = body.find(u"options");
        const Json* value = options == nullptr ? nullptr : options->find(option);
        return value == nullptr ? std::nullopt : value->toDouble();
    }
};

}  // namespace veltrin
