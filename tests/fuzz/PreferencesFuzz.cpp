#include "Platform/Linux/PreferencesDocument.h"
#include "fuzz/FuzzInput.h"

using namespace veltrin;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray text = fuzz::bytes(data, size);
    const auto document = PreferencesDocument::decode(text);
    const auto json = Json::tryParse(text);
    fuzz::check(document.has_value() == (json && json->isObject()), "exactly the objects decode");
    if (!document) return 0;
    const auto again = PreferencesDocument::decode(document->encode());
    fuzz::check(again.has_value(), "what was written can be read");
    for (const auto& [key, member] : *json->object())
        fuzz::check(again->value(key) == document->value(key), "a value survives being written");

    auto changed = *document;
    const QString key = QStringLiteral("veltrin");
    changed.set(key, PreferenceValue(text));
    const auto written = PreferencesDocument::decode(changed.encode());
    fuzz::check(written && written->value(key) == PreferenceValue(text), "any bytes can be kept");
    changed.remove(key);
    fuzz::check(!changed.value(key), "a removed key is absent");
    return 0;
}
