#include "support/service/ServiceScript.h"

#include "support/service/ServiceBehaviours.h"

#include <stdexcept>

namespace veltrin::ServiceScript {
namespace {

struct Rule {
    QString contains;
    ServiceBehaviour answer;
};

QString stringOf(const Json& object, QStringView key) {
    const Json* member = object.find(key);
    return member == nullptr ? QString() : member->toString().value_or(QString());
}

const Json::Array& elements(const Json& script, QStringView key) {
    static const Json::Array none;
    const Json* member = script.find(key);
    if (member == nullptr) return none;
    if (!member->isArray()) throw std::runtime_error("a list is wanted: " + key.toString().toStdString());
    return *member->array();
}

ServiceBehaviour named(const QString& name) {
    if (name == QLatin1String("empty")) return ServiceBehaviours::empty();
    if (name == QLatin1String("leaking")) return ServiceBehaviours::leaking();
    if (name == QLatin1String("garbage")) return ServiceBehaviours::garbage();
    if (name == QLatin1String("notHttp")) return ServiceBehaviours::notHttp();
    if (name == QLatin1String("reset")) return ServiceBehaviours::reset();
    if (name == QLatin1String("closed")) return ServiceBehaviours::closed();
    if (name == QLatin1String("silent")) return ServiceBehaviours::silent();
    throw std::runtime_error("no such behaviour: " + name.toStdString());
}

ServiceBehaviour content(const Json& answer) {
    if (const auto text = answer.toString()) return ServiceBehaviours::success(*text);
    if (const Json* status = answer.find(u"error")) {
        const auto code = status->toInteger();
        if (!code) throw std::runtime_error("\"error\" is a status");
        return ServiceBehaviours::error(static_cast<int>(*code), stringOf(answer, u"message"));
    }
    if (answer.find(u"behaviour") != nullptr) return named(stringOf(answer, u"behaviour"));
    if (answer.find(u"text") == nullptr)
        throw std::runtime_error("an answer is a text or an object with one");
    const QString text = stringOf(answer, u"text");
    if (answer.find(u"thinking") != nullptr)
        return ServiceBehaviours::thinking(stringOf(answer, u"thinking"), text);
    const Json* cutOff = answer.find(u"cutOff");
    return cutOff != nullptr && cutOff->toBool() == true ? ServiceBehaviours::cutOff(text)
                                                         : ServiceBehaviours::success(text);
}

ServiceBehaviour behaviour(const Json& answer, double delay) {
    const Json* own = answer.find(u"delay");
    const double seconds = own == nullptr ? delay : own->toDouble().value_or(delay);
    auto made = content(answer);
    return seconds > 0 ? ServiceBehaviours::slow(seconds, std::move(made)) : made;
}

}  // namespace

void apply(ModelService& service, const QByteArray& text, double delay) {
    const auto script = Json::tryParse(text);
    if (!script || !script->isObject()) throw std::runtime_error("the script is no JSON object");
    for (const Json& answer : elements(*script, u"queue"))
        service.enqueue(behaviour(answer, delay));
    std::vector<Rule> rules;
    for (const Json& rule : elements(*script, u"rules")) {
        const Json* answer = rule.find(u"answer");
        if (answer == nullptr) throw std::runtime_error("a rule has no answer");
        rules.push_back(Rule{stringOf(rule, u"contains"), behaviour(*answer, delay)});
    }
    QList<QString> names;
    for (const Json& name : elements(*script, u"models"))
        names << name.toString().value_or(QString());
    if (names.isEmpty()) names << QStringLiteral("qwen3:8b");
    const Json* given = script->find(u"default");
    const auto fallback = behaviour(given == nullptr ? Json("ok") : *given, delay);
    service.setDefault([rules = std::move(rules), fallback,
                        models = ServiceBehaviours::models(names)](const ServiceRequest& request) {
        if (request.wire == ServiceWire::localTags) return models(request);
        const QString prompt = request.prompt();
        for (const Rule& rule : rules) {
            if (prompt.contains(rule.contains)) return rule.answer(request);
        }
        return fallback(request);
    });
}

QByteArray line(const ServiceRequest& request) {
    Json::Array headers;
    for (const auto& [name, value] : request.headers)
        headers.push_back(Json::Array{QString::fromUtf8(name), QString::fromUtf8(value)});
    Json entry;
    entry.set(QStringLiteral("arrival"), request.arrival);
    entry.set(QStringLiteral("method"), QString::fromUtf8(request.method));
    entry.set(QStringLiteral("path"), QString::fromUtf8(request.path));
    entry.set(QStringLiteral("query"), QString::fromUtf8(request.query));
    entry.set(QStringLiteral("headers"), std::move(headers));
    entry.set(QStringLiteral("body"), QString::fromUtf8(request.body));
    entry.set(QStringLiteral("json"), request.json.value_or(Json()));
    entry.set(QStringLiteral("prompt"), request.prompt());
    return entry.serialized() + '\n';
}

}  // namespace veltrin::ServiceScript
